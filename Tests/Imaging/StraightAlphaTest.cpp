#include "Imaging/StraightAlpha.h"

#include <gtest/gtest.h>

#include <QColorSpace>

#include <array>
#include <cmath>

using stillwick::withStraightAlpha;

TEST(StraightAlphaTest, EveryPremultipliedColourBecomesTheNearestStraightOne) {
    for (int alpha = 1; alpha < 256; ++alpha) {
        QImage row(alpha + 1, 1, QImage::Format_RGBA8888_Premultiplied);
        for (int color = 0; color <= alpha; ++color)
            row.setPixel(color, 0, qRgba(color, color, color, alpha));
        const QImage straight = withStraightAlpha(row);
        ASSERT_EQ(straight.format(), QImage::Format_RGBA8888);
        for (int color = 0; color <= alpha; ++color) {
            const uchar* pixel = straight.constScanLine(0) + 4 * color;
            ASSERT_EQ(pixel[0], std::lround(color * 255.0 / alpha)) << color << " of " << alpha;
            ASSERT_EQ(pixel[3], alpha);
        }
    }
}

TEST(StraightAlphaTest, AStraightPictureIsTheVeryOne) {
    QImage image(3, 2, QImage::Format_RGBA8888);
    image.fill(QColor(10, 20, 30, 40));
    EXPECT_EQ(withStraightAlpha(image).constBits(), image.constBits());
}

TEST(StraightAlphaTest, ThePremultipliedPictureGivenStaysAsItWas) {
    QImage image(1, 1, QImage::Format_RGBA8888_Premultiplied);
    image.setPixel(0, 0, qRgba(64, 32, 16, 128));
    const QImage before = image.copy();
    static_cast<void>(withStraightAlpha(image));
    EXPECT_EQ(image, before);
}

TEST(StraightAlphaTest, TheColourSpaceStays) {
    for (const auto format : {QImage::Format_ARGB32_Premultiplied, QImage::Format_RGB32}) {
        QImage image(1, 1, format);
        image.fill(Qt::red);
        image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
        const QImage straight = withStraightAlpha(image);
        EXPECT_EQ(straight.colorSpace(), QColorSpace(QColorSpace::AdobeRgb));
        EXPECT_EQ(straight.pixelColor(0, 0), QColor(Qt::red));
    }
}

TEST(StraightAlphaTest, NoPictureGivesNone) {
    EXPECT_TRUE(withStraightAlpha({}).isNull());
}
