#include "Stillwick/CaptureGroup.h"

#include <utility>

namespace stillwick {

CaptureGroup::CaptureGroup(QString initialName, QString initialNotes,
                           QList<CapturedFrame> initialFrames)
    : name(std::move(initialName)), notes(std::move(initialNotes)),
      frames(std::move(initialFrames)), m_id(QUuid::createUuid()) {}

bool operator==(const CaptureGroup& a, const CaptureGroup& b) noexcept {
    return a.id() == b.id() && a.name == b.name && a.notes == b.notes && a.frames == b.frames;
}

std::size_t qHash(const CaptureGroup& group, std::size_t seed) noexcept {
    return qHash(group.id(), seed);
}

} // namespace stillwick
