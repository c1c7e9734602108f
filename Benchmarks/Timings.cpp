#include "Timings.h"

#include <algorithm>
#include <cstddef>

namespace stillwick::benchmarks {

double quantile(std::vector<double> values, double fraction) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const double place = fraction * double(values.size() - 1);
    const auto below = std::size_t(place);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (place - double(below)) * (values[above] - values[below]);
}

std::vector<double> pairwiseRatios(const std::vector<double>& a, const std::vector<double>& b) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        ratios.push_back(a[i] / b[i]);
    return ratios;
}

} // namespace stillwick::benchmarks
