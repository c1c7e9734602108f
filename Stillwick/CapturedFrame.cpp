#include "Stillwick/CapturedFrame.h"

#include <utility>

namespace stillwick {

CapturedFrame::CapturedFrame(CMTime time, StillPicture initialThumbnail,
                             StillPicture initialSubjectPreview, bool initialSubjectExtracted,
                             QString initialNotes, QList<Annotation> initialAnnotations)
    : thumbnail(std::move(initialThumbnail)), subjectPreview(std::move(initialSubjectPreview)),
      subjectExtracted(initialSubjectExtracted), notes(std::move(initialNotes)),
      annotations(std::move(initialAnnotations)), m_id(QUuid::createUuid()), m_time(time) {}

bool operator==(const CapturedFrame& a, const CapturedFrame& b) noexcept {
    return a.id() == b.id();
}

std::size_t qHash(const CapturedFrame& frame, std::size_t seed) noexcept {
    return qHash(frame.id(), seed);
}

} // namespace stillwick
