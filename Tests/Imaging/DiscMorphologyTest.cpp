#include "Imaging/DiscMorphology.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using stillwick::dilatedByDisc;
using stillwick::erodedByDisc;

namespace {

QImage plane(int width, int height, uchar value = 0) {
    QImage image(width, height, QImage::Format_Alpha8);
    for (int y = 0; y < height; ++y)
        std::fill_n(image.scanLine(y), width, value);
    return image;
}

uchar at(const QImage& image, int x, int y) {
    return image.constScanLine(y)[x];
}

int countAbove(const QImage& image, int least) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        count += int(std::count_if(image.constScanLine(y), image.constScanLine(y) + image.width(),
                                   [least](uchar value) { return value >= least; }));
    return count;
}

QImage randomBlobs(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    QImage image = plane(width, height);
    for (int blob = 0; blob < 12; ++blob) {
        const int x = int(random() % unsigned(width));
        const int y = int(random() % unsigned(height));
        const int w = 1 + int(random() % 25);
        const int h = 1 + int(random() % 25);
        for (int j = y; j < std::min(y + h, height); ++j)
            std::fill_n(image.scanLine(j) + x, std::min(w, width - x), uchar{255});
    }
    return image;
}

QImage randomGreys(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    QImage image = plane(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = uchar(random());
    return image;
}

/// How far each pixel is from the nearest full one, by OpenCV's exact transform.
cv::Mat distances(const QImage& image) {
    cv::Mat empty(image.height(), image.width(), CV_8UC1);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            empty.at<uchar>(y, x) = at(image, x, y) == 255 ? 0 : 1;
    cv::Mat result;
    cv::distanceTransform(empty, result, cv::DIST_L2, cv::DIST_MASK_PRECISE);
    return result;
}

/// The definition, pixel by pixel.
uchar greatestWithin(const QImage& image, int x, int y, double radius) {
    double best = 0;
    for (int j = 0; j < image.height(); ++j)
        for (int i = 0; i < image.width(); ++i) {
            const double share = std::clamp(radius + 1 - std::hypot(i - x, j - y), 0.0, 1.0);
            best = std::max(best, share * at(image, i, j));
        }
    return uchar(std::lround(best));
}

} // namespace

// The pixels whose centres lie within 5 of the origin are 81 (Gauss's circle problem: N(5) = 81).
TEST(DiscMorphologyTest, APixelGrowsIntoATrueDisc) {
    QImage image = plane(21, 21);
    image.scanLine(10)[10] = 255;
    EXPECT_EQ(countAbove(dilatedByDisc(image, 5), 255), 81);
    EXPECT_EQ(countAbove(dilatedByDisc(image, 1), 255), 5);
    EXPECT_EQ(countAbove(dilatedByDisc(image, 2), 255), 13);
    EXPECT_EQ(countAbove(dilatedByDisc(image, 2.4), 255), 21);
    EXPECT_EQ(countAbove(dilatedByDisc(image, 9), 255), 253);
}

TEST(DiscMorphologyTest, GrowthIsEqualInAllDirectionsWithinHalfAPixel) {
    for (const double radius : {0.5, 1.0, 2.0, 2.4, 5.0, 7.3, 20.0}) {
        const QImage image = randomBlobs(160, 120, unsigned(10 * radius));
        const cv::Mat distance = distances(image);
        const QImage grown = dilatedByDisc(image, radius);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                // An edge lies where half of the opacity is reached.
                const bool isInside = at(grown, x, y) > 127;
                const double away = double(distance.at<float>(y, x));
                ASSERT_EQ(isInside, away <= radius + 0.5 + (isInside ? 0.005 : -0.005))
                    << "radius " << radius << " at " << x << "," << y << ", " << away << " away";
            }
    }
}

TEST(DiscMorphologyTest, AStraightEdgeMovesByTheRadiusBetweenWholeNumbersToo) {
    QImage image = plane(40, 40);
    for (int y = 0; y < 40; ++y)
        std::fill_n(image.scanLine(y), 10, uchar{255});
    for (const double radius : {0.25, 0.5, 1.0, 2.0, 2.4, 6.75}) {
        const QImage grown = dilatedByDisc(image, radius);
        double covered = 0;
        for (int x = 0; x < 40; ++x)
            covered += at(grown, x, 20) / 255.0;
        EXPECT_NEAR(covered, 10 + radius, 0.003) << radius;
        const QImage shrunk = erodedByDisc(image, radius);
        double left = 0;
        for (int x = 10; x < 40; ++x)
            left += at(shrunk, x, 20) / 255.0;
        EXPECT_EQ(left, 0);
        EXPECT_NEAR(at(shrunk, 9, 20), 255 * std::max(1 - radius, 0.0), 0.5);
    }
}

TEST(DiscMorphologyTest, GreyValuesFollowTheDefinition) {
    for (const double radius : {0.0, 0.7, 1.5, 3.0, 4.2}) {
        const QImage image = randomGreys(23, 17, 5);
        const QImage grown = dilatedByDisc(image, radius);
        for (int y = 0; y < 17; ++y)
            for (int x = 0; x < 23; ++x)
                // The weights are of eight bits: one half step each for weight and product.
                ASSERT_NEAR(at(grown, x, y), greatestWithin(image, x, y, radius), 1)
                    << "radius " << radius << " at " << x << "," << y;
    }
}

TEST(DiscMorphologyTest, ASoftEdgeStaysAsSoftAsItWas) {
    QImage image = plane(80, 30);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 80; ++x)
            image.scanLine(y)[x] = uchar(std::clamp(15 * (40 - x), 0, 255));
    const QImage shrunk = erodedByDisc(image, 4);
    const QImage grown = dilatedByDisc(image, 4);
    for (int x = 10; x < 70; ++x) {
        EXPECT_EQ(at(shrunk, x, 15), at(image, x + 4, 15));
        EXPECT_EQ(at(grown, x, 15), at(image, x - 4, 15));
    }
}

TEST(DiscMorphologyTest, ARadiusOfZeroChangesNothing) {
    const QImage image = randomGreys(19, 23, 7);
    EXPECT_EQ(dilatedByDisc(image, 0), image);
    EXPECT_EQ(erodedByDisc(image, 0), image);
}

TEST(DiscMorphologyTest, NothingGrowsUnderErosionNorShrinksUnderDilation) {
    const QImage image = randomGreys(31, 29, 8);
    for (const double radius : {0.3, 1.0, 2.6}) {
        const QImage shrunk = erodedByDisc(image, radius);
        const QImage grown = dilatedByDisc(image, radius);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                ASSERT_LE(at(shrunk, x, y), at(image, x, y));
                ASSERT_GE(at(grown, x, y), at(image, x, y));
            }
    }
}

TEST(DiscMorphologyTest, WhatLiesOutsideIsTransparent) {
    const QImage full = plane(20, 20, 255);
    const QImage shrunk = erodedByDisc(full, 3);
    EXPECT_EQ(at(shrunk, 2, 10), 0);
    EXPECT_EQ(at(shrunk, 3, 10), 255);
    EXPECT_EQ(at(shrunk, 10, 17), 0);
    EXPECT_EQ(at(shrunk, 10, 16), 255);
    EXPECT_EQ(countAbove(dilatedByDisc(plane(20, 20), 5), 1), 0);
}

TEST(DiscMorphologyTest, ARadiusLargerThanThePlaneCoversIt) {
    QImage image = plane(30, 20);
    image.scanLine(0)[0] = 200;
    for (const double radius : {50.0, 1e9, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(countAbove(dilatedByDisc(image, radius), 200), 600) << radius;
        EXPECT_EQ(countAbove(erodedByDisc(plane(30, 20, 255), radius), 1), 0) << radius;
    }
}

TEST(DiscMorphologyTest, ASinglePixelAndASingleRowWork) {
    EXPECT_EQ(at(dilatedByDisc(plane(1, 1, 90), 4), 0, 0), 90);
    EXPECT_EQ(at(erodedByDisc(plane(1, 1, 90), 4), 0, 0), 0);
    QImage row = plane(9, 1);
    row.scanLine(0)[4] = 255;
    const QImage grown = dilatedByDisc(row, 2);
    EXPECT_EQ(countAbove(grown, 255), 5);
}
