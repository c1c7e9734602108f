#include "Vision/InstanceLabels.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

namespace stillwick {
namespace {

constexpr double speckOfPicture = .002;
constexpr double speckOfLargest = .05;
constexpr double pinHoleOfPicture = .001;
// Where pieces are parted, distances upwards count this much: subjects stand side by side more
// often than on top of each other, and a group's waists lie between upright people.
constexpr double upwards = .35;
// How far the distance falls between two peaks, as a part of the greatest. Measured on the
// network's foreground of 220 pictures with hand-made instances: against connected components, AP50
// is 1.54 times and the matched IoU of several subjects 1.35 times as high; with all directions
// alike and a quarter, 1.19 and 1.11 times.
constexpr float waistDepth = .1F;

struct Pieces {
    cv::Mat1i labels;
    cv::Mat1i stats;
    int count = 0;
};

Pieces piecesOf(const cv::Mat1b& mask, int connectivity) {
    Pieces pieces;
    cv::Mat1d middles;
    pieces.count = cv::connectedComponentsWithStats(mask, pieces.labels, pieces.stats, middles,
                                                    connectivity, CV_32S);
    return pieces;
}

bool touchesFrame(const Pieces& pieces, int piece) {
    const int left = pieces.stats(piece, cv::CC_STAT_LEFT);
    const int top = pieces.stats(piece, cv::CC_STAT_TOP);
    return left == 0 || top == 0 ||
           left + pieces.stats(piece, cv::CC_STAT_WIDTH) == pieces.labels.cols ||
           top + pieces.stats(piece, cv::CC_STAT_HEIGHT) == pieces.labels.rows;
}

// Floods a distance map from its peaks downwards. Two basins that meet stay two where the lower
// peak stands high enough above the meeting place.
class Flooding final {
public:
    Flooding(const cv::Mat1f& height, const cv::Mat1i& piece, std::vector<float> depth)
        : m_height(height), m_piece(piece), m_depth(std::move(depth)), m_basin(height.size(), -1) {}

    cv::Mat1i run() {
        std::vector<int> order;
        for (int i = 0; i < static_cast<int>(m_height.total()); ++i)
            if (m_height(pointOf(i)) > 0)
                order.push_back(i);
        std::stable_sort(order.begin(), order.end(), [this](int a, int b) {
            return m_height(pointOf(a)) > m_height(pointOf(b));
        });
        for (const int i : order)
            flood(pointOf(i));
        for (int& basin : m_basin)
            basin = basin < 0 ? -1 : rootOf(basin);
        return m_basin;
    }

private:
    [[nodiscard]] cv::Point pointOf(int index) const {
        return {index % m_height.cols, index / m_height.cols};
    }

    int rootOf(int basin) {
        while (m_parent[static_cast<std::size_t>(basin)] != basin)
            basin = m_parent[static_cast<std::size_t>(basin)];
        return basin;
    }

    [[nodiscard]] float peakOf(int basin) const { return m_peak[static_cast<std::size_t>(basin)]; }

    void flood(cv::Point p) {
        int own = -1;
        const cv::Rect frame({}, m_height.size());
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const cv::Point q(p.x + dx, p.y + dy);
                if (frame.contains(q) && m_basin(q) >= 0 && m_piece(q) == m_piece(p))
                    own = meet(own, rootOf(m_basin(q)), p);
            }
        if (own < 0) {
            own = static_cast<int>(m_parent.size());
            m_parent.push_back(own);
            m_peak.push_back(m_height(p));
        }
        m_basin(p) = own;
    }

    // The basin that the pixel belongs to after it has met another one.
    int meet(int own, int other, cv::Point p) {
        if (own < 0 || own == other)
            return other;
        const int high = peakOf(own) >= peakOf(other) ? own : other;
        const int low = high == own ? other : own;
        if (peakOf(low) - m_height(p) < m_depth[static_cast<std::size_t>(m_piece(p))])
            m_parent[static_cast<std::size_t>(low)] = high;
        return high;
    }

    const cv::Mat1f& m_height;
    const cv::Mat1i& m_piece;
    std::vector<float> m_depth;
    cv::Mat1i m_basin;
    std::vector<int> m_parent;
    std::vector<float> m_peak;
};

// The distance of each pixel of the mask from its edge, upwards foreshortened; positive on all of
// it.
cv::Mat1f heightsOf(const cv::Mat1b& mask) {
    cv::Mat1b low;
    const cv::Size lowSize(mask.cols, std::max(1, cvRound(mask.rows * upwards)));
    cv::resize(mask, low, lowSize, 0, 0, cv::INTER_AREA);
    cv::Mat1f lowHeight;
    cv::distanceTransform(low >= 128, lowHeight, cv::DIST_L2, cv::DIST_MASK_5);
    cv::Mat1f height;
    cv::resize(lowHeight, height, mask.size(), 0, 0, cv::INTER_LINEAR);
    constexpr float least = 1e-3F;
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x)
            height(y, x) = mask(y, x) != 0 ? std::max(least, height(y, x)) : 0.0F;
    return height;
}

// What numbering needs to know of a basin.
struct Basin {
    int index = 0;
    double area = 0;
    double sumX = 0;
    double sumY = 0;
};

std::vector<Basin> basinsOf(const cv::Mat1i& basins) {
    double highest = -1;
    cv::minMaxIdx(basins, nullptr, &highest);
    std::vector<Basin> all(static_cast<std::size_t>(highest + 1));
    for (int y = 0; y < basins.rows; ++y)
        for (int x = 0; x < basins.cols; ++x)
            if (basins(y, x) >= 0) {
                Basin& basin = all[static_cast<std::size_t>(basins(y, x))];
                basin.index = basins(y, x);
                basin.area += 1;
                basin.sumX += x;
                basin.sumY += y;
            }
    std::erase_if(all, [](const Basin& basin) { return basin.area == 0; });
    return all;
}

void keepLargest(std::vector<Basin>& basins, int most) {
    std::stable_sort(basins.begin(), basins.end(),
                     [](const Basin& a, const Basin& b) { return a.area > b.area; });
    if (basins.size() > static_cast<std::size_t>(most))
        basins.resize(static_cast<std::size_t>(most));
}

void orderFromLeftToRight(std::vector<Basin>& basins) {
    std::sort(basins.begin(), basins.end(), [](const Basin& a, const Basin& b) {
        const double ax = a.sumX / a.area;
        const double bx = b.sumX / b.area;
        return ax != bx ? ax < bx : a.sumY / a.area < b.sumY / b.area;
    });
}

// The label that weighs most among the four around a point.
uchar heaviestLabel(const cv::Mat1b& labels, float x, float y) {
    const int left = std::clamp(static_cast<int>(std::floor(x)), 0, labels.cols - 1);
    const int top = std::clamp(static_cast<int>(std::floor(y)), 0, labels.rows - 1);
    const int right = std::min(left + 1, labels.cols - 1);
    const int bottom = std::min(top + 1, labels.rows - 1);
    const std::array<uchar, 4> label{labels(top, left), labels(top, right), labels(bottom, left),
                                     labels(bottom, right)};
    if (label[0] == label[1] && label[0] == label[2] && label[0] == label[3])
        return label[0];
    const float fx = std::clamp(x - static_cast<float>(left), 0.0F, 1.0F);
    const float fy = std::clamp(y - static_cast<float>(top), 0.0F, 1.0F);
    const std::array<float, 4> part{(1 - fx) * (1 - fy), fx * (1 - fy), (1 - fx) * fy, fx * fy};
    std::array<float, 4> weight{};
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 4; ++j)
            weight[i] += label[i] == label[j] ? part[j] : 0.0F;
    return label[static_cast<std::size_t>(
        std::distance(weight.begin(), std::max_element(weight.begin(), weight.end())))];
}

// Gives each background pixel the label of the nearest instance.
cv::Mat1b extended(const cv::Mat1b& labels) {
    cv::Mat1f distance;
    cv::Mat1i zone;
    cv::distanceTransform(labels == 0, distance, zone, cv::DIST_L2, cv::DIST_MASK_5,
                          cv::DIST_LABEL_PIXEL);
    double zones = 0;
    cv::minMaxIdx(zone, nullptr, &zones);
    std::vector<uchar> labelOfZone(static_cast<std::size_t>(zones) + 1, 0);
    for (int y = 0; y < labels.rows; ++y)
        for (int x = 0; x < labels.cols; ++x)
            if (labels(y, x) != 0)
                labelOfZone[static_cast<std::size_t>(zone(y, x))] = labels(y, x);
    cv::Mat1b result(labels.size());
    std::transform(zone.begin(), zone.end(), result.begin(), [&labelOfZone](int index) {
        return labelOfZone[static_cast<std::size_t>(index)];
    });
    return result;
}

} // namespace

cv::Mat1b withoutSpecks(const cv::Mat1b& mask) {
    const auto pixels = static_cast<double>(mask.total());
    cv::Mat1b result = mask.clone();
    const Pieces gaps = piecesOf(cv::Mat1b(mask == 0), 4);
    for (int gap = 1; gap < gaps.count; ++gap)
        if (gaps.stats(gap, cv::CC_STAT_AREA) < pinHoleOfPicture * pixels &&
            !touchesFrame(gaps, gap))
            result.setTo(255, gaps.labels == gap);
    const Pieces pieces = piecesOf(result, 8);
    int largest = 0;
    for (int piece = 1; piece < pieces.count; ++piece)
        largest = std::max(largest, pieces.stats(piece, cv::CC_STAT_AREA));
    const double least = std::max(speckOfPicture * pixels, speckOfLargest * largest);
    for (int piece = 1; piece < pieces.count; ++piece)
        if (pieces.stats(piece, cv::CC_STAT_AREA) < least)
            result.setTo(0, pieces.labels == piece);
    return result;
}

InstanceLabels instancesOf(const cv::Mat1b& mask, int most) {
    InstanceLabels result{cv::Mat1b(mask.size(), uchar{0}), 0};
    const Pieces pieces = piecesOf(mask, 8);
    const cv::Mat1f height = heightsOf(mask);
    std::vector<float> depth(static_cast<std::size_t>(pieces.count), 0.0F);
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x) {
            float& highest = depth[static_cast<std::size_t>(pieces.labels(y, x))];
            highest = std::max(highest, waistDepth * height(y, x));
        }
    const cv::Mat1i flooded = Flooding(height, pieces.labels, std::move(depth)).run();
    std::vector<Basin> basins = basinsOf(flooded);
    keepLargest(basins, most);
    orderFromLeftToRight(basins);
    for (const Basin& basin : basins)
        result.labels.setTo(++result.count, flooded == basin.index);
    return result;
}

cv::Mat1b spreadLabels(const InstanceLabels& instances, cv::Size size) {
    const cv::Mat1b everywhere = extended(instances.labels);
    const float scaleX = static_cast<float>(everywhere.cols) / static_cast<float>(size.width);
    const float scaleY = static_cast<float>(everywhere.rows) / static_cast<float>(size.height);
    cv::Mat1b result(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            result(y, x) = heaviestLabel(everywhere, (static_cast<float>(x) + .5F) * scaleX - .5F,
                                         (static_cast<float>(y) + .5F) * scaleY - .5F);
    return result;
}

} // namespace stillwick
