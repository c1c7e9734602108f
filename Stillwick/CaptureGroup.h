// A named collection of captures. Plain value, any thread; the working state owns the groups.
#pragma once

#include "Stillwick/CapturedFrame.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <cstddef>

namespace stillwick {

/// Captures under one name, in the order in which they are exported.
class CaptureGroup {
public:
    /// A group with an identity of its own.
    explicit CaptureGroup(QString initialName, QString initialNotes = {},
                          QList<CapturedFrame> initialFrames = {});

    [[nodiscard]] const QUuid& id() const noexcept { return m_id; }

    QString name;
    QString notes; ///< the head of the group's Markdown index
    QList<CapturedFrame> frames;

private:
    QUuid m_id;
};

/// Whether identity, name, notes and captures are the same. Captures are compared by identity, so a
/// capture's own notes or pictures make no difference.
[[nodiscard]] bool operator==(const CaptureGroup& a, const CaptureGroup& b) noexcept;
/// The hash of the identity alone.
[[nodiscard]] std::size_t qHash(const CaptureGroup& group, std::size_t seed = 0) noexcept;

} // namespace stillwick
