#include "Stillwick/CaptureLists.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace stillwick {

namespace {

template <typename Items>
auto positionOf(Items& items, const QUuid& id) {
    return std::find_if(items.begin(), items.end(),
                        [&id](const auto& item) { return item.id() == id; });
}

} // namespace

CaptureGroup* groupOf(QList<CaptureGroup>& groups, const QUuid& id) {
    const auto group = positionOf(groups, id);
    return group == groups.end() ? nullptr : &*group;
}

const CaptureGroup* groupOf(const QList<CaptureGroup>& groups, const QUuid& id) {
    const auto group = positionOf(groups, id);
    return group == groups.end() ? nullptr : &*group;
}

const CapturedFrame* frameOf(const QList<CaptureGroup>& groups, const QUuid& id) {
    for (const CaptureGroup& group : groups) {
        const auto frame = positionOf(group.frames, id);
        if (frame != group.frames.end())
            return &*frame;
    }
    return nullptr;
}

const CapturedFrame* lastFrameOf(const QList<CaptureGroup>& groups) {
    const auto last = std::find_if(groups.rbegin(), groups.rend(), [](const CaptureGroup& group) {
        return !group.frames.isEmpty();
    });
    return last == groups.rend() ? nullptr : &last->frames.back();
}

int frameCountOf(const QList<CaptureGroup>& groups) {
    return std::accumulate(
        groups.begin(), groups.end(), 0,
        [](int count, const CaptureGroup& group) { return count + int(group.frames.size()); });
}

bool updateFrame(QList<CaptureGroup>& groups, const QUuid& id,
                 const std::function<void(CapturedFrame&)>& change) {
    for (qsizetype i = 0; i < groups.size(); ++i) {
        const QList<CapturedFrame>& frames = std::as_const(groups)[i].frames;
        const auto frame = positionOf(frames, id);
        if (frame == frames.end())
            continue;
        const auto index = std::distance(frames.begin(), frame);
        change(groups[i].frames[index]);
        return true;
    }
    return false;
}

std::optional<CapturedFrame> takeFrame(QList<CaptureGroup>& groups, const QUuid& id) {
    for (CaptureGroup& group : groups) {
        const auto frame = positionOf(std::as_const(group.frames), id);
        if (frame == std::as_const(group.frames).end())
            continue;
        return group.frames.takeAt(std::distance(group.frames.cbegin(), frame));
    }
    return std::nullopt;
}

void moveFrames(QList<CapturedFrame>& frames, const QSet<int>& from, int to) {
    QList<CapturedFrame> before;
    QList<CapturedFrame> moved;
    QList<CapturedFrame> after;
    for (int i = 0; i < int(frames.size()); ++i) {
        if (from.contains(i))
            moved.append(frames[i]);
        else if (i < to)
            before.append(frames[i]);
        else
            after.append(frames[i]);
    }
    frames = before + moved + after;
}

} // namespace stillwick
