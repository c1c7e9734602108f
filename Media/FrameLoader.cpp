#include "Media/FrameLoader.h"

#include "Media/MediaAsset.h"

#include <algorithm>
#include <new>
#include <utility>

namespace stillwick {

namespace {

using SteadyClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Decoded on the way to a place jumped to, so that the first steps back from it cost nothing.
constexpr int trail = 12;
// Stepping forward: below the first number the loader returns to its work ahead, up to the second.
constexpr int fewAhead = 10;
constexpr int manyAhead = 40;
constexpr auto aheadWhilePlaying = 700ms;
constexpr int framesAheadWhilePlaying = 60;
// Whoever has not moved for so long is resting.
constexpr auto restAfter = 600ms;
// A damaged stretch is skipped for at most so long, where no key picture ends it.
constexpr std::int64_t longestSkipSeconds = 2;

} // namespace

struct FrameLoader::Want {
    enum class Kind { At, Near, After, Before };
    Kind kind = Kind::At;
    CMTime time;
    SharedFrame frame;
    std::stop_token stop;
    Located located;
    std::optional<MediaError> error;
    bool isAnswered = false;
};

FrameLoader::FrameLoader(std::shared_ptr<const MediaAsset> asset, std::shared_ptr<FrameCache> cache)
    : m_asset(std::move(asset)), m_cache(std::move(cache)),
      m_thread([this](const std::stop_token& stop) { run(stop); }) {}

FrameLoader::~FrameLoader() {
    m_thread.request_stop();
    {
        const std::lock_guard lock(m_mutex);
        m_interruption.request_stop();
    }
    m_thread.join();
    m_cache->end();
}

// Requests, from the thread that shows.

FrameLoader::Located FrameLoader::ask(Want& want) {
    std::unique_lock lock(m_mutex);
    m_want = &want;
    m_interruption.request_stop();
    m_workChanged.notify_all();
    m_answered.wait(lock, want.stop, [&want] { return want.isAnswered; });
    if (m_want == &want) {
        m_want = nullptr;
        throw MediaError::make(MediaError::Category::Cancelled);
    }
    // The loader is at it: it notices the stop token itself, and then lets go of the want.
    m_answered.wait(lock, [&want] { return want.isAnswered; });
    if (want.error)
        throw MediaError(*want.error);
    return want.located;
}

FrameLoader::Located FrameLoader::frameAt(const CMTime& time, const std::stop_token& stop) {
    if (SharedFrame frame = m_cache->frameAt(time))
        return {frame, time};
    Want want{Want::Kind::At, time, nullptr, stop, {}, {}};
    return ask(want);
}

FrameLoader::Located FrameLoader::frameNear(const CMTime& time, const std::stop_token& stop) {
    if (SharedFrame frame = m_cache->frameAt(time))
        return {frame, time};
    Want want{Want::Kind::Near, time, nullptr, stop, {}, {}};
    return ask(want);
}

SharedFrame FrameLoader::frameAfter(const SharedFrame& frame, const std::stop_token& stop) {
    if (SharedFrame next = m_cache->after(frame->presentationTime()))
        return next;
    Want want{Want::Kind::After, {}, frame, stop, {}, {}};
    return ask(want).frame;
}

SharedFrame FrameLoader::frameBefore(const SharedFrame& frame, const std::stop_token& stop) {
    if (SharedFrame before = m_cache->before(frame->presentationTime()))
        return before;
    Want want{Want::Kind::Before, {}, frame, stop, {}, {}};
    return ask(want).frame;
}

void FrameLoader::setPosition(const SharedFrame& frame, Course course) {
    const auto direction = course == Course::Resting    ? FrameCache::Course::Resting
                           : course == Course::Backward ? FrameCache::Course::Backward
                                                        : FrameCache::Course::Forward;
    m_cache->setPosition(frame->presentationTime(), direction);
    const std::lock_guard lock(m_mutex);
    m_position = {frame, course, SteadyClock::now()};
    m_hasNewPosition = true;
    m_workChanged.notify_all();
}

std::int64_t FrameLoader::progress() const {
    const std::lock_guard lock(m_mutex);
    return m_progress;
}

void FrameLoader::waitForProgress(std::int64_t since, SteadyClock::time_point deadline,
                                  const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    m_answered.wait_until(lock, stop, deadline, [this, since] { return m_progress != since; });
}

bool FrameLoader::hasFailedAfter(const SharedFrame& frame) const {
    const std::lock_guard lock(m_mutex);
    return m_failedAfter == frame->presentationTime();
}

// The loader's own thread.

void FrameLoader::run(const std::stop_token& stop) {
    open(stop);
    while (!stop.stop_requested()) {
        Want* want = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            want = std::exchange(m_want, nullptr);
            m_interruption = std::stop_source();
        }
        if (want)
            answer(*want);
        else if (!prefetch(stop) && !waitForWork(stop))
            break;
    }
    // Nobody asks any more: whoever owns the loader has stopped asking before it goes.
}

void FrameLoader::open(const std::stop_token& stop) {
    try {
        openSource(stop);
    } catch (const MediaError& error) {
        m_openingError = error;
    } catch (const std::bad_alloc&) {
        m_openingError = MediaError::make(MediaError::Category::OutOfMemory);
    }
}

void FrameLoader::openSource(const std::stop_token& stop) {
    m_source = m_asset->takeFrameSource(stop);
    m_timelineRevision = m_source->timelineRevision();
    m_source->setPairHandler(
        [this](const SharedFrame& frame, const SharedFrame& next) {
            m_cache->insertPair(frame, next);
            announceFrame();
        },
        trail);
    m_cache->begin(m_source->timeline());
    m_cache->setFirst(goTo(CMTime::zero(), stop)->presentationTime());
}

bool FrameLoader::waitForWork(const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    m_hasNewPosition = false;
    // Resting begins by itself: then there is other work.
    const bool isMoving = m_position.frame && m_position.course != Course::Resting &&
                          m_position.course != Course::Playing;
    const auto isWork = [this] {
        return m_want || m_hasNewPosition;
    };
    if (!isMoving)
        return m_workChanged.wait(lock, stop, isWork);
    if (!m_workChanged.wait_until(lock, stop, m_position.since + restAfter, isWork))
        m_position.course = Course::Resting;
    return !stop.stop_requested();
}

void FrameLoader::announceFrame() {
    const std::lock_guard lock(m_mutex);
    ++m_progress;
    m_answered.notify_all();
}

void FrameLoader::answer(Want& want) {
    try {
        if (m_openingError)
            throw MediaError(*m_openingError);
        want.located = locate(want);
        noticeNewTimeline();
        const std::lock_guard lock(m_mutex);
        m_failedAfter.reset();
    } catch (const MediaError& error) {
        want.error = error;
        m_sourceAt.reset();
        m_fill.reset();
    } catch (const std::bad_alloc&) {
        want.error = MediaError::make(MediaError::Category::OutOfMemory);
        m_sourceAt.reset();
        m_fill.reset();
    }
    const std::lock_guard lock(m_mutex);
    want.isAnswered = true;
    m_answered.notify_all();
}

FrameLoader::Located FrameLoader::locate(const Want& want) {
    switch (want.kind) {
    case Want::Kind::At:
        return locateAt(want.time, want.stop);
    case Want::Kind::Near:
        return locateNear(want.time, want.stop);
    case Want::Kind::After:
        return {locateAfter(want.frame, want.stop), {}};
    case Want::Kind::Before:
        return {locateBefore(want.frame, want.stop), {}};
    }
    Q_UNREACHABLE();
}

/// The source's frame at `time`, into the cache.
SharedFrame FrameLoader::goTo(const CMTime& time, const std::stop_token& stop) {
    m_fill.reset();
    m_sourceAt.reset();
    SharedFrame frame = m_source->frameAt(time, {}, stop);
    m_sourceAt = frame->presentationTime();
    m_cache->insert(frame);
    return frame;
}

FrameLoader::Located FrameLoader::locateAt(const CMTime& time, const std::stop_token& stop) {
    SharedFrame frame = m_cache->frameAt(time);
    // What is being decoded already is not begun anew.
    while (!frame && m_fill && m_source->timeline().tickAtOrBefore(time) < m_fill->until &&
           m_source->timeline().tickAtOrBefore(time) >= m_fill->last->presentationTime() &&
           continueFill(stop))
        frame = m_cache->frameAt(time);
    if (frame)
        return {frame, time};
    try {
        return {goTo(time, stop), time};
    } catch (const MediaError& error) {
        if (error.category() != MediaError::Category::TimeOutOfRange || time < CMTime::zero())
            throw;
    }
    const CMTime end = m_source->endTime(stop);
    frame = goTo(end, stop);
    m_cache->setLast(frame->presentationTime(), m_source->timeline().tickAtOrAfter(end));
    return {frame, end};
}

FrameLoader::Located FrameLoader::locateNear(const CMTime& time, const std::stop_token& stop) {
    m_fill.reset();
    m_sourceAt.reset();
    try {
        const FrameSource::Tolerance near{CMTime::positiveInfinity(), CMTime::zero()};
        SharedFrame frame = m_source->frameAt(time, near, stop);
        m_sourceAt = frame->presentationTime();
        m_cache->insert(frame);
        return {frame, m_source->filmTime(*frame)};
    } catch (const MediaError& error) {
        if (error.category() != MediaError::Category::TimeOutOfRange)
            throw;
        return locateAt(time, stop);
    }
}

/// Brings the source to where it gives the frames after that of `frameTime`.
void FrameLoader::placeAt(std::int64_t frameTime, const std::stop_token& stop) {
    if (m_sourceAt != frameTime)
        (void)goTo(std::max(CMTime::zero(), m_source->timeline().timeOf(frameTime)), stop);
}

/// The source's first frame after `time`; null at the film's end. In damaged films the source may
/// have been brought to an earlier one.
SharedFrame FrameLoader::sourceFrameAfter(std::int64_t time, FrameSource::Damage damage,
                                          const std::stop_token& stop) {
    m_sourceAt.reset();
    SharedFrame next;
    do
        next = m_source->frameAfter(damage, stop);
    while (next && next->presentationTime() <= time);
    if (next)
        m_sourceAt = next->presentationTime();
    return next;
}

SharedFrame FrameLoader::locateAfter(const SharedFrame& frame, const std::stop_token& stop) {
    const std::int64_t time = frame->presentationTime();
    if (m_cache->isLast(time))
        return nullptr;
    if (SharedFrame next = m_cache->after(time))
        return next;
    placeAt(time, stop);
    SharedFrame next = sourceFrameAfter(time, FrameSource::Damage::Retry, stop);
    if (!next) {
        m_cache->setLast(time, m_source->endTickOfGiven());
        return nullptr;
    }
    m_cache->insertPair(frame, next);
    return next;
}

SharedFrame FrameLoader::locateBefore(const SharedFrame& frame, const std::stop_token& stop) {
    const std::int64_t time = frame->presentationTime();
    if (m_cache->isFirst(time))
        return nullptr;
    // Where the group is being decoded anyway, the frame comes with it; else the quickest way is to
    // leave out what no other picture needs, and the group follows when there is time.
    SharedFrame before = m_cache->before(time);
    while (!before && m_fill && m_fill->until == time && continueFill(stop))
        before = m_cache->before(time);
    if (before)
        return before;
    const CMTime earlier = m_source->timeline().timeOf(time - 1);
    if (earlier < CMTime::zero())
        return nullptr;
    before = goTo(earlier, stop);
    if (before->presentationTime() >= time)
        return nullptr;
    m_cache->setNext(before->presentationTime(), time);
    return before;
}

/// Goes to the first frame of the group in which the frame before `until` lies.
bool FrameLoader::beginFill(std::int64_t until, const std::stop_token& stop) {
    const CMTime time = m_source->timeline().timeOf(until - 1);
    if (time < CMTime::zero())
        return false;
    const FrameSource::Tolerance groupStart{CMTime::positiveInfinity(), CMTime::zero()};
    m_fill.reset();
    m_sourceAt.reset();
    SharedFrame frame = m_source->frameAt(time, groupStart, stop);
    if (frame->presentationTime() >= until)
        return false;
    m_cache->insert(frame);
    m_sourceAt = frame->presentationTime();
    m_fill = Fill{until, frame};
    announceFrame();
    return true;
}

/// Decodes one frame more of the group; false when that is done.
bool FrameLoader::continueFill(const std::stop_token& stop) {
    m_sourceAt.reset();
    SharedFrame next = m_source->frameAfter(FrameSource::Damage::Retry, stop);
    if (next)
        m_sourceAt = next->presentationTime();
    if (next && next->presentationTime() < m_fill->until) {
        m_cache->insertPair(m_fill->last, next);
        m_fill->last = next;
        announceFrame();
        return true;
    }
    if (next)
        m_cache->setNext(m_fill->last->presentationTime(), m_fill->until);
    m_fill.reset();
    announceFrame();
    return false;
}

bool FrameLoader::prefetch(const std::stop_token& stop) {
    if (!m_source || m_openingError)
        return false;
    Position position;
    std::stop_token interruption;
    {
        const std::lock_guard lock(m_mutex);
        position = m_position;
        interruption = m_interruption.get_token();
    }
    if (!position.frame || stop.stop_requested())
        return false;
    const std::int64_t place = position.frame->presentationTime();
    try {
        const bool hasWorked = prefetchFor(position, interruption);
        noticeNewTimeline();
        return hasWorked;
    } catch (const MediaError& error) {
        m_sourceAt.reset();
        m_fill.reset();
        if (error.category() == MediaError::Category::Cancelled)
            return true;
    } catch (const std::bad_alloc&) {
        m_sourceAt.reset();
        m_fill.reset();
    }
    noteFailure(place);
    return false;
}

void FrameLoader::noteFailure(std::int64_t position) {
    const auto stretch = m_cache->stretchAround(position);
    const std::lock_guard lock(m_mutex);
    m_failedAfter = stretch ? stretch->last : position;
    ++m_progress;
    m_answered.notify_all();
}

bool FrameLoader::prefetchFor(const Position& position, const std::stop_token& stop) {
    const std::int64_t place = position.frame->presentationTime();
    const auto stretch = m_cache->stretchAround(place);
    if (!stretch)
        return false;
    if (position.course == Course::Playing)
        return playAhead(*stretch, place, stop);
    const bool isMovingOn = position.course == Course::Forward;
    const bool isAtItAhead = m_sourceAt == stretch->last && !m_fill;
    const int wanted = isAtItAhead || isMovingOn             ? manyAhead
                       : position.course == Course::Backward ? 1
                                                             : fewAhead;
    if (canGoOnAfter(*stretch) && stretch->framesAhead < wanted &&
        stretch->bytesAhead < FrameCache::share() / 3)
        return stepAhead(stretch->last, FrameSource::Damage::Retry, stop);
    if (isMovingOn && SteadyClock::now() < position.since + restAfter)
        return false; // the place ahead is not given up for the one behind
    return fillBehind(*stretch, place, stop);
}

bool FrameLoader::canGoOnAfter(const FrameCache::Stretch& stretch) const {
    const std::lock_guard lock(m_mutex);
    return !stretch.reachesEnd && m_failedAfter != stretch.last;
}

bool FrameLoader::playAhead(const FrameCache::Stretch& stretch, std::int64_t position,
                            const std::stop_token& stop) {
    const Timeline line = m_source->timeline();
    const auto ahead = line.nanosecondsOf(stretch.last) - line.nanosecondsOf(position);
    const bool isEnough =
        stretch.framesAhead > 0 &&
        (ahead >= aheadWhilePlaying || stretch.framesAhead >= framesAheadWhilePlaying ||
         stretch.bytesAhead >= FrameCache::share() / 2);
    return !isEnough && canGoOnAfter(stretch) &&
           stepAhead(stretch.last, FrameSource::Damage::Leave, stop);
}

/// Decodes the group before, one frame at a time.
bool FrameLoader::fillBehind(const FrameCache::Stretch& stretch, std::int64_t position,
                             const std::stop_token& stop) {
    if (m_fill && m_fill->until == stretch.first) {
        (void)continueFill(m_thread.get_stop_token());
        return true;
    }
    m_fill.reset();
    const FillTried attempt{stretch.first, position};
    if (stretch.reachesStart || m_fillTried == attempt ||
        stretch.bytesBehind >= FrameCache::share() / 2)
        return false;
    const bool hasBegun = beginFill(stretch.first, stop);
    m_fillTried = attempt;
    return hasBegun;
}

bool FrameLoader::stepAhead(std::int64_t last, FrameSource::Damage damage,
                            const std::stop_token& stop) {
    const bool isPlaying = damage == FrameSource::Damage::Leave;
    // While a damaged stretch is skipped the source is ahead of the last frame kept.
    const bool isSkipping = isPlaying && m_sourceAt && m_lastIntact == last && *m_sourceAt > last;
    if (!isSkipping)
        placeAt(last, stop);
    m_lastIntact = last;
    m_fill.reset();
    const SharedFrame next = sourceFrameAfter(last, damage, m_thread.get_stop_token());
    if (!next) {
        m_cache->setLast(last, m_source->endTickOfGiven());
        announceFrame();
        return true;
    }
    const std::int64_t skipped = next->presentationTime() - last;
    const bool isSkipped = isPlaying && m_source->isDoubtful() &&
                           skipped < longestSkipSeconds * m_source->reader().ticksPerSecond();
    if (!isSkipped) {
        m_cache->insert(next);
        m_cache->setNext(last, next->presentationTime());
        announceFrame();
    }
    return true;
}

/// All times of the film have changed: what the cache knows of them is of no use.
void FrameLoader::noticeNewTimeline() {
    if (m_timelineRevision == m_source->timelineRevision())
        return;
    m_timelineRevision = m_source->timelineRevision();
    m_cache->begin(m_source->timeline());
    m_sourceAt.reset();
    m_fill.reset();
    m_fillTried.reset();
}

} // namespace stillwick
