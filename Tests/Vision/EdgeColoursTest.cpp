// Edges mixed on paper: the test knows the subject's colour, the background's, and the opacity.
#include "Vision/EdgeColours.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>

namespace stillwick {
namespace {

constexpr int width = 300;
constexpr int height = 200;
constexpr int edgeAt = 150;
const cv::Vec3f orange(220, 120, 30);
const cv::Vec3f green(30, 90, 40);

// Opacity that falls from 255 to 0 over eight pixels around `edgeAt`.
uchar opacityAt(int x) {
    return cv::saturate_cast<uchar>(255 * (.5 + (edgeAt - x - .5) / 8));
}

struct Mixed {
    cv::Mat4b picture = cv::Mat4b(height, width);
    cv::Mat1b alpha = cv::Mat1b(height, width);
};

Mixed orangeOverGreen() {
    Mixed mixed;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            mixed.alpha(y, x) = opacityAt(x);
            const float a = static_cast<float>(mixed.alpha(y, x)) / 255;
            const cv::Vec3f colour = a * orange + (1 - a) * green;
            mixed.picture(y, x) = {cv::saturate_cast<uchar>(colour[0]),
                                   cv::saturate_cast<uchar>(colour[1]),
                                   cv::saturate_cast<uchar>(colour[2]), 255};
        }
    return mixed;
}

TEST(EdgeColoursTest, TheBackgroundsColourLeavesTheEdge) {
    const Mixed mixed = orangeOverGreen();
    const std::vector<EdgeColour> colours = edgeColours(mixed.picture, mixed.alpha, 4);
    ASSERT_FALSE(colours.empty());
    for (const EdgeColour& edge : colours)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(edge.colour[static_cast<std::size_t>(c)], orange[c], 12)
                << edge.place.x() << ' ' << c;
}

TEST(EdgeColoursTest, OnlySoftPixelsAreNamedAndEachOnce) {
    const Mixed mixed = orangeOverGreen();
    cv::Mat1i named(height, width, 0);
    for (const EdgeColour& edge : edgeColours(mixed.picture, mixed.alpha, 4))
        ++named(edge.place.y(), edge.place.x());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const uchar a = mixed.alpha(y, x);
            ASSERT_EQ(named(y, x), a > 0 && a < 255 ? 1 : 0) << x << ' ' << y;
        }
}

TEST(EdgeColoursTest, AnEvenPictureKeepsItsColour) {
    Mixed mixed = orangeOverGreen();
    mixed.picture.setTo(cv::Scalar(90, 80, 70, 255));
    for (const EdgeColour& edge : edgeColours(mixed.picture, mixed.alpha, 4))
        EXPECT_EQ(edge.colour, (std::array<uchar, 3>{90, 80, 70}));
}

TEST(EdgeColoursTest, WhereThePictureIsNotOpaqueNothingIsTouched) {
    Mixed mixed = orangeOverGreen();
    for (cv::Vec4b& pixel : mixed.picture)
        pixel[3] = 200;
    EXPECT_TRUE(edgeColours(mixed.picture, mixed.alpha, 4).empty());
}

TEST(EdgeColoursTest, AnyNumberOfThreadsGivesTheSame) {
    const Mixed mixed = orangeOverGreen();
    const int before = cv::getNumThreads();
    const std::vector<EdgeColour> expected = edgeColours(mixed.picture, mixed.alpha, 4);
    for (const int threads : {1, 3}) {
        cv::setNumThreads(threads);
        const std::vector<EdgeColour> found = edgeColours(mixed.picture, mixed.alpha, 4);
        EXPECT_TRUE(std::equal(found.begin(), found.end(), expected.begin(), expected.end(),
                               [](const EdgeColour& a, const EdgeColour& b) {
                                   return a.place == b.place && a.colour == b.colour;
                               }));
    }
    cv::setNumThreads(before);
}

} // namespace
} // namespace stillwick
