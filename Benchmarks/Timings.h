// Durations, and statistics of those that belong together in pairs. Free functions, any thread.
#pragma once

#include <QElapsedTimer>

#include <utility>
#include <vector>

namespace stillwick::benchmarks {

/// The time since the timer's start. *Units*: milliseconds.
[[nodiscard]] inline double milliseconds(const QElapsedTimer& timer) {
    return double(timer.nsecsElapsed()) / 1e6;
}

/// The value below which `fraction` of the values lie, between two of them in proportion.
[[nodiscard]] double quantile(std::vector<double> values, double fraction);
[[nodiscard]] inline double median(std::vector<double> values) {
    return quantile(std::move(values), 0.5);
}
/// Each value of `a` divided by that of `b` taken at the same moment.
[[nodiscard]] std::vector<double> pairwiseRatios(const std::vector<double>& a,
                                                 const std::vector<double>& b);

} // namespace stillwick::benchmarks
