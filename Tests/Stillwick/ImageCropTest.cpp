#include "Stillwick/ImageCrop.h"

#include <gtest/gtest.h>

#include <QColorSpace>

namespace stillwick {
namespace {

QImage transparent(QSize size) {
    QImage image(size, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::transparent);
    image.setColorSpace(QColorSpace(QColorSpace::SRgb));
    return image;
}

// A white pixel of that opacity, premultiplied.
void setAlpha(QImage& image, int x, int y, uchar alpha) {
    std::fill_n(image.scanLine(y) + 4 * x, 4, alpha);
}

TEST(ImageCropTest, TheBoxHoldsEveryVisiblePixelAndNoMore) {
    QImage image = transparent({10, 8});
    setAlpha(image, 2, 5, 255);
    setAlpha(image, 6, 1, 100);
    setAlpha(image, 4, 3, 9);
    const QImage trimmed = ImageCrop::trimmedToContent(image);
    EXPECT_EQ(trimmed, image.copy(2, 1, 5, 5));
    EXPECT_EQ(trimmed.size(), QSize(5, 5));
    EXPECT_EQ(trimmed.colorSpace(), image.colorSpace());
    EXPECT_EQ(trimmed.format(), image.format());
}

TEST(ImageCropTest, AlphaOfEightDoesNotCountAndNineDoes) {
    QImage image = transparent({4, 4});
    setAlpha(image, 0, 0, 8);
    setAlpha(image, 3, 2, 9);
    const QImage trimmed = ImageCrop::trimmedToContent(image);
    EXPECT_EQ(trimmed.size(), QSize(1, 1));
    EXPECT_EQ(qAlpha(trimmed.pixel(0, 0)), 9);
}

TEST(ImageCropTest, NothingAboveTheThresholdLeavesTheImage) {
    QImage image = transparent({4, 4});
    setAlpha(image, 1, 1, 8);
    EXPECT_EQ(ImageCrop::trimmedToContent(image), image);
    EXPECT_EQ(ImageCrop::trimmedToContent(transparent({3, 5})).size(), QSize(3, 5));
}

TEST(ImageCropTest, TheThresholdIsStrictAtBothEnds) {
    QImage image = transparent({5, 1});
    setAlpha(image, 1, 0, 1);
    setAlpha(image, 3, 0, 255);
    EXPECT_EQ(ImageCrop::trimmedToContent(image, 0).size(), QSize(3, 1));
    EXPECT_EQ(ImageCrop::trimmedToContent(image, 254).size(), QSize(1, 1));
    EXPECT_EQ(ImageCrop::trimmedToContent(image, 255), image);
}

TEST(ImageCropTest, AnOpaqueImageStaysAsItIs) {
    QImage one(1, 1, QImage::Format_RGBA8888_Premultiplied);
    one.fill(Qt::red);
    EXPECT_EQ(ImageCrop::trimmedToContent(one), one);
    QImage opaque(7, 3, QImage::Format_RGB32);
    opaque.fill(Qt::blue);
    EXPECT_EQ(ImageCrop::trimmedToContent(opaque), opaque);
}

TEST(ImageCropTest, AnEmptyImageComesBackEmpty) {
    EXPECT_TRUE(ImageCrop::trimmedToContent(QImage()).isNull());
}

TEST(ImageCropTest, OtherFormatsAreReadByTheirAlphaAndKept) {
    QImage image(6, 6, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    image.setPixelColor(2, 4, QColor(10, 20, 30, 200));
    const QImage trimmed = ImageCrop::trimmedToContent(image);
    EXPECT_EQ(trimmed.size(), QSize(1, 1));
    EXPECT_EQ(trimmed.format(), QImage::Format_ARGB32);
    EXPECT_EQ(trimmed.pixelColor(0, 0), QColor(10, 20, 30, 200));
}

// Row 0 is the top row: nothing is turned upside down.
TEST(ImageCropTest, TheTopStaysAtTheTop) {
    QImage image = transparent({3, 9});
    setAlpha(image, 1, 1, 50);
    setAlpha(image, 1, 3, 200);
    const QImage trimmed = ImageCrop::trimmedToContent(image);
    EXPECT_EQ(qAlpha(trimmed.pixel(0, 0)), 50);
    EXPECT_EQ(qAlpha(trimmed.pixel(0, 2)), 200);
}

} // namespace
} // namespace stillwick
