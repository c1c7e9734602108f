#include "Vision/ColourModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace stillwick {
namespace {

constexpr std::array<int, 3> bins{16, 24, 24};
// Lab from the darkest to the lightest; a and b further out share the last bin.
constexpr std::array<float, 3> lowest{0, -60, -60};
constexpr std::array<float, 3> highest{100, 60, 60};
constexpr std::size_t cellCount = std::size_t{bins[0]} * bins[1] * bins[2];

// A smoothed histogram over Lab.
class Histogram final {
public:
    void add(int cell, float weight) {
        m_cells[static_cast<std::size_t>(cell)] += weight;
        m_total += weight;
    }
    void smooth() {
        blurAlong(1);
        blurAlong(bins[2]);
        blurAlong(std::size_t{bins[1]} * bins[2]);
    }
    [[nodiscard]] float frequency(int cell) const {
        return m_cells[static_cast<std::size_t>(cell)] / m_total;
    }

private:
    // Neighbours across the edge of an axis are cells of the next row: harmless, as those hold
    // extreme colours, which pictures rarely have.
    void blurAlong(std::size_t stride) {
        const std::vector<float> before = m_cells;
        for (std::size_t cell = stride; cell < before.size() - stride; ++cell)
            m_cells[cell] =
                .5F * before[cell] + .25F * (before[cell - stride] + before[cell + stride]);
    }

    std::vector<float> m_cells = std::vector<float>(cellCount, 0.0F);
    float m_total = 1e-3F;
};

int cellOf(const cv::Vec3f& lab) {
    int cell = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const auto a = static_cast<std::size_t>(axis);
        const float part = (lab[axis] - lowest[a]) / (highest[a] - lowest[a]);
        cell = cell * bins[a] +
               std::clamp(static_cast<int>(part * static_cast<float>(bins[a])), 0, bins[a] - 1);
    }
    return cell;
}

} // namespace

cv::Mat1f colourOdds(const WorkingPicture& picture, const cv::Mat1f& belief) {
    Histogram subject;
    Histogram background;
    cv::Mat1i cell(belief.size());
    for (int y = 0; y < belief.rows; ++y)
        for (int x = 0; x < belief.cols; ++x) {
            cell(y, x) = cellOf(picture.lab(y, x));
            subject.add(cell(y, x), belief(y, x));
            background.add(cell(y, x), 1 - belief(y, x));
        }
    subject.smooth();
    background.smooth();
    cv::Mat1f odds(belief.size());
    constexpr float floor = 2e-4F;
    for (int y = 0; y < belief.rows; ++y)
        for (int x = 0; x < belief.cols; ++x)
            odds(y, x) = std::log((subject.frequency(cell(y, x)) + floor) /
                                  (background.frequency(cell(y, x)) + floor));
    return odds;
}

} // namespace stillwick
