#include "Media/FrameGatherer.h"

#include "Media/MediaAsset.h"
#include "Media/MediaError.h"

#include <algorithm>
#include <utility>

namespace stillwick {

namespace {

// Decoded on the way to a place jumped to, so that the first steps back from it cost nothing.
constexpr int trail = 12;
// A damaged stretch is skipped for at most so long, where no key picture ends it.
constexpr std::int64_t longestSkipSeconds = 2;

} // namespace

FrameGatherer::FrameGatherer(const MediaAsset& asset, std::shared_ptr<FrameCache> cache,
                             std::function<void()> announce, const std::stop_token& stop)
    : m_cache(std::move(cache)), m_announce(std::move(announce)),
      m_source(asset.takeFrameSource(stop)), m_timelineRevision(m_source->timelineRevision()) {
    m_source->setPairHandler(
        [this](const SharedFrame& frame, const SharedFrame& next) {
            m_cache->insertPair(frame, next);
            m_announce();
        },
        trail);
    m_cache->begin(m_source->timeline());
    m_cache->setFirst(goTo(CMTime::zero(), stop)->presentationTime());
}

void FrameGatherer::forgetPlace() {
    m_sourceAt.reset();
    m_fill.reset();
}

bool FrameGatherer::noticeNewTimeline() {
    if (m_timelineRevision == m_source->timelineRevision())
        return false;
    m_timelineRevision = m_source->timelineRevision();
    m_cache->begin(m_source->timeline());
    forgetPlace();
    return true;
}

/// The source's frame at `time`, into the cache.
SharedFrame FrameGatherer::goTo(const CMTime& time, const std::stop_token& stop) {
    forgetPlace();
    SharedFrame frame = m_source->frameAt(time, {}, stop);
    m_sourceAt = frame->presentationTime();
    m_cache->insert(frame);
    return frame;
}

/// A full cache would drop what is decoded on the way, as the farthest from where the film was
/// watched.
void FrameGatherer::moveTo(std::int64_t tick) {
    m_cache->setPosition(tick, FrameCache::Course::Resting);
}

FrameGatherer::Located FrameGatherer::at(const CMTime& time, const std::stop_token& stop) {
    const std::int64_t tick = timeline().tickAtOrBefore(time);
    SharedFrame frame = m_cache->frameAt(time);
    // What is being decoded already is not begun anew.
    while (!frame && m_fill && tick < m_fill->until && tick >= m_fill->last->presentationTime() &&
           continueFill(stop))
        frame = m_cache->frameAt(time);
    if (frame)
        return {frame, time};
    moveTo(tick);
    try {
        return {goTo(time, stop), time};
    } catch (const MediaError& error) {
        if (error.category() != MediaError::Category::TimeOutOfRange || time < CMTime::zero())
            throw;
    }
    const CMTime end = m_source->endTime(stop);
    frame = goTo(end, stop);
    m_cache->setLast(frame->presentationTime(), timeline().tickAtOrAfter(end));
    return {frame, end};
}

FrameGatherer::Located FrameGatherer::near(const CMTime& time, const std::stop_token& stop) {
    forgetPlace();
    moveTo(timeline().tickAtOrBefore(time));
    try {
        const FrameSource::Tolerance near{CMTime::positiveInfinity(), CMTime::zero()};
        SharedFrame frame = m_source->frameAt(time, near, stop);
        m_sourceAt = frame->presentationTime();
        m_cache->insert(frame);
        return {frame, m_source->filmTime(*frame)};
    } catch (const MediaError& error) {
        if (error.category() != MediaError::Category::TimeOutOfRange)
            throw;
        return at(time, stop);
    }
}

bool FrameGatherer::isPlacedAt(std::int64_t frameTime) const {
    return m_sourceAt == frameTime && !m_fill;
}

/// Brings the source to where it gives the frames after that of `frameTime`.
void FrameGatherer::placeAt(std::int64_t frameTime, const std::stop_token& stop) {
    if (m_sourceAt != frameTime)
        (void)goTo(std::max(CMTime::zero(), timeline().timeOf(frameTime)), stop);
    m_fill.reset();
}

/// The source's first frame after `time`; null at the film's end. In damaged films the source may
/// have been brought to an earlier one.
SharedFrame FrameGatherer::sourceFrameAfter(std::int64_t time, FrameSource::Damage damage,
                                            const std::stop_token& stop) {
    m_sourceAt.reset();
    SharedFrame next;
    do
        next = m_source->frameAfter(damage, stop);
    while (next && next->presentationTime() <= time);
    if (next)
        m_sourceAt = next->presentationTime();
    else
        m_cache->setLast(time, m_source->endTickOfGiven());
    return next;
}

SharedFrame FrameGatherer::after(const SharedFrame& frame, const std::stop_token& stop) {
    const std::int64_t time = frame->presentationTime();
    if (m_cache->isLast(time))
        return nullptr;
    if (SharedFrame next = m_cache->after(time))
        return next;
    placeAt(time, stop);
    SharedFrame next = sourceFrameAfter(time, FrameSource::Damage::Retry, stop);
    if (next)
        m_cache->insertPair(frame, next);
    return next;
}

SharedFrame FrameGatherer::before(const SharedFrame& frame, const std::stop_token& stop) {
    const std::int64_t time = frame->presentationTime();
    if (m_cache->isFirst(time))
        return nullptr;
    // Where the group is being decoded anyway, the frame comes with it; else the quickest way is to
    // leave out what no other picture needs, and the group follows when there is time.
    SharedFrame before = m_cache->before(time);
    if (!before && isFillingUntil(time)) {
        while (continueFill(stop)) {
        }
        before = m_cache->before(time);
    }
    if (before)
        return before;
    const CMTime earlier = timeline().timeOf(time - 1);
    if (earlier < CMTime::zero())
        return nullptr;
    before = goTo(earlier, stop);
    if (before->presentationTime() >= time)
        return nullptr;
    m_cache->setNext(before->presentationTime(), time);
    return before;
}

bool FrameGatherer::beginFill(std::int64_t until, const std::stop_token& stop) {
    forgetPlace();
    const CMTime time = timeline().timeOf(until - 1);
    if (time < CMTime::zero())
        return false;
    const FrameSource::Tolerance groupStart{CMTime::positiveInfinity(), CMTime::zero()};
    SharedFrame frame = m_source->frameAt(time, groupStart, stop);
    if (frame->presentationTime() >= until)
        return false;
    m_cache->insert(frame);
    m_sourceAt = frame->presentationTime();
    m_fill = Fill{until, frame};
    m_announce();
    return true;
}

bool FrameGatherer::isFillingUntil(std::int64_t until) const {
    return m_fill && m_fill->until == until;
}

bool FrameGatherer::continueFill(const std::stop_token& stop) {
    m_sourceAt.reset();
    SharedFrame next = m_source->frameAfter(FrameSource::Damage::Retry, stop);
    if (next)
        m_sourceAt = next->presentationTime();
    const bool goesOn = next && next->presentationTime() < m_fill->until;
    if (goesOn) {
        m_cache->insertPair(m_fill->last, next);
        m_fill->last = next;
    } else {
        if (next)
            m_cache->setNext(m_fill->last->presentationTime(), m_fill->until);
        m_fill.reset();
    }
    m_announce();
    return goesOn;
}

void FrameGatherer::stepAhead(std::int64_t last, FrameSource::Damage damage,
                              const std::stop_token& seeking, const std::stop_token& stop) {
    const bool isPlaying = damage == FrameSource::Damage::Leave;
    // While a damaged stretch is skipped the source is ahead of the last frame kept.
    const bool isSkipping = isPlaying && m_sourceAt && m_lastIntact == last && *m_sourceAt > last;
    if (!isSkipping)
        placeAt(last, seeking);
    m_lastIntact = last;
    const SharedFrame next = sourceFrameAfter(last, damage, stop);
    if (!next) {
        m_announce();
        return;
    }
    const std::int64_t skipped = next->presentationTime() - last;
    const bool isSkipped = isPlaying && m_source->isDoubtful() &&
                           skipped < longestSkipSeconds * m_source->reader().ticksPerSecond();
    if (isSkipped)
        return;
    m_cache->insert(next);
    m_cache->setNext(last, next->presentationTime());
    m_announce();
}

} // namespace stillwick
