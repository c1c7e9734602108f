#include "ClockWatch.h"

#include <QTest>

#include <algorithm>

namespace stillwick::testing {

using std::chrono::nanoseconds;

bool ClockWatch::watchUntil(const std::function<bool()>& condition) {
    constexpr int minute = 60'000;
    return QTest::qWaitFor(
        [&] {
            const SteadyTime now = std::chrono::steady_clock::now();
            m_sights.push_back({now, m_clock.at(now)});
            return condition();
        },
        minute);
}

bool ClockWatch::watchUntil(nanoseconds film) {
    return watchUntil([&] { return m_sights.back().film >= film; });
}

nanoseconds ClockWatch::filmAt(SteadyTime time) const {
    const auto after =
        std::lower_bound(m_sights.begin(), m_sights.end(), time,
                         [](const Sight& sight, SteadyTime wanted) { return sight.time < wanted; });
    if (after == m_sights.begin() || after == m_sights.end())
        return nanoseconds::min();
    const Sight& before = *(after - 1);
    const double part =
        double((time - before.time).count()) / double((after->time - before.time).count());
    return before.film +
           nanoseconds(std::int64_t(part * double((after->film - before.film).count())));
}

nanoseconds ClockWatch::largestDeviation(SteadyTime from) const {
    const auto first = std::find_if(m_sights.begin(), m_sights.end(),
                                    [&](const Sight& sight) { return sight.time >= from; });
    nanoseconds largest{0};
    for (auto it = first; it != m_sights.end(); ++it)
        largest =
            std::max(largest, nanoseconds(abs(it->film - first->film - (it->time - first->time))));
    return largest;
}

bool ClockWatch::turnedBack() const {
    return !std::is_sorted(m_sights.begin(), m_sights.end(),
                           [](const Sight& a, const Sight& b) { return a.film < b.film; });
}

} // namespace stillwick::testing
