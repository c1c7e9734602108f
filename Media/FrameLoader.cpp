#include "Media/FrameLoader.h"

#include "Media/MediaAsset.h"

#include <algorithm>
#include <new>
#include <utility>

namespace stillwick {

namespace {

using SteadyClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Stepping forward: below the first number the loader returns to its work ahead, up to the second.
constexpr int fewAhead = 10;
constexpr int manyAhead = 40;
constexpr auto aheadWhilePlaying = 700ms;
constexpr int framesAheadWhilePlaying = 60;
// Whoever has not stepped for so long is resting.
constexpr auto restAfter = 600ms;
// A seek is often followed by another, which would have to wait for what is being decoded.
constexpr auto workAfterSeek = 120ms;

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
        m_gatherer.emplace(
            *m_asset, m_cache, [this] { announce(); }, stop);
    } catch (const MediaError& error) {
        m_openingError = error;
    } catch (const std::bad_alloc&) {
        m_openingError = MediaError::make(MediaError::Category::OutOfMemory);
    }
}

bool FrameLoader::waitForWork(const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    const auto isWork = [this] {
        return m_want || m_hasNewPosition;
    };
    // Some work begins by itself, when there was no request for a while.
    const bool hasStepped =
        m_position.course == Course::Forward || m_position.course == Course::Backward;
    const auto workBegins = m_position.since + (hasStepped ? restAfter : workAfterSeek);
    if (!m_position.frame || (!hasStepped && SteadyClock::now() >= workBegins))
        return m_workChanged.wait(lock, stop, isWork);
    if (!m_workChanged.wait_until(lock, stop, workBegins, isWork) && hasStepped)
        m_position.course = Course::Resting;
    return !stop.stop_requested();
}

void FrameLoader::announce() {
    const std::lock_guard lock(m_mutex);
    ++m_progress;
    m_answered.notify_all();
}

void FrameLoader::answer(Want& want) {
    try {
        if (m_openingError)
            throw MediaError(*m_openingError);
        want.located = locate(want);
        if (m_gatherer->noticeNewTimeline())
            m_fillTried.reset();
    } catch (const MediaError& error) {
        want.error = error;
    } catch (const std::bad_alloc&) {
        want.error = MediaError::make(MediaError::Category::OutOfMemory);
    }
    if (want.error && m_gatherer)
        m_gatherer->forgetPlace();
    const std::lock_guard lock(m_mutex);
    if (!want.error)
        m_failedAfter.reset();
    want.isAnswered = true;
    m_answered.notify_all();
}

FrameLoader::Located FrameLoader::locate(const Want& want) {
    switch (want.kind) {
    case Want::Kind::At:
        return m_gatherer->at(want.time, want.stop);
    case Want::Kind::Near:
        return m_gatherer->near(want.time, want.stop);
    case Want::Kind::After:
        return {m_gatherer->after(want.frame, want.stop), {}};
    case Want::Kind::Before:
        return {m_gatherer->before(want.frame, want.stop), {}};
    }
    Q_UNREACHABLE();
}

bool FrameLoader::prefetch(const std::stop_token& stop) {
    Position position;
    std::stop_token interruption;
    {
        const std::lock_guard lock(m_mutex);
        m_hasNewPosition = false;
        position = m_position;
        interruption = m_interruption.get_token();
    }
    if (!position.frame || !m_gatherer || stop.stop_requested())
        return false;
    try {
        const bool hasWorked = prefetchFor(position, interruption, stop);
        if (m_gatherer->noticeNewTimeline())
            m_fillTried.reset();
        return hasWorked;
    } catch (const MediaError& error) {
        m_gatherer->forgetPlace();
        if (error.category() == MediaError::Category::Cancelled)
            return true;
    } catch (const std::bad_alloc&) {
        m_gatherer->forgetPlace();
    }
    noteFailure(position.frame->presentationTime());
    return false;
}

void FrameLoader::noteFailure(std::int64_t position) {
    const auto stretch = m_cache->stretchAround(position);
    const std::lock_guard lock(m_mutex);
    m_failedAfter = stretch ? stretch->last : position;
    ++m_progress;
    m_answered.notify_all();
}

/// One frame of work ahead of requests; false where there is none to do.
bool FrameLoader::prefetchFor(const Position& position, const std::stop_token& interruption,
                              const std::stop_token& stop) {
    const std::int64_t place = position.frame->presentationTime();
    const auto stretch = m_cache->stretchAround(place);
    if (!stretch)
        return false;
    if (position.course == Course::Playing) {
        if (isEnoughToPlay(*stretch, place) || !canGoOnAfter(*stretch))
            return false;
        m_gatherer->stepAhead(stretch->last, FrameSource::Damage::Leave, interruption, stop);
        return true;
    }
    if (position.course == Course::Resting && SteadyClock::now() < position.since + workAfterSeek)
        return false;
    if (canGoOnAfter(*stretch) &&
        stretch->framesAhead < framesWantedAhead(*stretch, position.course) &&
        stretch->bytesAhead < FrameCache::share() / 3) {
        m_gatherer->stepAhead(stretch->last, FrameSource::Damage::Retry, interruption, stop);
        return true;
    }
    if (position.course == Course::Forward && SteadyClock::now() < position.since + restAfter)
        return false; // the place ahead is not given up for the one behind
    return fillBehind(*stretch, place, interruption, stop);
}

bool FrameLoader::canGoOnAfter(const FrameCache::Stretch& stretch) const {
    const std::lock_guard lock(m_mutex);
    return !stretch.reachesEnd && m_failedAfter != stretch.last;
}

bool FrameLoader::isEnoughToPlay(const FrameCache::Stretch& stretch, std::int64_t position) const {
    const Timeline line = m_gatherer->timeline();
    const auto ahead = line.nanosecondsOf(stretch.last) - line.nanosecondsOf(position);
    return stretch.framesAhead > 0 &&
           (ahead >= aheadWhilePlaying || stretch.framesAhead >= framesAheadWhilePlaying ||
            stretch.bytesAhead >= FrameCache::share() / 2);
}

int FrameLoader::framesWantedAhead(const FrameCache::Stretch& stretch, Course course) const {
    if (course == Course::Forward || m_gatherer->isPlacedAt(stretch.last))
        return manyAhead;
    return course == Course::Backward ? 1 : fewAhead;
}

/// Decodes the group before, one frame at a time.
bool FrameLoader::fillBehind(const FrameCache::Stretch& stretch, std::int64_t position,
                             const std::stop_token& interruption, const std::stop_token& stop) {
    if (m_gatherer->isFillingUntil(stretch.first)) {
        m_gatherer->continueFill(stop);
        return true;
    }
    const FillTried attempt{stretch.first, position};
    if (stretch.reachesStart || m_fillTried == attempt ||
        stretch.bytesBehind >= FrameCache::share() / 2)
        return false;
    const bool hasBegun = m_gatherer->beginFill(stretch.first, interruption);
    m_fillTried = attempt;
    return hasBegun;
}

} // namespace stillwick
