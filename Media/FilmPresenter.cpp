#include "Media/FilmPresenter.h"

#include "Media/MediaAsset.h"

#include <algorithm>
#include <new>
#include <utility>

namespace stillwick {

namespace {

using SteadyClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// How long neighbours are waited for before they are converted when they are asked for.
constexpr auto neighbourPatience = 3s;
// Playing begins when so many frames are decoded, or after so long.
constexpr int framesToBegin = 4;
constexpr auto patienceToBegin = 1s;
// A decoder that falls behind by this much goes on where the clock is.
constexpr auto longestLag = 1s;
constexpr auto shortWait = 5ms;

} // namespace

FilmPresenter::FilmPresenter(std::shared_ptr<const MediaAsset> asset, std::function<void()> wake,
                             std::unique_ptr<FilmPresenter> predecessor)
    : m_asset(std::move(asset)), m_cache(m_asset->frameCache()), m_wake(std::move(wake)),
      m_clock(std::make_shared<PlaybackClock>()), m_sound(m_asset->path(), m_clock),
      m_commands({Command::Verb::Seek, 0, CMTime::zero(), 0, nullptr}),
      m_predecessor(std::move(predecessor)),
      m_thread([this](const std::stop_token& stop) { run(stop); }) {}

FilmPresenter::~FilmPresenter() {
    dismiss();
    m_thread.join();
}

void FilmPresenter::dismiss() {
    m_sound.stop();
    m_thread.request_stop();
    m_commands.withdraw();
}

// Commands, from the player's thread.

void FilmPresenter::seek(const CMTime& time, std::uint64_t serial) {
    m_commands.push({Command::Verb::Seek, serial, time, 0, nullptr});
}

void FilmPresenter::step(int count, std::uint64_t serial) {
    m_commands.push({Command::Verb::Step, serial, {}, count, nullptr});
}

void FilmPresenter::play(std::uint64_t serial) {
    m_commands.push({Command::Verb::Play, serial, {}, 0, nullptr});
}

void FilmPresenter::rest(SharedFrame shown, std::uint64_t serial) {
    m_sound.stop();
    m_commands.push({Command::Verb::Rest, serial, {}, 0, std::move(shown)});
}

void FilmPresenter::setVolume(double volume, bool isMuted) {
    m_sound.setVolume(volume);
    m_sound.setMuted(isMuted);
}

std::optional<FilmPresenter::Presentation> FilmPresenter::take() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_presentation, std::nullopt);
}

std::int64_t FilmPresenter::droppedPictures() const {
    const std::lock_guard lock(m_mutex);
    return m_dropped;
}

// The presenter's own thread.

void FilmPresenter::run(const std::stop_token& stop) {
    m_predecessor.reset();
    m_loader = std::make_unique<FrameLoader>(m_asset, m_cache);
    while (!stop.stop_requested()) {
        if (const auto command = m_commands.take(stop))
            carryOut(*command, stop);
        else if (m_isPlaying)
            play(stop);
        else
            idle(stop);
    }
    m_loader.reset();
}

void FilmPresenter::carryOut(const Command& command, const std::stop_token& stop) {
    m_serial = command.serial;
    const std::stop_token replacement = m_commands.withdrawal();
    try {
        switch (command.verb) {
        case Command::Verb::Seek:
            carryOutSeek(command.time, replacement, stop);
            break;
        case Command::Verb::Step:
            carryOutSteps(command.count, replacement);
            break;
        case Command::Verb::Play:
            m_isPlaying = true;
            break;
        case Command::Verb::Rest:
            rest(command.frame);
            break;
        }
    } catch (const MediaError& error) {
        if (!replacement.stop_requested())
            presentFailure(error);
    } catch (const std::bad_alloc&) {
        presentFailure(MediaError::make(MediaError::Category::OutOfMemory));
    }
}

void FilmPresenter::carryOutSeek(const CMTime& time, const std::stop_token& replacement,
                                 const std::stop_token& stop) {
    if (m_commands.isDragging() && !m_cache->frameAt(time)) {
        const FrameLoader::Located near = m_loader->frameNear(time, stop);
        m_frame = near.frame;
        m_time = timeOf(*near.frame);
        present(Kind::Near, m_frame, m_time);
    }
    const FrameLoader::Located found = m_loader->frameAt(time, replacement);
    settle(found.frame, found.time, FrameLoader::Course::Resting);
}

void FilmPresenter::carryOutSteps(int count, const std::stop_token& replacement) {
    SharedFrame frame = m_frame;
    if (!frame) // the film could not be opened, or not be read where it was sought
        frame = m_loader->frameAt(m_time, replacement).frame;
    for (int i = 0; i < std::abs(count); ++i) {
        SharedFrame neighbour = count > 0 ? m_loader->frameAfter(frame, replacement)
                                          : m_loader->frameBefore(frame, replacement);
        if (!neighbour)
            break;
        frame = std::move(neighbour);
    }
    m_travelsBackward = count < 0;
    settle(frame, timeOf(*frame),
           count < 0 ? FrameLoader::Course::Backward : FrameLoader::Course::Forward);
}

void FilmPresenter::rest(const SharedFrame& shown) {
    m_isPlaying = false;
    if (shown) {
        m_frame = shown;
        m_time = timeOf(*shown);
    }
    if (m_frame)
        m_loader->setPosition(m_frame, FrameLoader::Course::Resting);
    // What was to be answered may have been overtaken by playing that is not shown any more.
    if (!shown && m_frame)
        present(Kind::Settled, m_frame, m_time);
    else if (!shown)
        post({Kind::Settled, m_serial, nullptr, QImage(), m_time, false, std::nullopt});
}

void FilmPresenter::settle(SharedFrame frame, const CMTime& time, FrameLoader::Course course) {
    m_frame = std::move(frame);
    m_time = time;
    m_loader->setPosition(m_frame, course);
    present(Kind::Settled, m_frame, m_time);
}

/// Until the next command: converts the neighbours of the picture shown, so that a step shows at
/// once.
void FilmPresenter::idle(const std::stop_token& stop) {
    const auto patience = SteadyClock::now() + neighbourPatience;
    while (!m_commands.isAnyWaiting() && !stop.stop_requested() && SteadyClock::now() < patience) {
        const Neighbours neighbours = prepareNeighbour();
        if (neighbours == Neighbours::Ready)
            break;
        if (neighbours == Neighbours::Awaited)
            m_commands.waitForOne(SteadyClock::now() + shortWait, stop);
    }
    m_commands.waitForOne(stop);
}

/// Converts one neighbour that is not yet.
FilmPresenter::Neighbours FilmPresenter::prepareNeighbour() {
    if (!m_frame)
        return Neighbours::Ready;
    const std::int64_t time = m_frame->presentationTime();
    Neighbours result = Neighbours::Ready;
    for (const bool isBackward : {m_travelsBackward, !m_travelsBackward}) {
        const SharedFrame neighbour = isBackward ? m_cache->before(time) : m_cache->after(time);
        const bool isAtEnd = isBackward ? m_cache->isFirst(time) : m_cache->isLast(time);
        if (neighbour && !m_pictures.has(*neighbour)) {
            (void)m_pictures.of(neighbour);
            return Neighbours::Converted;
        }
        if (!neighbour && !isAtEnd)
            result = Neighbours::Awaited;
    }
    return result;
}

void FilmPresenter::play(const std::stop_token& stop) {
    try {
        startPlaying(stop);
        while (!stop.stop_requested() && !m_commands.isAnyWaiting() && playNext(stop)) {
        }
    } catch (const MediaError& error) {
        m_isPlaying = false;
        if (error.category() != MediaError::Category::Cancelled)
            presentFailure(error);
    } catch (const std::bad_alloc&) {
        m_isPlaying = false;
        presentFailure(MediaError::make(MediaError::Category::OutOfMemory));
    }
    m_sound.stop();
}

void FilmPresenter::startPlaying(const std::stop_token& stop) {
    if (!m_frame || !m_loader->frameAfter(m_frame, stop)) {
        const FrameLoader::Located start = m_loader->frameAt(CMTime::zero(), stop);
        m_frame = start.frame;
        m_time = start.time;
        present(Kind::Playing, m_frame, m_time);
    }
    m_loader->setPosition(m_frame, FrameLoader::Course::Playing);
    const auto patience = SteadyClock::now() + patienceToBegin;
    while (!m_commands.isAnyWaiting() && !stop.stop_requested() && SteadyClock::now() < patience) {
        const std::int64_t progress = m_loader->progress();
        const auto stretch = m_cache->stretchAround(m_frame->presentationTime());
        if (stretch && (stretch->framesAhead >= framesToBegin || stretch->reachesEnd))
            break;
        if (m_loader->hasFailedAfter(m_frame))
            break;
        m_loader->waitForProgress(progress, SteadyClock::now() + shortWait, stop);
    }
    if (m_commands.isAnyWaiting() || stop.stop_requested())
        return;
    const Timeline line = m_cache->timeline();
    const std::chrono::nanoseconds zero(av_rescale_q(line.zero, line.timeBase, {1, 1'000'000'000}));
    const auto from = std::chrono::nanoseconds(
        av_rescale(m_time.value, 1'000'000'000, std::max(1, m_time.timescale)));
    m_sound.play(from, zero);
    while (!m_clock->isRunning() && !m_commands.isAnyWaiting() && !stop.stop_requested())
        m_commands.waitForOne(SteadyClock::now() + shortWait, stop);
    if (!m_commands.isAnyWaiting() && !stop.stop_requested())
        present(Kind::Playing, m_frame, m_time);
}

bool FilmPresenter::playNext(const std::stop_token& stop) {
    const std::int64_t progress = m_loader->progress();
    SharedFrame next = m_cache->after(m_frame->presentationTime());
    if (!next)
        return waitForMore(progress, stop);
    next = newestDue(std::move(next));
    if (m_clock->at(SteadyClock::now()) - startOf(*next) > longestLag) {
        catchUp(stop);
        return true;
    }
    (void)m_pictures.of(next);
    if (!waitUntilDue(*next, stop))
        return true;
    m_frame = next;
    m_time = timeOf(*next);
    m_loader->setPosition(m_frame, FrameLoader::Course::Playing);
    present(Kind::Playing, m_frame, m_time);
    return true;
}

/// There is no next picture: the film ends, or cannot be read on, or the decoder is late.
bool FilmPresenter::waitForMore(std::int64_t progress, const std::stop_token& stop) {
    const bool isLast = m_cache->isLast(m_frame->presentationTime());
    const auto end = m_cache->endTick();
    const auto now = SteadyClock::now();
    if (!isLast && !m_loader->hasFailedAfter(m_frame)) {
        m_loader->waitForProgress(progress, now + shortWait, stop);
        return true;
    }
    const auto due =
        isLast && end ? m_clock->steadyTimeOf(m_cache->timeline().nanosecondsOf(*end)) : now;
    if (now < due) {
        m_commands.waitForOne(due, stop);
        return true;
    }
    m_isPlaying = false;
    m_time = isLast && end ? m_cache->timeline().timeOf(*end) : timeOf(*m_frame);
    m_loader->setPosition(m_frame, FrameLoader::Course::Resting);
    present(Kind::Ended, m_frame, m_time);
    return false;
}

/// Leaves out pictures that another replaces before they can be shown.
SharedFrame FilmPresenter::newestDue(SharedFrame next) {
    const std::chrono::nanoseconds now = m_clock->at(SteadyClock::now());
    for (;;) {
        SharedFrame later = m_cache->after(next->presentationTime());
        if (!later || startOf(*later) > now)
            return next;
        next = std::move(later);
        const std::lock_guard lock(m_mutex);
        ++m_dropped;
    }
}

/// Goes on where the clock is.
void FilmPresenter::catchUp(const std::stop_token& stop) {
    const std::chrono::nanoseconds now = m_clock->at(SteadyClock::now());
    const FrameLoader::Located found =
        m_loader->frameAt(CMTime::make(now.count(), 1'000'000'000), stop);
    m_frame = found.frame;
    m_time = timeOf(*found.frame);
    m_loader->setPosition(m_frame, FrameLoader::Course::Playing);
    present(Kind::Playing, m_frame, m_time);
}

/// False where a command came first.
bool FilmPresenter::waitUntilDue(const VideoFrame& frame, const std::stop_token& stop) {
    for (;;) {
        // The clock is corrected as it runs: long waits are taken in pieces.
        const auto due = m_clock->steadyTimeOf(startOf(frame));
        if (SteadyClock::now() >= due)
            return true;
        m_commands.waitForOne(std::min(due, SteadyClock::now() + 50ms), stop);
        if (m_commands.isAnyWaiting() || stop.stop_requested())
            return false;
    }
}

CMTime FilmPresenter::timeOf(const VideoFrame& frame) const {
    // The first picture may begin before the film's zero.
    return std::max(CMTime::zero(), m_cache->timeline().timeOf(frame.presentationTime()));
}

std::chrono::nanoseconds FilmPresenter::startOf(const VideoFrame& frame) const {
    return m_cache->timeline().nanosecondsOf(frame.presentationTime());
}

void FilmPresenter::present(Kind kind, const SharedFrame& frame, const CMTime& time) {
    post({kind, m_serial, frame, m_pictures.of(frame), time, false, std::nullopt});
}

void FilmPresenter::presentFailure(const MediaError& error) {
    post({Kind::Failed, m_serial, m_frame, m_frame ? m_pictures.of(m_frame) : QImage(), m_time,
          false, error});
}

void FilmPresenter::post(Presentation presentation) {
    presentation.isJump = presentation.kind != Kind::Near && presentation.kind != Kind::Playing;
    {
        const std::lock_guard lock(m_mutex);
        // A picture that nobody fetched is replaced; that there was a jump is not forgotten.
        if (m_presentation)
            presentation.isJump = presentation.isJump || m_presentation->isJump;
        m_presentation = std::move(presentation);
    }
    m_wake();
}

} // namespace stillwick
