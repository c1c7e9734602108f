#include "Media/SoundFeeder.h"

#include "Media/MediaError.h"
#include "Media/SoundOutput.h"
#include "Media/SoundThread.h"
#include "Media/SoundTrack.h"
#include "Media/SoundWindow.h"

#include <algorithm>
#include <utility>

namespace stillwick {

namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

// Decoded ahead: a disk may take so long to answer. Devices with a long way to the ear (200 ms by
// radio) must fit in when sound joins a film that runs.
constexpr auto windowLength = 800ms;
constexpr auto blockLength = 20ms;

// Qt tells of devices that come on some systems only, so they are looked for.
constexpr auto pauseLength = 1s;

} // namespace

SoundFeeder::SoundFeeder(QString path, std::shared_ptr<SoundControl> control)
    : m_path(std::move(path)), m_control(std::move(control)),
      m_thread([this](const std::stop_token& stop) { run(stop); }) {}

SoundFeeder::~SoundFeeder() {
    m_thread.request_stop();
    m_control->wake();
}

void SoundFeeder::serve(std::shared_ptr<SoundSession> session) {
    {
        const std::lock_guard lock(m_mutex);
        m_next = std::move(session);
    }
    m_control->wake();
}

void SoundFeeder::run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        adopt();
        m_control->waitUntil(step(stop));
    }
}

void SoundFeeder::adopt() {
    const std::lock_guard lock(m_mutex);
    if (!m_next)
        return;
    m_session = std::exchange(m_next, nullptr);
    m_window.reset();
    m_stage = Stage::AskForDevice;
}

/// Does what there is to do; the result tells when to look again, if nothing happens before.
SteadyTime SoundFeeder::step(const std::stop_token& stop) {
    const SteadyTime whenever = SteadyClock::now() + 1h;
    if (!m_session || m_session->isOver())
        return whenever;
    m_session->goOnAloneIfLate();
    if (m_stage == Stage::Pause && SteadyClock::now() >= m_resume)
        m_stage = Stage::AskForDevice;
    if (m_stage == Stage::AskForDevice)
        askForDevice();
    if (m_stage == Stage::AwaitDevice)
        awaitDevice(stop);
    if (m_stage == Stage::Feed)
        feed(stop);
    if (m_session->isWaiting())
        return m_session->deadline();
    return m_stage == Stage::Pause ? m_resume : whenever;
}

void SoundFeeder::askForDevice() {
    if (m_hasNoSound) {
        m_session->goOnAlone();
        m_stage = Stage::Done;
        return;
    }
    postToSoundThread([session = m_session](QObject&) {
        if (!session->isOver())
            session->setDevice({SoundOutput::deviceFormat()});
    });
    m_stage = Stage::AwaitDevice;
}

void SoundFeeder::awaitDevice(const std::stop_token& stop) {
    const std::optional<SoundDevice> answer = m_session->takeDevice();
    if (!answer)
        return;
    if (!answer->format) {
        pause();
    } else if (!openTrack(*answer->format, stop)) {
        m_session->goOnAlone();
        m_stage = Stage::Done;
    } else {
        const std::int64_t start = m_format.framesIn(m_session->filmTime(SteadyClock::now()));
        m_window = std::make_shared<SoundWindow>(m_format.channels,
                                                 int(m_format.framesIn(windowLength)), start);
        fill(stop);
        m_session->setOutput(SoundSession::Output::Open);
        postToSoundThread(
            [session = m_session, window = m_window, format = m_format, start](QObject& home) {
                SoundOutput::begin(home, session, window, format, start);
            });
        m_stage = Stage::Feed;
    }
}

bool SoundFeeder::openTrack(SoundFormat format, const std::stop_token& stop) {
    if (m_track && m_format == format && m_zero == m_session->zero())
        return true;
    m_track.reset();
    m_position.reset();
    m_format = format;
    m_zero = m_session->zero();
    try {
        m_track = SoundTrack::open(m_path, format.sampleRate, format.channels, m_zero, stop);
        m_hasNoSound = !m_track;
    } catch (const MediaError&) {
        // Whoever reads the pictures meets the same error, and tells of it.
    }
    return m_track != nullptr;
}

void SoundFeeder::feed(const std::stop_token& stop) {
    if (m_session->output() == SoundSession::Output::Lost)
        pause();
    else
        fill(stop);
}

void SoundFeeder::fill(const std::stop_token& stop) {
    const auto block = int(m_format.framesIn(blockLength));
    m_block.resize(std::size_t(block) * std::size_t(m_format.channels));
    while (!stop.stop_requested() && !m_session->isOver()) {
        const SoundWindow::Need need = m_window->need();
        if (need.frames < block)
            return;
        if (need.start != m_position)
            m_track->seek(m_format.timeOf(need.start));
        m_track->read(m_block.data(), block);
        m_position = need.start + block;
        m_window->append(need.start, m_block.data(), block);
    }
}

void SoundFeeder::pause() {
    m_session->goOnAlone();
    m_window.reset();
    m_stage = Stage::Pause;
    m_resume = SteadyClock::now() + pauseLength;
}

} // namespace stillwick
