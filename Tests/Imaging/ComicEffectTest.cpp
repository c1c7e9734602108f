#include "Imaging/ComicEffect.h"

#include "TestPictures.h"

#include <gtest/gtest.h>

#include <QColorSpace>

namespace stillwick {

namespace {

GrayRange flatResult(int gray) {
    return grayRange(inside(comicEffect(flatGray({120, 120}, gray))));
}

TEST(ComicEffectTest, TheDarkerThePictureTheDarkerTheDrawing) {
    double last = -1;
    for (int gray = 0; gray < 256; gray += 15) {
        const double mean = flatResult(gray).mean;
        EXPECT_GE(mean, last) << gray;
        last = mean;
    }
    EXPECT_LT(flatResult(50).mean + 20, flatResult(100).mean);
    EXPECT_LT(flatResult(100).mean + 20, flatResult(160).mean);
}

TEST(ComicEffectTest, ShadowsAreScreenedAndLightsAreNot) {
    const GrayRange shadow = flatResult(90);
    EXPECT_LT(shadow.darkest + 25, shadow.lightest);
    const GrayRange light = flatResult(220);
    EXPECT_EQ(light.darkest, light.lightest);
}

TEST(ComicEffectTest, WhiteStaysWhiteAndBlackStaysBlack) {
    EXPECT_EQ(flatResult(255).darkest, 255);
    EXPECT_EQ(flatResult(0).lightest, 0);
}

TEST(ComicEffectTest, AnEdgeIsInkedAndEvenAreasAreNot) {
    const QImage halves = grayPicture({80, 60}, [](int x, int) { return x < 40 ? 170 : 250; });
    const QImage drawn = comicEffect(halves);
    int darkest = 255;
    for (int x = 34; x < 46; ++x)
        darkest = qMin(darkest, qGray(drawn.pixel(x, 30)));
    EXPECT_LT(darkest, 60);
    EXPECT_GT(qGray(drawn.pixel(20, 30)), 140);
    EXPECT_GT(qGray(drawn.pixel(60, 30)), 230);
}

TEST(ComicEffectTest, TheSilhouetteIsInked) {
    const QImage drawn = comicEffect(flatGray({60, 60}, 220));
    for (int i = 10; i < 50; ++i) {
        EXPECT_LT(qGray(drawn.pixel(i, 1)), 40) << i;
        EXPECT_LT(qGray(drawn.pixel(58, i)), 40) << i;
    }
}

TEST(ComicEffectTest, ColoursBecomeStronger) {
    QImage image(60, 60, QImage::Format_RGBA8888);
    image.fill(QColor(220, 160, 160));
    const QRgb pixel = comicEffect(image).pixel(30, 30);
    EXPECT_GT(qRed(pixel) - qGreen(pixel), 60);
    EXPECT_NEAR(qGreen(pixel), qBlue(pixel), 3); // the hue stays
}

TEST(ComicEffectTest, TheLayerIsOpaqueAndHasThePicturesSizeAndColourSpace) {
    QImage image(33, 21, QImage::Format_RGBA8888);
    image.fill(QColor(200, 10, 30, 128));
    image.setPixel(0, 0, 0);
    image.setColorSpace(QColorSpace::DisplayP3);
    const QImage drawn = comicEffect(image);
    EXPECT_EQ(drawn.size(), image.size());
    EXPECT_EQ(drawn.format(), QImage::Format_RGBA8888);
    EXPECT_EQ(drawn.colorSpace(), image.colorSpace());
    for (int y = 0; y < 21; ++y)
        for (int x = 0; x < 33; ++x)
            ASSERT_EQ(qAlpha(drawn.pixel(x, y)), 255);
}

TEST(ComicEffectTest, NoPictureGivesNone) {
    EXPECT_TRUE(comicEffect({}).isNull());
}

} // namespace

} // namespace stillwick
