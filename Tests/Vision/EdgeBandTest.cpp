// A coarse disc brought to the size of a picture in which the test drew it.
#include "Vision/EdgeBand.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>

namespace stillwick {
namespace {

constexpr int scale = 4;
const cv::Size coarseSize(100, 60);
const cv::Size size(scale* coarseSize.width, scale* coarseSize.height);

// Distance inwards from the edge of a disc that the lower side of the frame cuts in half.
double depthAt(double x, double y) {
    return 120 - std::hypot(x + .5 - 200, y + .5 - 240);
}

cv::Mat4b picture() {
    cv::Mat4b result(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            result(y, x) =
                depthAt(x, y) > 0 ? cv::Vec4b(200, 60, 50, 255) : cv::Vec4b(60, 120, 70, 255);
    return result;
}

cv::Mat1b mask() {
    cv::Mat1b result(coarseSize);
    for (int y = 0; y < coarseSize.height; ++y)
        for (int x = 0; x < coarseSize.width; ++x)
            result(y, x) = depthAt(scale * (x + .5) - .5, scale * (y + .5) - .5) > 0 ? 255 : 0;
    return result;
}

TEST(EdgeBandTest, TheEdgeIsThePicturesAndNotTheMasks) {
    const cv::Mat1b alpha = edgeRefined(picture(), mask());
    ASSERT_EQ(alpha.size(), size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            if (std::abs(depthAt(x, y)) > 1.5) {
                ASSERT_EQ(alpha(y, x) >= 128, depthAt(x, y) > 0) << x << ' ' << y;
            }
}

TEST(EdgeBandTest, BeyondTheBandNothingIsSoft) {
    const cv::Mat1b alpha = edgeRefined(picture(), mask());
    const int band = 3 * edgeRadius(size, coarseSize);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            if (std::abs(depthAt(x, y)) > band) {
                ASSERT_EQ(alpha(y, x), depthAt(x, y) > 0 ? 255 : 0) << x << ' ' << y;
            }
}

TEST(EdgeBandTest, WhereTheFrameCutsTheSubjectItsEdgeIsHard) {
    const cv::Mat1b alpha = edgeRefined(picture(), mask());
    for (int x = 0; x < size.width; ++x)
        if (depthAt(x, size.height - 1) > 12) {
            ASSERT_EQ(alpha(size.height - 1, x), 255) << x;
        }
}

TEST(EdgeBandTest, TheRadiusIsACoarsePixelAndAtLeastTwo) {
    EXPECT_EQ(edgeRadius({1920, 1080}, {320, 180}), 6);
    EXPECT_EQ(edgeRadius({320, 180}, {320, 180}), 2);
}

} // namespace
} // namespace stillwick
