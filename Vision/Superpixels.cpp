#include "Vision/Superpixels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace stillwick {
namespace {

constexpr int passes = 8;
// How many units of Lab one grid step is worth: higher gives rounder regions.
constexpr float compactness = 14.0F;

struct Centre {
    cv::Vec3f colour;
    cv::Point2f position;
};

std::vector<Centre> gridOfCentres(const cv::Mat3f& lab, float step) {
    std::vector<Centre> centres;
    const int down = static_cast<int>(std::lround(static_cast<float>(lab.rows) / step));
    const int across = static_cast<int>(std::lround(static_cast<float>(lab.cols) / step));
    for (int row = 0; row < down; ++row)
        for (int column = 0; column < across; ++column) {
            const cv::Point2f position((static_cast<float>(column) + .5F) * step,
                                       (static_cast<float>(row) + .5F) * step);
            const int x = std::min(static_cast<int>(position.x), lab.cols - 1);
            const int y = std::min(static_cast<int>(position.y), lab.rows - 1);
            centres.push_back({lab(y, x), position});
        }
    return centres;
}

float squaredDistance(const cv::Vec3f& a, const cv::Vec3f& b) {
    const cv::Vec3f d = a - b;
    return d.dot(d);
}

void claimPixels(const cv::Mat3f& lab, const Centre& centre, int index, float step,
                 cv::Mat1f& nearest, cv::Mat1i& labels) {
    const float spaceWeight = (compactness / step) * (compactness / step);
    const int left = std::max(0, static_cast<int>(centre.position.x - step));
    const int right = std::min(lab.cols - 1, static_cast<int>(centre.position.x + step));
    const int top = std::max(0, static_cast<int>(centre.position.y - step));
    const int bottom = std::min(lab.rows - 1, static_cast<int>(centre.position.y + step));
    for (int y = top; y <= bottom; ++y) {
        const cv::Vec3f* colours = lab[y];
        const float dy = static_cast<float>(y) - centre.position.y;
        for (int x = left; x <= right; ++x) {
            const float dx = static_cast<float>(x) - centre.position.x;
            const float distance =
                squaredDistance(colours[x], centre.colour) + spaceWeight * (dx * dx + dy * dy);
            if (distance < nearest(y, x)) {
                nearest(y, x) = distance;
                labels(y, x) = index;
            }
        }
    }
}

void moveCentres(const cv::Mat3f& lab, const cv::Mat1i& labels, std::vector<Centre>& centres) {
    std::vector<Centre> sums(centres.size());
    std::vector<float> counts(centres.size(), 0.0F);
    for (int y = 0; y < lab.rows; ++y)
        for (int x = 0; x < lab.cols; ++x) {
            const auto index = static_cast<std::size_t>(labels(y, x));
            sums[index].colour += lab(y, x);
            sums[index].position += cv::Point2f(static_cast<float>(x), static_cast<float>(y));
            counts[index] += 1;
        }
    for (std::size_t i = 0; i < centres.size(); ++i)
        if (counts[i] > 0)
            centres[i] = {sums[i].colour / counts[i], sums[i].position / counts[i]};
}

// Relabels 4-connected pieces in reading order and gives pieces below `smallest` pixels to the
// piece before them, so that every region is connected and none is a speck.
class Connector final {
public:
    Connector(const cv::Mat1i& loose, int smallest)
        : m_loose(loose), m_labels(loose.size(), -1), m_smallest(smallest) {}

    Superpixels run() {
        for (int y = 0; y < m_loose.rows; ++y)
            for (int x = 0; x < m_loose.cols; ++x)
                if (m_labels(y, x) < 0)
                    takePiece({x, y});
        return {m_labels, std::max(1, m_count)};
    }

private:
    void takePiece(cv::Point seed) {
        const int before = seed.x > 0   ? m_labels(seed.y, seed.x - 1)
                           : seed.y > 0 ? m_labels(seed.y - 1, seed.x)
                                        : -1;
        m_piece.assign(1, seed);
        m_labels(seed) = m_count;
        for (std::size_t i = 0; i < m_piece.size(); ++i)
            for (const cv::Point step : {cv::Point(1, 0), {-1, 0}, {0, 1}, {0, -1}})
                visit(m_piece[i] + step, m_loose(seed));
        if (static_cast<int>(m_piece.size()) >= m_smallest || before < 0) {
            ++m_count;
            return;
        }
        for (const cv::Point p : m_piece)
            m_labels(p) = before;
    }

    void visit(cv::Point p, int loose) {
        const cv::Rect frame({}, m_labels.size());
        if (!frame.contains(p) || m_labels(p) >= 0 || m_loose(p) != loose)
            return;
        m_labels(p) = m_count;
        m_piece.push_back(p);
    }

    cv::Mat1i m_loose;
    cv::Mat1i m_labels;
    int m_smallest;
    int m_count = 0;
    std::vector<cv::Point> m_piece;
};

} // namespace

Superpixels superpixelsOf(const cv::Mat3f& lab, int wanted) {
    const auto area = static_cast<float>(lab.total());
    const float step = std::max(2.0F, std::sqrt(area / static_cast<float>(std::max(1, wanted))));
    std::vector<Centre> centres = gridOfCentres(lab, step);
    if (centres.empty())
        return {cv::Mat1i(lab.size(), 0), 1};
    cv::Mat1i labels(lab.size(), 0);
    for (int pass = 0; pass < passes; ++pass) {
        cv::Mat1f nearest(lab.size(), std::numeric_limits<float>::max());
        for (std::size_t i = 0; i < centres.size(); ++i)
            claimPixels(lab, centres[i], static_cast<int>(i), step, nearest, labels);
        moveCentres(lab, labels, centres);
    }
    return Connector(labels, static_cast<int>(step * step / 4)).run();
}

} // namespace stillwick
