// One stretch of playing and its hold on the clock. Any thread.
#pragma once

#include "Media/PlaybackClock.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace stillwick {

/// The form of sound that a device takes. Frames are samples of each channel.
struct SoundFormat {
    int sampleRate = 0;
    int channels = 0;
    bool operator==(const SoundFormat&) const = default;

    [[nodiscard]] std::int64_t framesIn(std::chrono::nanoseconds time) const;
    [[nodiscard]] std::chrono::nanoseconds timeOf(std::int64_t frames) const;
};

/// What is known of the device.
struct SoundDevice {
    std::optional<SoundFormat> format; ///< none where there is no device
};

/// What all sessions of a player share.
struct SoundControl {
    std::atomic<float> gain = 1.0F;

    /// Wakes the thread that decodes.
    void wake();
    /// Waits until it is woken, at most until `time`.
    void waitUntil(SteadyTime time);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isAwake = false;
};

/// Lasts from a call to play until the call that stops or replaces it. Whoever touches the clock on
/// its behalf does so here: nothing of a session that has ended reaches the clock.
class SoundSession final {
public:
    enum class Output {
        None,
        Open, ///< a device plays, or is about to
        Lost, ///< it does not, or no longer
    };

    /// How long the clock waits for a device.
    static constexpr std::chrono::milliseconds patience{500};

    /// A session from `from` on, which the clock waits at. `zero` is the container's time that is
    /// the film's zero.
    SoundSession(std::shared_ptr<SoundControl> control, std::shared_ptr<PlaybackClock> clock,
                 std::chrono::nanoseconds from, std::chrono::nanoseconds zero);

    void end();
    /// The device plays `filmTime` at `at`: sets the clock running, or corrects it.
    void deviceIsAt(std::chrono::nanoseconds filmTime, SteadyTime at);
    /// Sets the clock running where it still waits: there is no device to wait for.
    void goOnAlone();
    /// `goOnAlone`, where the time for waiting is over.
    void goOnAloneIfLate();

    /// The answer to whoever asked for the device.
    void setDevice(SoundDevice device);
    /// That answer, once: none as long as there is no new one.
    [[nodiscard]] std::optional<SoundDevice> takeDevice();
    void setOutput(Output output);

    [[nodiscard]] bool isOver() const;
    [[nodiscard]] bool isWaiting() const;
    [[nodiscard]] Output output() const;
    /// Where the film stands at `now`.
    [[nodiscard]] std::chrono::nanoseconds filmTime(SteadyTime now) const;
    /// Until when the clock waits.
    [[nodiscard]] SteadyTime deadline() const noexcept { return m_deadline; }
    [[nodiscard]] std::chrono::nanoseconds zero() const noexcept { return m_zero; }
    [[nodiscard]] SoundControl& control() const noexcept { return *m_control; }

private:
    enum class State { Waiting, Running, Over };

    const std::shared_ptr<SoundControl> m_control;
    const std::shared_ptr<PlaybackClock> m_clock;
    const std::chrono::nanoseconds m_from;
    const std::chrono::nanoseconds m_zero;
    const SteadyTime m_deadline;

    mutable std::mutex m_mutex;
    State m_state = State::Waiting;
    Output m_output = Output::None;
    std::optional<SoundDevice> m_device;
};

} // namespace stillwick
