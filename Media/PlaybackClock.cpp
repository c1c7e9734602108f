#include "Media/PlaybackClock.h"

#include <algorithm>

namespace stillwick {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr nanoseconds largestSlew = 40ms;
// With the largest slew the clock runs 8 % fast or slow: no one sees that in half a second.
constexpr nanoseconds slewTime = 500ms;

} // namespace

void PlaybackClock::hold(nanoseconds filmTime) {
    const std::lock_guard lock(m_mutex);
    m_isRunning = false;
    m_filmTime = filmTime;
}

void PlaybackClock::run(nanoseconds filmTime, SteadyTime at) {
    const std::lock_guard lock(m_mutex);
    m_isRunning = true;
    m_filmTime = filmTime;
    m_start = at;
    m_slew = 0ns;
    m_latest = filmTime;
}

void PlaybackClock::correct(nanoseconds filmTime, SteadyTime at) {
    const std::lock_guard lock(m_mutex);
    if (!m_isRunning || at < m_start)
        return;
    const nanoseconds current = uncheckedAt(at);
    const nanoseconds error = filmTime - current;
    const bool isSmall = -largestSlew <= error && error <= largestSlew;
    m_latest = std::max(m_latest, current);
    m_filmTime = isSmall ? current : filmTime;
    m_slew = isSmall ? error : 0ns;
    m_start = at;
}

nanoseconds PlaybackClock::uncheckedAt(SteadyTime now) const {
    const nanoseconds elapsed = now - m_start;
    const nanoseconds slewing = std::clamp(elapsed, 0ns, slewTime);
    return m_filmTime + elapsed + m_slew * slewing.count() / slewTime.count();
}

nanoseconds PlaybackClock::at(SteadyTime now) const {
    const std::lock_guard lock(m_mutex);
    if (!m_isRunning)
        return m_filmTime;
    m_latest = std::max(m_latest, uncheckedAt(now));
    return m_latest;
}

SteadyTime PlaybackClock::steadyTimeOf(nanoseconds filmTime) const {
    const std::lock_guard lock(m_mutex);
    if (!m_isRunning)
        return SteadyTime::max();
    const nanoseconds ahead = filmTime - m_filmTime;
    if (ahead <= 0ns)
        return m_start + ahead;
    if (ahead >= slewTime + m_slew)
        return m_start + ahead - m_slew;
    return m_start + ahead * slewTime.count() / (slewTime + m_slew).count();
}

bool PlaybackClock::isRunning() const {
    const std::lock_guard lock(m_mutex);
    return m_isRunning;
}

} // namespace stillwick
