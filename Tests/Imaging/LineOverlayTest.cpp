#include "Imaging/LineOverlay.h"

#include "TestPictures.h"

#include <gtest/gtest.h>

#include <QColorSpace>

#include <cmath>

namespace stillwick {

namespace {

constexpr LineOverlay parameters{.noiseReductionLevel = 0.07F,
                                 .noiseReductionSharpness = 0.71F,
                                 .edgeIntensity = 1.0F,
                                 .threshold = 0.1F,
                                 .contrast = 50.0F};

QImage stepAt(int column, int left, int right) {
    return grayPicture({80, 60}, [=](int x, int) { return x < column ? left : right; });
}

TEST(LineOverlayTest, AFlatPictureHasNoLineInside) {
    for (const int gray : {0, 128, 255}) {
        const GrayRange range =
            grayRange(inside(lineOverlay(flatGray({60, 60}, gray), parameters)));
        EXPECT_EQ(range.darkest, 255) << gray;
    }
}

TEST(LineOverlayTest, AStepIsABlackLineAtItsPlaceAndNowhereElse) {
    const QImage drawn = lineOverlay(stepAt(40, 40, 200), parameters);
    for (int y = 12; y < 48; ++y) {
        EXPECT_EQ(qGray(drawn.pixel(39, y)), 0) << y;
        EXPECT_EQ(qGray(drawn.pixel(40, y)), 0) << y;
        for (int x = 12; x < 68; ++x)
            if (std::abs(2 * x + 1 - 80) > 10) {
                ASSERT_EQ(qGray(drawn.pixel(x, y)), 255) << x << ' ' << y;
            }
    }
}

TEST(LineOverlayTest, TheDirectionOfAStepDoesNotMatter) {
    const QImage rising = lineOverlay(stepAt(40, 40, 200), parameters);
    const QImage falling = lineOverlay(stepAt(40, 200, 40), parameters);
    for (int x = 12; x < 68; ++x)
        EXPECT_NEAR(qGray(rising.pixel(x, 30)), qGray(falling.pixel(x, 30)), 2) << x;
}

TEST(LineOverlayTest, NoiseBelowTheLevelGivesNoLine) {
    Noise noise; // ± 8 of 255 is 0.03, less than half of the level
    const QImage noisy = grayPicture({80, 80}, [&](int, int) { return 128 + noise.next(8); });
    EXPECT_EQ(grayRange(inside(lineOverlay(noisy, parameters))).darkest, 255);
}

TEST(LineOverlayTest, WithoutNoiseReductionTheSameNoiseIsDrawn) {
    Noise noise;
    const QImage noisy = grayPicture({80, 80}, [&](int, int) { return 128 + noise.next(40); });
    LineOverlay raw = parameters;
    raw.noiseReductionLevel = 0;
    EXPECT_LT(grayRange(inside(lineOverlay(noisy, raw))).mean,
              grayRange(inside(lineOverlay(noisy, parameters))).mean);
}

TEST(LineOverlayTest, AStepBelowTheThresholdIsNotDrawnUntilItIsIntensified) {
    LineOverlay strict = parameters;
    strict.threshold = 0.6F;
    const QImage step = stepAt(40, 100, 160);
    EXPECT_EQ(grayRange(inside(lineOverlay(step, strict))).darkest, 255);
    strict.edgeIntensity = 10;
    EXPECT_EQ(grayRange(inside(lineOverlay(step, strict))).darkest, 0);
}

TEST(LineOverlayTest, ASlantedLineHasSoftEdges) {
    const QImage slanted =
        grayPicture({80, 80}, [](int x, int y) { return 3 * x + y < 160 ? 40 : 200; });
    const QImage drawn = inside(lineOverlay(slanted, parameters));
    int soft = 0;
    for (int y = 0; y < drawn.height(); ++y)
        for (int x = 0; x < drawn.width(); ++x)
            soft += qGray(drawn.pixel(x, y)) > 40 && qGray(drawn.pixel(x, y)) < 215 ? 1 : 0;
    EXPECT_GE(soft, drawn.height()); // a hard edge would have none, a soft one has two in each row
}

TEST(LineOverlayTest, TheSilhouetteIsInkedOnItsInnerSide) {
    QImage disc(80, 80, QImage::Format_RGBA8888);
    disc.fill(Qt::transparent);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 80; ++x)
            if (std::hypot(x - 40, y - 40) < 30)
                disc.setPixel(x, y, qRgb(128, 128, 128));
    const QImage drawn = lineOverlay(disc, parameters);
    for (int degrees = 0; degrees < 360; degrees += 15) {
        const double x = std::cos(degrees * 0.0174533);
        const double y = std::sin(degrees * 0.0174533);
        EXPECT_LT(qGray(drawn.pixel(int(40 + 28.5 * x), int(40 + 28.5 * y))), 32) << degrees;
        EXPECT_EQ(qGray(drawn.pixel(int(40 + 20 * x), int(40 + 20 * y))), 255) << degrees;
    }
}

TEST(LineOverlayTest, ATranslucentSubjectIsNotFilledWithInk) {
    QImage veil(60, 60, QImage::Format_RGBA8888);
    veil.fill(QColor(128, 128, 128, 20));
    const QImage drawn = lineOverlay(veil, parameters);
    EXPECT_EQ(grayRange(inside(drawn)).darkest, 255);
    EXPECT_LT(qGray(drawn.pixel(1, 30)), 32);
}

TEST(LineOverlayTest, TheLayerIsOpaqueGreyAndHasThePicturesSizeAndColourSpace) {
    QImage image(33, 21, QImage::Format_RGBA8888);
    image.fill(QColor(200, 10, 30, 128));
    image.setPixel(0, 0, 0);
    image.setColorSpace(QColorSpace::DisplayP3);
    const QImage drawn = lineOverlay(image, parameters);
    EXPECT_EQ(drawn.size(), image.size());
    EXPECT_EQ(drawn.format(), QImage::Format_RGBA8888);
    EXPECT_EQ(drawn.colorSpace(), image.colorSpace());
    for (int y = 0; y < 21; ++y)
        for (int x = 0; x < 33; ++x) {
            const QRgb pixel = drawn.pixel(x, y);
            ASSERT_EQ(pixel, qRgb(qRed(pixel), qRed(pixel), qRed(pixel)));
        }
}

TEST(LineOverlayTest, NoPictureGivesNone) {
    EXPECT_TRUE(lineOverlay({}, parameters).isNull());
}

} // namespace

} // namespace stillwick
