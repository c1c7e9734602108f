#include "Media/Deinterlacing.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace stillwick {

namespace {

constexpr int channels = 3;
// Differences below this are noise, not movement.
constexpr int noise = 10;
// Combs are looked for this far around a pixel, so that their faint ends go too.
constexpr int reach = 3;
constexpr int maximumSlope = 3;

using Rows = std::array<const std::uint8_t*, channels>;

/// The rows around one row of the other field, the picture continued at its edges.
class Neighbourhood {
public:
    Neighbourhood(const PlanarPicture& picture, int y) : m_width(picture.layout().width) {
        const int height = picture.layout().height;
        // Steps of two stay in the same field; a row beyond an edge is the one on the other side.
        const auto rowAt = [y, height](int step) {
            return y + step < 0 || y + step >= height ? y - step : y + step;
        };
        for (int plane = 0; plane < channels; ++plane) {
            const auto p = std::size_t(plane);
            m_before[p] = picture.row(plane, rowAt(-2));
            m_above[p] = picture.row(plane, rowAt(-1));
            m_here[p] = picture.row(plane, y);
            m_below[p] = picture.row(plane, rowAt(1));
            m_after[p] = picture.row(plane, rowAt(2));
        }
    }

    /// True where a pixel lies outside what its neighbours above and below span, while its own
    /// field runs on smoothly: rows alternate.
    [[nodiscard]] bool isComb(int x) const {
        for (std::size_t p = 0; p < channels; ++p) {
            const int here = m_here[p][x];
            const int above = here - m_above[p][x];
            const int below = here - m_below[p][x];
            const bool alternates =
                (above > noise && below > noise) || (above < -noise && below < -noise);
            const int inOtherField = std::abs(above) + std::abs(below);
            const int inOwnField = std::abs(here - m_before[p][x]) + std::abs(here - m_after[p][x]);
            // A single bright row differs from both fields alike, up to its noise.
            if (alternates && 4 * inOwnField < 3 * inOtherField)
                return true;
        }
        return false;
    }

    /// The slope along which the rows above and below are most alike; upright unless another is
    /// clearly better.
    [[nodiscard]] int slope(int x) const {
        int best = 0;
        int bestDifference = difference(x, 0) - noise / 2;
        for (int slope = 1; slope <= maximumSlope; ++slope) {
            for (const int signedSlope : {slope, -slope}) {
                const int candidate = difference(x, signedSlope) + slope;
                if (candidate < bestDifference) {
                    bestDifference = candidate;
                    best = signedSlope;
                }
            }
        }
        return best;
    }

    [[nodiscard]] std::uint8_t interpolated(std::size_t plane, int x, int slope) const {
        const int sum = m_above[plane][clamped(x + slope)] + m_below[plane][clamped(x - slope)];
        return std::uint8_t((sum + 1) / 2);
    }

private:
    [[nodiscard]] int clamped(int x) const { return std::clamp(x, 0, m_width - 1); }
    [[nodiscard]] int difference(int x, int slope) const {
        int sum = 0;
        for (int dx = -1; dx <= 1; ++dx) {
            for (std::size_t p = 0; p < channels; ++p)
                sum += std::abs(m_above[p][clamped(x + dx + slope)] -
                                m_below[p][clamped(x + dx - slope)]);
        }
        return sum;
    }

    int m_width;
    Rows m_before{};
    Rows m_above{};
    Rows m_here{};
    Rows m_below{};
    Rows m_after{};
};

/// Marks every pixel within `reach` of a marked one.
void spread(std::vector<char>& marks) {
    const std::vector<char> found = marks;
    for (std::size_t x = 0; x < found.size(); ++x) {
        if (!found[x])
            continue;
        const std::size_t first = x < reach ? 0 : x - reach;
        const std::size_t last = std::min(found.size() - 1, x + reach);
        std::fill(marks.begin() + std::ptrdiff_t(first), marks.begin() + std::ptrdiff_t(last) + 1,
                  char(1));
    }
}

std::vector<char> combsOf(const PlanarPicture& picture, int y) {
    std::vector<char> marks(std::size_t(picture.layout().width), 0);
    if (y < 0 || y >= picture.layout().height)
        return marks;
    const Neighbourhood around(picture, y);
    for (std::size_t x = 0; x < marks.size(); ++x)
        marks[x] = around.isComb(int(x)) ? 1 : 0;
    spread(marks);
    return marks;
}

} // namespace

void deinterlace(const PlanarPicture& picture, int firstField) {
    const int height = picture.layout().height;
    constexpr int least = 4;
    if (height < least)
        return;
    // All combs are found before a row is changed: marks of the rows above and below count too.
    std::vector<std::vector<char>> marks;
    for (int y = 1 - firstField; y < height; y += 2)
        marks.push_back(combsOf(picture, y));
    for (std::size_t i = 0; i < marks.size(); ++i) {
        const int y = 1 - firstField + 2 * int(i);
        const Neighbourhood around(picture, y);
        for (int x = 0; x < picture.layout().width; ++x) {
            const auto column = std::size_t(x);
            const bool isMarked = marks[i][column] || (i > 0 && marks[i - 1][column]) ||
                                  (i + 1 < marks.size() && marks[i + 1][column]);
            if (!isMarked)
                continue;
            const int slope = around.slope(x);
            for (int plane = 0; plane < channels; ++plane)
                picture.row(plane, y)[x] = around.interpolated(std::size_t(plane), x, slope);
        }
    }
}

} // namespace stillwick
