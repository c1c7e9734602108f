// One captured still. Plain value, any thread; the groups of the working state own the captures.
#pragma once

#include "Media/CMTime.h"
#include "Stillwick/Annotation.h"
#include "Stillwick/StillPicture.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <cstddef>

namespace stillwick {

/// A still of the video at one exact time, with what has been found in it and noted on it.
class CapturedFrame {
public:
    /// A capture of `time` with an identity of its own.
    CapturedFrame(CMTime time, StillPicture initialThumbnail, StillPicture initialSubjectPreview,
                  bool initialSubjectExtracted = false, QString initialNotes = {},
                  QList<Annotation> initialAnnotations = {});

    [[nodiscard]] const QUuid& id() const noexcept { return m_id; }
    [[nodiscard]] const CMTime& time() const noexcept { return m_time; }

    /// The whole picture at `time`; null until it has been grabbed, and for good if that failed.
    StillPicture thumbnail;
    /// The subject on a transparent background; null while it is sought and where none was found.
    StillPicture subjectPreview;
    /// Whether the grab and the search for a subject have ended, whatever came of them.
    bool subjectExtracted;
    QString notes;
    QList<Annotation> annotations; ///< in drawing order

private:
    QUuid m_id;
    CMTime m_time;
};

/// Whether both are the same capture: only their identities are compared.
[[nodiscard]] bool operator==(const CapturedFrame& a, const CapturedFrame& b) noexcept;
/// The hash of the identity alone.
[[nodiscard]] std::size_t qHash(const CapturedFrame& frame, std::size_t seed = 0) noexcept;

} // namespace stillwick
