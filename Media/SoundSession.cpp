#include "Media/SoundSession.h"

#include <utility>

namespace stillwick {

using std::chrono::nanoseconds;
using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr std::int64_t second = 1'000'000'000;

} // namespace

std::int64_t SoundFormat::framesIn(nanoseconds time) const {
    const std::int64_t whole = time.count() / second; // apart, so that long films do not overflow
    return whole * sampleRate + time.count() % second * sampleRate / second;
}

nanoseconds SoundFormat::timeOf(std::int64_t frames) const {
    const std::int64_t whole = frames / sampleRate;
    return nanoseconds(whole * second + frames % sampleRate * second / sampleRate);
}

void SoundControl::wake() {
    const std::lock_guard lock(m_mutex);
    m_isAwake = true;
    m_changed.notify_all();
}

void SoundControl::waitUntil(SteadyTime time) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_until(lock, time, [this] { return m_isAwake; });
    m_isAwake = false;
}

SoundSession::SoundSession(std::shared_ptr<SoundControl> control,
                           std::shared_ptr<PlaybackClock> clock, nanoseconds from, nanoseconds zero)
    : m_control(std::move(control)), m_clock(std::move(clock)), m_from(from), m_zero(zero),
      m_deadline(SteadyClock::now() + patience) {
    m_clock->hold(from);
}

void SoundSession::end() {
    const std::lock_guard lock(m_mutex);
    m_state = State::Over;
}

void SoundSession::deviceIsAt(nanoseconds filmTime, SteadyTime at) {
    const std::lock_guard lock(m_mutex);
    if (m_state == State::Running)
        m_clock->correct(filmTime, at);
    if (m_state != State::Waiting)
        return;
    m_clock->run(filmTime, at);
    m_state = State::Running;
}

void SoundSession::goOnAlone() {
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Waiting)
        return;
    m_clock->run(m_from, SteadyClock::now());
    m_state = State::Running;
}

void SoundSession::goOnAloneIfLate() {
    if (SteadyClock::now() >= m_deadline)
        goOnAlone();
}

void SoundSession::setDevice(SoundDevice device) {
    {
        const std::lock_guard lock(m_mutex);
        m_device = device;
    }
    m_control->wake();
}

std::optional<SoundDevice> SoundSession::takeDevice() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_device, std::nullopt);
}

void SoundSession::setOutput(Output output) {
    {
        const std::lock_guard lock(m_mutex);
        m_output = output;
    }
    m_control->wake();
}

bool SoundSession::isOver() const {
    const std::lock_guard lock(m_mutex);
    return m_state == State::Over;
}

bool SoundSession::isWaiting() const {
    const std::lock_guard lock(m_mutex);
    return m_state == State::Waiting;
}

SoundSession::Output SoundSession::output() const {
    const std::lock_guard lock(m_mutex);
    return m_output;
}

nanoseconds SoundSession::filmTime(SteadyTime now) const {
    return m_clock->at(now);
}

} // namespace stillwick
