#include "Stillwick/EdgeProcessingService.h"

#include <gtest/gtest.h>

#include <QColorSpace>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace stillwick {
namespace {

const EdgeProcessingService service;

/// Random colours and opacities around an opaque middle.
QImage cutOut(int width, int height) {
    std::mt19937 random(3);
    QImage image(width, height, QImage::Format_RGBA8888);
    image.setColorSpace(QColorSpace(QColorSpace::SRgb));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double away = std::hypot(x - width / 2.0, y - height / 2.0);
            const double soft = (0.4 * height - away) * 32 + double(random() % 32);
            const int alpha = int(std::clamp(soft, 0.0, 255.0));
            const auto color =
                QColor(int(random() % 256), int(random() % 256), int(random() % 256), alpha);
            image.setPixelColor(x, y, alpha == 0 ? QColor(0, 0, 0, 0) : color);
        }
    return image;
}

QImage opaque(int width, int height) {
    QImage image(width, height, QImage::Format_RGBA8888);
    image.fill(QColor(20, 130, 240));
    return image;
}

/// Transparent but for a box of that colour.
QImage boxed(const QSize& size, const QRect& box, const QColor& color) {
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x)
            image.setPixelColor(x, y, color);
    return image;
}

const uchar* pixel(const QImage& image, int x, int y) {
    return image.constScanLine(y) + 4 * x;
}

bool isSameColor(const uchar* a, const uchar* b) {
    return std::equal(a, a + 3, b);
}

TEST(EdgeProcessingServiceTest, WithNothingToDoTheVeryPictureComesBack) {
    const QImage image = cutOut(60, 50);
    for (const double nothing : {0.0, -0.5, -10.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(service.cleanEdges(image, nothing, nothing).cacheKey(), image.cacheKey());
    const QImage premultiplied = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    EXPECT_EQ(service.cleanEdges(premultiplied, 0, 0), premultiplied);
}

TEST(EdgeProcessingServiceTest, AlphaNeverGrowsAndNoColourChanges) {
    const QImage image = cutOut(90, 70);
    for (const auto& [shrink, feather] :
         {std::pair{1.5, 0.0}, {0.0, 2.5}, {3.0, 4.0}, {0.2, 0.0}, {-3.0, 0.4}}) {
        const QImage result = service.cleanEdges(image, shrink, feather);
        ASSERT_EQ(result.size(), image.size());
        EXPECT_EQ(result.format(), QImage::Format_RGBA8888);
        EXPECT_EQ(result.colorSpace(), image.colorSpace());
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const uchar* before = pixel(image, x, y);
                const uchar* after = pixel(result, x, y);
                ASSERT_LE(after[3], before[3]);
                if (after[3] > 0)
                    ASSERT_TRUE(isSameColor(before, after)) << x << "," << y;
                else
                    ASSERT_TRUE(after[0] == 0 && after[1] == 0 && after[2] == 0);
            }
    }
}

TEST(EdgeProcessingServiceTest, ShrinkingDrawsTheBorderInByTheRadius) {
    const QImage image = boxed({60, 60}, {20, 20, 20, 20}, Qt::red);
    const QImage result = service.cleanEdges(image, 3, 0);
    EXPECT_EQ(pixel(result, 22, 30)[3], 0);
    EXPECT_EQ(pixel(result, 23, 30)[3], 255);
    EXPECT_EQ(pixel(result, 36, 30)[3], 255);
    EXPECT_EQ(pixel(result, 37, 30)[3], 0);
}

TEST(EdgeProcessingServiceTest, ShrinkingComesBeforeSoftening) {
    const QImage image = cutOut(80, 80);
    EXPECT_EQ(service.cleanEdges(image, 2, 3),
              service.cleanEdges(service.cleanEdges(image, 2, 0), 0, 3));
}

TEST(EdgeProcessingServiceTest, SofteningDoesNotFadeAtThePicturesBorder) {
    const QImage image = opaque(50, 40);
    EXPECT_EQ(service.cleanEdges(image, 0, 6), image);
}

// Half of the Gaussian lies on either side of the edge; the nearest pixels are half a pixel away:
// 255 * (1/2 + g(0) / 2) with g(0) = 0.0997 for a deviation of 4, and the mirror image outside,
// where nothing was visible and nothing becomes so.
TEST(EdgeProcessingServiceTest, SofteningHalvesTheOpacityAtTheEdgeAndStaysInside) {
    const QImage image = boxed({80, 60}, {0, 0, 40, 60}, Qt::blue);
    const QImage result = service.cleanEdges(image, 0, 4);
    EXPECT_NEAR(pixel(result, 39, 30)[3], 255 * (0.5 + 0.0997 / 2), 1.5);
    EXPECT_EQ(pixel(result, 40, 30)[3], 0);
    EXPECT_EQ(pixel(result, 20, 30)[3], 255);
}

TEST(EdgeProcessingServiceTest, AVerySmallSofteningChangesVeryLittle) {
    const QImage image = cutOut(80, 80);
    const QImage result = service.cleanEdges(image, 0, 0.05);
    EXPECT_EQ(result, image);
}

TEST(EdgeProcessingServiceTest, WhatIsNotVisibleStaysSo) {
    QImage image(30, 20, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    EXPECT_EQ(service.cleanEdges(image, 3, 3), image);
    EXPECT_EQ(qAlpha(service.addOutline(image, 6, Qt::white).pixel(15, 10)), 0);
}

TEST(EdgeProcessingServiceTest, SettingsBeyondMeasureAreStillAnswered) {
    const double infinite = std::numeric_limits<double>::infinity();
    const QImage image = cutOut(40, 30);
    EXPECT_EQ(service.cleanEdges(image, infinite, 0).size(), image.size());
    EXPECT_EQ(service.cleanEdges(image, 0, infinite).size(), image.size());
    EXPECT_EQ(service.cleanEdges(image, 1e18, 1e18).size(), image.size());
    for (const double width : {infinite, 1e9, std::numeric_limits<double>::quiet_NaN() * -1})
        EXPECT_FALSE(service.addOutline(image, width, Qt::white).isNull());
    EXPECT_EQ(service.addOutline(image, 1e9, Qt::white), image);
}

TEST(EdgeProcessingServiceTest, NoPictureGivesNone) {
    EXPECT_TRUE(service.cleanEdges({}, 1, 1).isNull());
    EXPECT_TRUE(service.addOutline({}, 6, Qt::white).isNull());
}

TEST(EdgeProcessingServiceTest, AnOutlineMakesThePictureLargerByItsWidthAndTwo) {
    const QImage image = opaque(100, 100);
    const QImage result = service.addOutline(image, 6, Qt::white);
    EXPECT_EQ(result.size(), QSize(116, 116));
    EXPECT_EQ(result.copy(8, 8, 100, 100), image);
    EXPECT_EQ(service.addOutline(image, 2.4, Qt::white).size(), QSize(110, 110));
    EXPECT_EQ(service.addOutline(image, 0, Qt::white).size(), QSize(104, 104));
    EXPECT_EQ(service.addOutline(image, -5, Qt::white).size(), QSize(104, 104));
}

TEST(EdgeProcessingServiceTest, TheRingHasExactlyTheOutlineColour) {
    const QColor color(200, 30, 90);
    const QImage result = service.addOutline(opaque(50, 40), 6, color);
    int ring = 0;
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x)
            if (!QRect(8, 8, 50, 40).contains(x, y) && pixel(result, x, y)[3] > 0) {
                EXPECT_EQ(pixel(result, x, y)[0], 200);
                EXPECT_EQ(pixel(result, x, y)[1], 30);
                EXPECT_EQ(pixel(result, x, y)[2], 90);
                ++ring;
            }
    // Four sides of width 6 and a disc's four quarters.
    EXPECT_NEAR(ring, 2 * 6 * (50 + 40) + 3.14159 * 36, 30);
    EXPECT_EQ(pixel(result, 2, 20)[3], 255);
    EXPECT_EQ(pixel(result, 1, 20)[3], 0);
}

TEST(EdgeProcessingServiceTest, AnOutlinesOpacityIsItsColours) {
    const QImage result = service.addOutline(opaque(50, 40), 6, QColor(200, 30, 90, 102));
    EXPECT_EQ(pixel(result, 4, 20)[3], 102);
    EXPECT_EQ(pixel(result, 4, 20)[0], 200);
    const QImage none = service.addOutline(opaque(50, 40), 6, QColor(200, 30, 90, 0));
    EXPECT_EQ(pixel(none, 4, 20)[3], 0);
    EXPECT_EQ(pixel(none, 4, 20)[0], 0);
}

// Half opaque red on white: opaque, and (255 + 255, 255 + 0, 255 + 0) / 2.
TEST(EdgeProcessingServiceTest, ASoftEdgeLiesOnTheOutline) {
    QImage image(20, 20, QImage::Format_RGBA8888);
    image.fill(Qt::red);
    image.setPixelColor(10, 0, QColor(255, 0, 0, 128));
    const QImage result = service.addOutline(image, 4, Qt::white);
    const uchar* soft = pixel(result, 16, 6);
    EXPECT_EQ(soft[0], 255);
    EXPECT_EQ(soft[1], 127);
    EXPECT_EQ(soft[2], 127);
    EXPECT_EQ(soft[3], 255);
}

TEST(EdgeProcessingServiceTest, PremultipliedPicturesAreTaken) {
    const QImage straight = opaque(30, 30);
    const QImage premultiplied = straight.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(service.addOutline(premultiplied, 3, Qt::black),
              service.addOutline(straight, 3, Qt::black));
    EXPECT_EQ(service.cleanEdges(premultiplied, 3, 1), service.cleanEdges(straight, 3, 1));
}

} // namespace
} // namespace stillwick
