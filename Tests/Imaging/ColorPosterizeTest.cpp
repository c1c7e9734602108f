#include "Imaging/ColorPosterize.h"

#include "TestPictures.h"

#include <gtest/gtest.h>

#include <QColorSpace>

#include <array>
#include <utility>

namespace stillwick {

namespace {

QImage onePixel(int red, int green, int blue) {
    QImage image(1, 1, QImage::Format_RGBA8888);
    image.setPixel(0, 0, qRgb(red, green, blue));
    return image;
}

TEST(ColorPosterizeTest, SixLevelsAre51ApartAndTheNearestIsTaken) {
    // Half-way between two levels lie 25.5, 76.5, 127.5, 178.5 and 229.5.
    constexpr std::array<std::pair<int, int>, 16> pairs{{{0, 0},
                                                         {25, 0},
                                                         {26, 51},
                                                         {51, 51},
                                                         {76, 51},
                                                         {77, 102},
                                                         {102, 102},
                                                         {127, 102},
                                                         {128, 153},
                                                         {153, 153},
                                                         {178, 153},
                                                         {179, 204},
                                                         {204, 204},
                                                         {229, 204},
                                                         {230, 255},
                                                         {255, 255}}};
    for (const auto& [from, to] : pairs) {
        const QImage result = colorPosterize(onePixel(from, 255 - from, 60), {.levels = 6});
        EXPECT_EQ(result.pixel(0, 0), qRgb(to, 255 - to, 51)) << from;
    }
}

TEST(ColorPosterizeTest, TwoLevelsAreBlackAndWhite) {
    EXPECT_EQ(colorPosterize(onePixel(127, 128, 0), {.levels = 2}).pixel(0, 0), qRgb(0, 255, 0));
}

TEST(ColorPosterizeTest, LevelsAreRoundedWhereTheyAreNoWholeNumbers) {
    // Three levels: 0, 127.5, 255; four steps of 63.75: 0, 64, 128, 191, 255.
    EXPECT_EQ(colorPosterize(onePixel(100, 63, 192), {.levels = 3}).pixel(0, 0), qRgb(128, 0, 255));
    EXPECT_EQ(colorPosterize(onePixel(60, 120, 200), {.levels = 5}).pixel(0, 0),
              qRgb(64, 128, 191));
}

TEST(ColorPosterizeTest, With256LevelsAnEvenPictureStaysAsItIs) {
    for (const int gray : {0, 1, 100, 254, 255})
        EXPECT_EQ(colorPosterize(onePixel(gray, 7, 9), {.levels = 256}).pixel(0, 0),
                  qRgb(gray, 7, 9));
}

TEST(ColorPosterizeTest, EvenAreasSideBySideAreMappedExactlyUpToTheirBorder) {
    const QImage halves = grayPicture({40, 40}, [](int x, int) { return x < 20 ? 40 : 240; });
    const QImage result = colorPosterize(halves, {.levels = 6});
    for (int x = 0; x < 40; ++x)
        EXPECT_EQ(qGray(result.pixel(x, 20)), x < 20 ? 51 : 255) << x;
}

TEST(ColorPosterizeTest, NoiseBesideABoundaryLeavesNoSpeckle) {
    // Of 131 ± 6 two values of thirteen lie below 127.5, where the level is another.
    Noise noise;
    const QImage noisy = grayPicture({64, 64}, [&](int, int) { return 132 + noise.next(6); });
    const GrayRange before = grayRange(inside(noisy));
    ASSERT_LT(before.darkest, 128);
    const GrayRange after = grayRange(inside(colorPosterize(noisy, {.levels = 6})));
    EXPECT_EQ(after.darkest, 153);
    EXPECT_EQ(after.lightest, 153);
}

TEST(ColorPosterizeTest, EveryChannelHasOneOfTheSixValues) {
    Noise noise;
    QImage image(50, 30, QImage::Format_RGBA8888);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 50; ++x)
            image.setPixel(
                x, y, qRgb(128 + noise.next(127), 128 + noise.next(127), 128 + noise.next(127)));
    const QImage result = colorPosterize(image, {.levels = 6});
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 4 * 50; ++x)
            ASSERT_EQ(result.constScanLine(y)[x] % 51, 0) << x << ' ' << y;
}

TEST(ColorPosterizeTest, TheLayerIsOpaqueAndHasThePicturesSizeAndColourSpace) {
    QImage image(7, 5, QImage::Format_RGBA8888);
    image.fill(QColor(100, 100, 100, 90));
    image.setPixel(3, 3, 0);
    image.setColorSpace(QColorSpace::AdobeRgb);
    const QImage result = colorPosterize(image, {});
    EXPECT_EQ(result.size(), QSize(7, 5));
    EXPECT_EQ(result.format(), QImage::Format_RGBA8888);
    EXPECT_EQ(result.colorSpace(), QColorSpace(QColorSpace::AdobeRgb));
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 7; ++x)
            ASSERT_EQ(qAlpha(result.pixel(x, y)), 255);
    EXPECT_EQ(result.pixel(0, 0), qRgb(102, 102, 102));
}

TEST(ColorPosterizeTest, NoPictureGivesNone) {
    EXPECT_TRUE(colorPosterize({}, {}).isNull());
}

} // namespace

} // namespace stillwick
