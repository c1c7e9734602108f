#include "Vision/EdgeColours.h"

#include "Vision/ParallelJobs.h"
#include "Vision/Tiles.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <functional>

namespace stillwick {
namespace {

// How far colours are gathered, in radii of the edge: first from further inside and outside, then
// from near by.
constexpr int far = 3;
constexpr int near = 1;

cv::Mat boxMean(const cv::Mat& values, int radius) {
    cv::Mat mean;
    const int side = 2 * radius + 1;
    cv::boxFilter(values, mean, CV_32F, {side, side}, {-1, -1}, true, cv::BORDER_REPLICATE);
    return mean;
}

// The colours of subject and background, as far as they are known at each pixel.
struct Layers {
    cv::Mat3f subject;
    cv::Mat3f background;
};

// The mean of the colours around, each by its weight; its own colour where nothing weighs.
cv::Mat3f gathered(const cv::Mat3f& colours, const cv::Mat1f& weights, int radius) {
    cv::Mat3f weighted(colours.size());
    for (int y = 0; y < colours.rows; ++y)
        for (int x = 0; x < colours.cols; ++x)
            weighted(y, x) = colours(y, x) * weights(y, x);
    cv::Mat3f result = boxMean(weighted, radius);
    const cv::Mat1f total = boxMean(weights, radius);
    constexpr float least = 1e-4F;
    for (int y = 0; y < colours.rows; ++y)
        for (int x = 0; x < colours.cols; ++x)
            result(y, x) = total(y, x) > least ? result(y, x) / total(y, x) : colours(y, x);
    return result;
}

// Smooth layers from around, and what they leave unexplained of the picture added to the subject.
// Squared weights keep what is half the other layer's out of the means.
Layers refined(const cv::Mat3f& picture, const cv::Mat1f& alpha, const Layers& layers, int radius) {
    const cv::Mat1f beside(1 - alpha);
    Layers result{gathered(layers.subject, cv::Mat1f(alpha.mul(alpha)), radius),
                  gathered(layers.background, cv::Mat1f(beside.mul(beside)), radius)};
    for (int y = 0; y < picture.rows; ++y)
        for (int x = 0; x < picture.cols; ++x) {
            const float a = alpha(y, x);
            const cv::Vec3f unexplained =
                picture(y, x) - a * result.subject(y, x) - (1 - a) * result.background(y, x);
            result.subject(y, x) += a * unexplained;
        }
    return result;
}

bool isSoft(uchar alpha) {
    return alpha > 0 && alpha < 255;
}

// The soft pixels of one tile.
class TileColours final {
public:
    TileColours(const cv::Mat4b& picture, const cv::Mat1b& alpha, const cv::Rect& tile, int radius)
        : m_tile(tile), m_wide(withMargin(tile, (far + near) * radius, picture.size())),
          m_picture(picture(m_wide)), m_alpha(alpha(m_wide)), m_radius(radius) {}

    [[nodiscard]] std::vector<EdgeColour> run() const {
        std::vector<EdgeColour> colours;
        const cv::Mat1b inner = m_alpha(cv::Rect(m_tile.tl() - m_wide.tl(), m_tile.size()));
        if (std::none_of(inner.begin(), inner.end(), isSoft))
            return colours;
        cv::Mat3f picture(m_picture.size());
        std::transform(m_picture.begin(), m_picture.end(), picture.begin(),
                       [](const cv::Vec4b& p) { return cv::Vec3f(p[0], p[1], p[2]); });
        cv::Mat1f alpha;
        m_alpha.convertTo(alpha, CV_32F, 1.0 / 255);
        Layers layers{picture, picture};
        for (const int reach : {far, near})
            layers = refined(picture, alpha, layers, reach * m_radius);
        const cv::Point shift = m_tile.tl() - m_wide.tl();
        for (int y = shift.y; y < shift.y + m_tile.height; ++y)
            for (int x = shift.x; x < shift.x + m_tile.width; ++x)
                if (isSoft(m_alpha(y, x)) && m_picture(y, x)[3] == 255)
                    colours.push_back(
                        {QPoint(m_wide.x + x, m_wide.y + y), bytesOf(layers.subject(y, x))});
        return colours;
    }

private:
    static std::array<uchar, 3> bytesOf(const cv::Vec3f& colour) {
        return {cv::saturate_cast<uchar>(colour[0]), cv::saturate_cast<uchar>(colour[1]),
                cv::saturate_cast<uchar>(colour[2])};
    }

    cv::Rect m_tile;
    cv::Rect m_wide;
    cv::Mat4b m_picture;
    cv::Mat1b m_alpha;
    int m_radius;
};

} // namespace

std::vector<EdgeColour> edgeColours(const cv::Mat4b& picture, const cv::Mat1b& alpha, int radius) {
    const std::vector<cv::Rect> tiles = tilesOf(picture.size());
    std::vector<std::vector<EdgeColour>> parts(tiles.size());
    std::vector<std::function<void()>> jobs;
    for (std::size_t i = 0; i < tiles.size(); ++i)
        jobs.emplace_back(
            [&, i] { parts[i] = TileColours(picture, alpha, tiles[i], radius).run(); });
    runSideBySide(jobs);
    std::vector<EdgeColour> all;
    for (const std::vector<EdgeColour>& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

} // namespace stillwick
