#include "Vision/EdgeBand.h"

#include "Vision/ParallelJobs.h"
#include "Vision/Tiles.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

namespace stillwick {
namespace {

// The softness, in coarse pixels, at which the mask enters the filter.
constexpr double maskBlur = .8;
// The least variance that counts as an edge, of colours from 0 to 1.
constexpr float edgeVariance = 2e-4F;
// Undoes part of the softness that the filter adds.
constexpr float contrast = 1.6F;

cv::Mat1f boxMean(const cv::Mat1f& values, int radius) {
    cv::Mat1f mean;
    const int side = 2 * radius + 1;
    cv::boxFilter(values, mean, CV_32F, {side, side}, {-1, -1}, true, cv::BORDER_REPLICATE);
    return mean;
}

cv::Mat1f covarianceOf(const cv::Mat1f& a, const cv::Mat1f& meanA, const cv::Mat1f& b,
                       const cv::Mat1f& meanB, int radius) {
    return cv::Mat1f(boxMean(cv::Mat1f(a.mul(b)), radius) - meanA.mul(meanB));
}

// A linear function of the colour, fitted around each pixel.
struct LinearModel {
    std::array<cv::Mat1f, 3> slope;
    cv::Mat1f offset;
};

// The moments of colour and mask around each pixel.
struct Moments {
    Moments(const std::array<cv::Mat1f, 3>& colour, const cv::Mat1f& mask, int radius)
        : meanMask(boxMean(mask, radius)) {
        for (std::size_t c = 0; c < 3; ++c) {
            mean[c] = boxMean(colour[c], radius);
            withMask[c] = covarianceOf(colour[c], mean[c], mask, meanMask, radius);
        }
        for (std::size_t c = 0; c < 3; ++c)
            for (std::size_t d = c; d < 3; ++d)
                covariance[3 * c + d] =
                    covarianceOf(colour[c], mean[c], colour[d], mean[d], radius);
    }

    [[nodiscard]] cv::Matx33f spreadAt(int y, int x) const {
        const auto at = [this, y, x](std::size_t i) {
            return covariance[i](y, x);
        };
        return {at(0) + edgeVariance, at(1), at(2), at(1),
                at(4) + edgeVariance, at(5), at(2), at(5),
                at(8) + edgeVariance};
    }

    cv::Mat1f meanMask;
    std::array<cv::Mat1f, 3> mean;
    std::array<cv::Mat1f, 3> withMask;
    std::array<cv::Mat1f, 9> covariance;
};

LinearModel fitted(const std::array<cv::Mat1f, 3>& colour, const cv::Mat1f& mask, int radius) {
    const Moments moments(colour, mask, radius);
    LinearModel model{{}, cv::Mat1f(mask.size())};
    for (cv::Mat1f& slope : model.slope)
        slope.create(mask.size());
    for (int y = 0; y < mask.rows; ++y)
        for (int x = 0; x < mask.cols; ++x) {
            const cv::Vec3f with(moments.withMask[0](y, x), moments.withMask[1](y, x),
                                 moments.withMask[2](y, x));
            const cv::Vec3f slope = moments.spreadAt(y, x).inv(cv::DECOMP_CHOLESKY) * with;
            float offset = moments.meanMask(y, x);
            for (int c = 0; c < 3; ++c) {
                model.slope[static_cast<std::size_t>(c)](y, x) = slope[c];
                offset -= slope[c] * moments.mean[static_cast<std::size_t>(c)](y, x);
            }
            model.offset(y, x) = offset;
        }
    return model;
}

cv::Mat1f guided(const cv::Mat4b& picture, const cv::Mat1f& mask, int radius) {
    std::array<cv::Mat1f, 3> colour;
    for (int c = 0; c < 3; ++c) {
        cv::Mat1b channel;
        cv::extractChannel(picture, channel, c);
        channel.convertTo(colour[static_cast<std::size_t>(c)], CV_32F, 1.0 / 255);
    }
    const LinearModel model = fitted(colour, mask, radius);
    cv::Mat1f result = boxMean(model.offset, radius);
    for (std::size_t c = 0; c < 3; ++c)
        result += boxMean(model.slope[c], radius).mul(colour[c]);
    return result;
}

// The filtered opacity, held to the coarse mask towards the ends of the band.
uchar opacity(float filtered, float coarse) {
    const float lowest = std::max(0.0F, 4 * coarse - 3);
    const float highest = std::min(1.0F, 4 * coarse);
    const float sharpened = (filtered - .5F) * contrast + .5F;
    return cv::saturate_cast<uchar>(255 * std::clamp(sharpened, lowest, highest));
}

// One picture and its mask, refined tile by tile.
class Refiner final {
public:
    Refiner(const cv::Mat4b& picture, const cv::Mat1b& mask)
        : m_picture(picture), m_result(picture.size()),
          m_scale(static_cast<double>(mask.cols) / picture.cols,
                  static_cast<double>(mask.rows) / picture.rows),
          m_radius(edgeRadius(picture.size(), mask.size())) {
        mask.convertTo(m_coarse, CV_32F, 1.0 / 255);
        cv::GaussianBlur(m_coarse, m_coarse, {5, 5}, maskBlur, maskBlur, cv::BORDER_REPLICATE);
    }

    cv::Mat1b run() {
        std::vector<std::function<void()>> jobs;
        for (const cv::Rect& tile : tilesOf(m_picture.size()))
            jobs.emplace_back([this, tile] { refine(tile); });
        runSideBySide(jobs);
        return m_result;
    }

private:
    void refine(const cv::Rect& tile) {
        const cv::Rect wide = withMargin(tile, 2 * m_radius, m_picture.size());
        const cv::Rect inner(tile.tl() - wide.tl(), tile.size());
        const cv::Mat1f coarse = coarseAt(wide);
        double lowest = 0;
        double highest = 0;
        cv::minMaxIdx(coarse(inner), &lowest, &highest);
        cv::Mat1b result = m_result(tile);
        if (lowest >= 1 || highest <= 0) {
            result.setTo(lowest >= 1 ? 255 : 0);
            return;
        }
        const cv::Mat1f filtered = guided(m_picture(wide), coarse, m_radius);
        for (int y = 0; y < tile.height; ++y)
            for (int x = 0; x < tile.width; ++x)
                result(y, x) =
                    opacity(filtered(inner.y + y, inner.x + x), coarse(inner.y + y, inner.x + x));
    }

    // The coarse mask, interpolated over a part of the picture.
    [[nodiscard]] cv::Mat1f coarseAt(const cv::Rect& area) const {
        const cv::Matx23d map(m_scale.x, 0, (area.x + .5) * m_scale.x - .5, //
                              0, m_scale.y, (area.y + .5) * m_scale.y - .5);
        cv::Mat1f result;
        cv::warpAffine(m_coarse, result, map, area.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP,
                       cv::BORDER_REPLICATE);
        return result;
    }

    cv::Mat4b m_picture;
    cv::Mat1b m_result;
    cv::Point2d m_scale;
    int m_radius;
    cv::Mat1f m_coarse;
};

} // namespace

int edgeRadius(cv::Size picture, cv::Size mask) {
    const double across = static_cast<double>(picture.width) / mask.width;
    const double down = static_cast<double>(picture.height) / mask.height;
    return std::max(2, static_cast<int>(std::lround(std::min(across, down))));
}

cv::Mat1b edgeRefined(const cv::Mat4b& picture, const cv::Mat1b& mask) {
    return Refiner(picture, mask).run();
}

} // namespace stillwick
