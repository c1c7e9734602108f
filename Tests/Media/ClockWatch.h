// What a playback clock showed while a test waited.
#pragma once

#include "Media/PlaybackClock.h"

#include <chrono>
#include <functional>
#include <vector>

namespace stillwick::testing {

/// A clock looked at again and again.
class ClockWatch final {
public:
    struct Sight {
        SteadyTime time;
        std::chrono::nanoseconds film{0};
    };

    explicit ClockWatch(const PlaybackClock& clock) : m_clock(clock) {}

    /// Looks every few milliseconds until `condition` holds; false where it does not for a minute.
    bool watchUntil(const std::function<bool()>& condition);
    /// Watches until the clock shows `film`.
    bool watchUntil(std::chrono::nanoseconds film);

    [[nodiscard]] const std::vector<Sight>& sights() const { return m_sights; }
    [[nodiscard]] SteadyTime begin() const { return m_sights.front().time; }
    /// The film time that the clock showed at `time`, between two sights.
    [[nodiscard]] std::chrono::nanoseconds filmAt(SteadyTime time) const;
    /// The largest distance from what the clock would have shown at rate 1 from its first sight
    /// since `from`.
    [[nodiscard]] std::chrono::nanoseconds largestDeviation(SteadyTime from) const;
    /// Whether it ever showed less than before.
    [[nodiscard]] bool turnedBack() const;

private:
    const PlaybackClock& m_clock;
    std::vector<Sight> m_sights;
};

} // namespace stillwick::testing
