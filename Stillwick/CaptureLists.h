// Finding and moving captures in a list of groups. Free functions on values, any thread.
#pragma once

#include "Stillwick/CaptureGroup.h"

#include <QList>
#include <QSet>
#include <QUuid>

#include <functional>
#include <optional>

namespace stillwick {

/// The group of that id; null where there is none. The pointer is good until the list changes.
[[nodiscard]] CaptureGroup* groupOf(QList<CaptureGroup>& groups, const QUuid& id);
[[nodiscard]] const CaptureGroup* groupOf(const QList<CaptureGroup>& groups, const QUuid& id);
/// The capture of that id, in whichever group; null where there is none.
[[nodiscard]] const CapturedFrame* frameOf(const QList<CaptureGroup>& groups, const QUuid& id);
/// The last capture of the last group that has any; null where none has.
[[nodiscard]] const CapturedFrame* lastFrameOf(const QList<CaptureGroup>& groups);
[[nodiscard]] int frameCountOf(const QList<CaptureGroup>& groups);

/// Changes the capture of that id, wherever it is. Whether there was one.
bool updateFrame(QList<CaptureGroup>& groups, const QUuid& id,
                 const std::function<void(CapturedFrame&)>& change);
/// Takes the capture out of its group.
std::optional<CapturedFrame> takeFrame(QList<CaptureGroup>& groups, const QUuid& id);
/// Moves the captures at `from` in front of the one at `to`, offsets counted before the move; they
/// keep their order. `to` may be the length of the list. Offsets outside the list are left out.
void moveFrames(QList<CapturedFrame>& frames, const QSet<int>& from, int to);

} // namespace stillwick
