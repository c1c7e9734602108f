// Film time against the machine's steady clock: what picture and sound go by. Any thread.
#pragma once

#include <chrono>
#include <mutex>

namespace stillwick {

using SteadyTime = std::chrono::steady_clock::time_point;

/// Tells at which moment of a film its playing stands. Left alone it goes by the steady clock; what
/// a sound device reports bends it. A new one stands at zero.
class PlaybackClock final {
public:
    /// Stands still at `filmTime`.
    void hold(std::chrono::nanoseconds filmTime);
    /// Stands at `filmTime` until the steady time `at`, and goes on from there at rate 1.
    void run(std::chrono::nanoseconds filmTime, SteadyTime at);
    /// Takes a measurement: `filmTime` was heard at `at`. Errors to 40 ms are made up for within
    /// half a second, so that nothing is seen to jump; larger ones are taken at once. Ignored while
    /// the clock is held, and where `at` lies before the last call.
    void correct(std::chrono::nanoseconds filmTime, SteadyTime at);

    /// The film time at `now`. While the clock runs, no call gives less than one before it: where a
    /// correction leads back, time stands until it is reached again.
    [[nodiscard]] std::chrono::nanoseconds at(SteadyTime now) const;
    /// When `filmTime` is or was reached; never (the largest time) while the clock is held.
    [[nodiscard]] SteadyTime steadyTimeOf(std::chrono::nanoseconds filmTime) const;
    [[nodiscard]] bool isRunning() const;

private:
    [[nodiscard]] std::chrono::nanoseconds uncheckedAt(SteadyTime now) const;

    mutable std::mutex m_mutex;
    bool m_isRunning = false;
    std::chrono::nanoseconds m_filmTime{0}; ///< at m_start
    SteadyTime m_start;
    std::chrono::nanoseconds m_slew{0};           ///< still to be made up for, from m_start on
    mutable std::chrono::nanoseconds m_latest{0}; ///< the most that was given since the last run
};

} // namespace stillwick
