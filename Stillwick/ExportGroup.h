// What an export gets to know of a group. Plain value, any thread.
#pragma once

#include "Stillwick/CaptureGroup.h"

#include <QList>
#include <QString>

namespace stillwick {

/// A group as it was when the export began; nothing in it changes afterwards.
class ExportGroup {
public:
    /// Where a group's files go.
    enum class Placement { outputFolder, subfolder };

    ExportGroup(QString name, QString notes, QList<CapturedFrame> frames, Placement placement);

    [[nodiscard]] const QString& name() const noexcept { return m_name; }
    [[nodiscard]] const QString& notes() const noexcept { return m_notes; }
    [[nodiscard]] const QList<CapturedFrame>& frames() const noexcept { return m_frames; }
    /// Whether the group gets a folder of its own inside the output folder.
    [[nodiscard]] bool useSubfolder() const noexcept { return m_placement == Placement::subfolder; }

private:
    QString m_name;
    QString m_notes;
    QList<CapturedFrame> m_frames;
    Placement m_placement;
};

/// The groups as they are now. Where there are several, even empty ones, each gets a folder of its
/// own; a single one goes into the output folder itself.
[[nodiscard]] QList<ExportGroup> exportGroupsOf(const QList<CaptureGroup>& groups);

} // namespace stillwick
