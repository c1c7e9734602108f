#include "Stillwick/AnnotationRenderer.h"

#include <gtest/gtest.h>

#include <QColorSpace>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace stillwick {
namespace {

Annotation mark(AnnotationKind kind, QPointF start, QPointF end, double lineWidth,
                const QColor& color = Qt::black) {
    return {.kind = kind,
            .start = start,
            .end = end,
            .r = double(color.redF()),
            .g = double(color.greenF()),
            .b = double(color.blueF()),
            .a = double(color.alphaF()),
            .lineWidth = lineWidth};
}

QImage empty(int width, int height) {
    QImage image(width, height, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    image.setColorSpace(QColorSpace(QColorSpace::SRgb));
    return image;
}

QImage drawn(const Annotation& annotation, int width, int height) {
    return AnnotationRenderer::draw({annotation}, empty(width, height));
}

double inkAt(const QImage& image, int x, int y) {
    return image.constScanLine(y)[4 * x + 3] / 255.0;
}

/// How much of a column, or a part of it, is covered: the thickness of a level stroke there.
struct Crossing {
    double thickness = 0;
    double middle = 0;
};

template <typename Ink>
Crossing crossing(int from, int to, const Ink& inkAtPlace) {
    Crossing crossing;
    for (int place = from; place < to; ++place) {
        crossing.thickness += inkAtPlace(place);
        crossing.middle += inkAtPlace(place) * (place + 0.5);
    }
    crossing.middle /= crossing.thickness;
    return crossing;
}

Crossing acrossColumn(const QImage& image, int x, int from, int to) {
    return crossing(from, to, [&](int y) { return inkAt(image, x, y); });
}

Crossing acrossRow(const QImage& image, int y, int from, int to) {
    return crossing(from, to, [&](int x) { return inkAt(image, x, y); });
}

double area(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += inkAt(image, x, y);
    return sum;
}

/// Where ink begins and ends, to a part of a pixel, taking a border pixel's cover for its share.
struct Extent {
    double left, top, right, bottom;
};

Extent extentOf(const QImage& image) {
    Extent extent{double(image.width()), double(image.height()), 0, 0};
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (const double ink = inkAt(image, x, y); ink > 0.02) {
                extent.left = std::min(extent.left, x + 1 - ink);
                extent.top = std::min(extent.top, y + 1 - ink);
                extent.right = std::max(extent.right, x + ink);
                extent.bottom = std::max(extent.bottom, y + ink);
            }
    return extent;
}

constexpr double subpixel = 0.1; ///< what Qt's 256 levels of cover and its flattened curves leave

TEST(AnnotationRendererTest, WithoutMarksTheVeryPictureComesBack) {
    const QImage image = empty(20, 10);
    EXPECT_EQ(AnnotationRenderer::draw({}, image).cacheKey(), image.cacheKey());
}

TEST(AnnotationRendererTest, NoPictureGivesNone) {
    EXPECT_TRUE(
        AnnotationRenderer::draw({mark(AnnotationKind::line, {0, 0}, {1, 1}, 0.1)}, {}).isNull());
}

// 0.004 of 1000 is 4; the shaft lies at 0.1 of 500 from 100 to 900; a barb is 3.5 strokes long.
TEST(AnnotationRendererTest, AnArrowsShaftLiesWhereItsPointsSay) {
    const QImage image =
        drawn(mark(AnnotationKind::arrow, {0.1, 0.1}, {0.9, 0.1}, 0.004), 1000, 500);
    for (const int x : {110, 400, 800}) {
        const Crossing shaft = acrossColumn(image, x, 0, 500);
        EXPECT_NEAR(shaft.thickness, 4, subpixel) << x;
        EXPECT_NEAR(shaft.middle, 50, subpixel) << x;
    }
    const Extent extent = extentOf(image);
    EXPECT_NEAR(extent.left, 98, 0.3);   // the round cap adds half a stroke
    EXPECT_NEAR(extent.right, 902, 0.3); // at the tip too
}

// Barbs of 14 end 14 cos 0.45 = 12.606 before the tip and 14 sin 0.45 = 6.089 beside the shaft.
TEST(AnnotationRendererTest, AnArrowsBarbsHaveTheirLengthAndAngle) {
    const QImage image =
        drawn(mark(AnnotationKind::arrow, {0.1, 0.1}, {0.9, 0.1}, 0.004), 1000, 500);
    const Extent extent = extentOf(image);
    EXPECT_NEAR(extent.top, 50 - 6.089 - 2, 0.3);
    EXPECT_NEAR(extent.bottom, 50 + 6.089 + 2, 0.3);
    // Half-way along a barb its middle is 3.045 beside the shaft's, and it is cut at that angle.
    const Crossing barb = acrossColumn(image, 887, 0, 48);
    EXPECT_GT(barb.thickness, 2);
    EXPECT_EQ(acrossColumn(image, 884, 0, 47).thickness, 0);
    EXPECT_EQ(acrossColumn(image, 884, 53, 100).thickness, 0);
}

TEST(AnnotationRendererTest, TheHeadIsOpen) {
    // A large arrow: between barb and shaft there is nothing.
    const QImage image =
        drawn(mark(AnnotationKind::arrow, {0.1, 0.5}, {0.9, 0.5}, 0.02), 1000, 500);
    const double length = 70;
    const int x = int(900 - length * std::cos(0.45) * 0.9);
    const int gap = int(250 - length * std::sin(0.45) * 0.42);
    EXPECT_EQ(inkAt(image, x, gap), 0);
    EXPECT_EQ(inkAt(image, x, 250), 1);
    EXPECT_EQ(inkAt(image, x, int(250 - length * std::sin(0.45) * 0.9)), 1);
}

TEST(AnnotationRendererTest, AnArrowPointsWhereverItEnds) {
    // Straight down: the barbs end above the tip, left and right of it.
    const QImage image = drawn(mark(AnnotationKind::arrow, {0.5, 0.2}, {0.5, 0.8}, 0.01), 400, 400);
    EXPECT_NEAR(acrossRow(image, 200, 0, 400).thickness, 4, subpixel);
    EXPECT_NEAR(acrossRow(image, 200, 0, 400).middle, 200, subpixel);
    const Extent extent = extentOf(image);
    EXPECT_NEAR(extent.left, 200 - 6.089 - 2, 0.3);
    EXPECT_NEAR(extent.right, 200 + 6.089 + 2, 0.3);
    EXPECT_NEAR(extent.bottom, 322, 0.3);
    EXPECT_NEAR(extent.top, 78, 0.3);
}

TEST(AnnotationRendererTest, AStrokeIsNeverThinnerThanAPixelNorABarbShorterThanEight) {
    const QImage image =
        drawn(mark(AnnotationKind::arrow, {0.1, 0.5}, {0.8, 0.5}, 0.0001), 100, 101);
    EXPECT_NEAR(acrossColumn(image, 30, 0, 101).thickness, 1, subpixel);
    EXPECT_NEAR(acrossColumn(image, 30, 0, 101).middle, 50.5, subpixel);
    const Extent extent = extentOf(image);
    EXPECT_NEAR(extent.top, 50.5 - 8 * std::sin(0.45) - 0.5, 0.5);
    EXPECT_NEAR(extent.bottom, 50.5 + 8 * std::sin(0.45) + 0.5, 0.5);
    EXPECT_NEAR(drawn(mark(AnnotationKind::line, {0, 0.5}, {1, 0.5}, -3), 100, 101)
                    .constScanLine(50)[4 * 50 + 3],
                255, 1);
}

TEST(AnnotationRendererTest, AMarkKeepsItsProportionAtEverySize) {
    for (const int width : {200, 640, 1920, 3840}) {
        const int height = width / 2;
        const QImage image =
            drawn(mark(AnnotationKind::line, {0.25, 0.5}, {0.75, 0.5}, 0.02), width, height);
        const Crossing line = acrossColumn(image, width / 2, 0, height);
        EXPECT_NEAR(line.thickness, 0.02 * width, subpixel);
        EXPECT_NEAR(line.middle, 0.5 * height, subpixel);
        // A rectangle and two half discs.
        const double stroke = 0.02 * width;
        EXPECT_NEAR(area(image), stroke * width / 2 + std::numbers::pi * stroke * stroke / 4,
                    0.01 * stroke * width);
    }
}

TEST(AnnotationRendererTest, ALineHasNoHead) {
    const Extent extent =
        extentOf(drawn(mark(AnnotationKind::line, {0.1, 0.5}, {0.9, 0.5}, 0.01), 400, 200));
    EXPECT_NEAR(extent.top, 98, subpixel);
    EXPECT_NEAR(extent.bottom, 102, subpixel);
}

TEST(AnnotationRendererTest, ACircleIsTheEllipseBetweenItsCornersInAnyOrder) {
    for (const auto& [start, end] : {std::pair{QPointF(0.2, 0.2), QPointF(0.8, 0.6)},
                                     {QPointF(0.8, 0.6), QPointF(0.2, 0.2)},
                                     {QPointF(0.2, 0.6), QPointF(0.8, 0.2)}}) {
        const QImage image = drawn(mark(AnnotationKind::circle, start, end, 0.01), 400, 200);
        // Corners (80, 40) and (320, 120): middle (200, 80).
        const Crossing left = acrossRow(image, 80, 0, 200);
        EXPECT_NEAR(left.thickness, 4, 0.25);
        EXPECT_NEAR(left.middle, 80, 0.25);
        EXPECT_NEAR(acrossRow(image, 80, 200, 400).middle, 320, 0.25);
        EXPECT_NEAR(acrossColumn(image, 200, 0, 80).middle, 40, 0.25);
        EXPECT_NEAR(acrossColumn(image, 200, 80, 200).middle, 120, 0.25);
        EXPECT_NEAR(acrossColumn(image, 200, 80, 200).thickness, 4, 0.25);
        EXPECT_EQ(inkAt(image, 200, 80), 0); // stroked, not filled
    }
}

TEST(AnnotationRendererTest, ACircleWithoutWidthIsAVerticalStrokeOrNothing) {
    const QImage image =
        drawn(mark(AnnotationKind::circle, {0.5, 0.2}, {0.5, 0.8}, 0.02), 200, 100);
    const Extent extent = extentOf(image);
    if (area(image) > 0) {
        EXPECT_GE(extent.left, 97.9);
        EXPECT_LE(extent.right, 102.1);
    }
}

TEST(AnnotationRendererTest, ALineWithoutLengthIsADot) {
    const QImage image = drawn(mark(AnnotationKind::line, {0.5, 0.5}, {0.5, 0.5}, 0.1), 100, 100);
    EXPECT_NEAR(area(image), std::numbers::pi * 25, 2);
    EXPECT_NEAR(acrossRow(image, 50, 0, 100).middle, 50, subpixel);
}

TEST(AnnotationRendererTest, WhatLiesOutsideIsCutOffAndNothingIsMoved) {
    const QImage image = drawn(mark(AnnotationKind::line, {-0.5, 0.5}, {0.5, 0.5}, 0.04), 100, 100);
    EXPECT_NEAR(acrossColumn(image, 0, 0, 100).thickness, 4, subpixel);
    EXPECT_NEAR(extentOf(image).right, 52, 0.3);
    const Annotation away = mark(AnnotationKind::circle, {1.5, 1.5}, {3, 3}, 0.04);
    EXPECT_EQ(area(drawn(away, 100, 100)), 0);
}

TEST(AnnotationRendererTest, LaterMarksLieOverEarlierOnes) {
    const QImage image =
        AnnotationRenderer::draw({mark(AnnotationKind::line, {0, 0.5}, {1, 0.5}, 0.1, Qt::red),
                                  mark(AnnotationKind::line, {0.5, 0}, {0.5, 1}, 0.1, Qt::blue)},
                                 empty(100, 100));
    EXPECT_EQ(image.pixelColor(50, 50), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(20, 50), QColor(Qt::red));
}

// Green of 51/255 on opaque white: 255 - 51 for red and blue.
TEST(AnnotationRendererTest, AMarksOpacityLetsThePictureThrough) {
    QImage white = empty(100, 100);
    white.fill(Qt::white);
    const QImage image = AnnotationRenderer::draw(
        {mark(AnnotationKind::line, {0, 0.5}, {1, 0.5}, 0.1, QColor(0, 255, 0, 51))}, white);
    const QColor color = image.pixelColor(50, 50);
    EXPECT_NEAR(color.red(), 204, 1);
    EXPECT_EQ(color.green(), 255);
    EXPECT_EQ(color.alpha(), 255);
}

TEST(AnnotationRendererTest, WhatIsNotDrawnOnStaysToTheBit) {
    std::mt19937 random(4);
    QImage image = empty(80, 60);
    for (int y = 0; y < 60; ++y)
        for (int i = 0; i < 4 * 80; ++i)
            image.scanLine(y)[i] = uchar(random());
    const QImage result =
        AnnotationRenderer::draw({mark(AnnotationKind::line, {0.5, 0.1}, {0.5, 0.9}, 0.05)}, image);
    EXPECT_EQ(result.copy(0, 0, 36, 60), image.copy(0, 0, 36, 60));
    EXPECT_EQ(result.copy(44, 0, 36, 60), image.copy(44, 0, 36, 60));
    EXPECT_NE(result, image);
}

TEST(AnnotationRendererTest, APictureInAnotherColourSpaceComesOutInSrgb) {
    QImage image(20, 20, QImage::Format_RGB32);
    image.fill(QColor(0, 255, 0));
    image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
    const QImage result =
        AnnotationRenderer::draw({mark(AnnotationKind::line, {0.4, 0.4}, {0.6, 0.6}, 0.05)}, image);
    EXPECT_EQ(result.colorSpace(), QColorSpace(QColorSpace::SRgb));
    EXPECT_EQ(result.size(), image.size());
}

TEST(AnnotationRendererTest, NumbersBeyondMeasureHarmNothing) {
    const double infinite = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const QImage image = empty(60, 40);
    for (const AnnotationKind kind : allAnnotationKinds)
        for (const double huge : {1e6, 1e12, 1e300, infinite, nan})
            for (const double width : {0.02, huge}) {
                const QList<Annotation> marks{mark(kind, {0.5, 0.5}, {huge, -huge}, width),
                                              mark(kind, {-huge, 0.5}, {huge, 0.5}, width)};
                EXPECT_EQ(AnnotationRenderer::draw(marks, image).size(), image.size());
            }
    EXPECT_EQ(
        AnnotationRenderer::draw({mark(AnnotationKind::line, {nan, 0}, {infinite, 1}, 0.1)}, image),
        image);
}

} // namespace
} // namespace stillwick
