#include "Imaging/AlphaMask.h"

#include <gtest/gtest.h>

#include <QColorSpace>

using stillwick::withAlphaOf;

namespace {

QImage onePixel(QRgb color, QImage::Format format = QImage::Format_RGBA8888) {
    QImage image(1, 1, format);
    image.setPixel(0, 0, color);
    return image;
}

} // namespace

TEST(AlphaMaskTest, TheColourComesFromOneAndTheAlphaFromTheOther) {
    const QImage result = withAlphaOf(onePixel(qRgb(10, 20, 30)), onePixel(qRgba(1, 2, 3, 77)));
    EXPECT_EQ(result.format(), QImage::Format_RGBA8888);
    const uchar* bytes = result.constScanLine(0);
    EXPECT_EQ(bytes[0], 10);
    EXPECT_EQ(bytes[1], 20);
    EXPECT_EQ(bytes[2], 30);
    EXPECT_EQ(bytes[3], 77);
}

TEST(AlphaMaskTest, AllFourBytesAreZeroWhereNothingIsVisible) {
    const QImage result = withAlphaOf(onePixel(qRgb(10, 20, 30)), onePixel(qRgba(1, 2, 3, 0)));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(result.constScanLine(0)[i], 0);
}

TEST(AlphaMaskTest, TheSubjectsColourSpaceStaysAndThePicturesGivenToo) {
    QImage subject = onePixel(qRgba(1, 2, 3, 77));
    subject.setColorSpace(QColorSpace::DisplayP3);
    const QImage before = subject.copy();
    const QImage result = withAlphaOf(onePixel(qRgb(10, 20, 30)), subject);
    EXPECT_EQ(result.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    EXPECT_EQ(subject, before);
}

TEST(AlphaMaskTest, PicturesOfDifferentSizesGiveNone) {
    const QImage wide(2, 1, QImage::Format_RGBA8888);
    EXPECT_TRUE(withAlphaOf(wide, onePixel(0)).isNull());
    EXPECT_TRUE(withAlphaOf({}, onePixel(0)).isNull());
    EXPECT_TRUE(withAlphaOf(onePixel(0), {}).isNull());
    EXPECT_TRUE(withAlphaOf({}, {}).isNull());
}
