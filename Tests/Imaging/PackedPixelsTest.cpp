// Packing pixels without loss.
#include "TestPictures.h"

#include "Imaging/PackedPixels.h"

#include <gtest/gtest.h>

namespace stillwick::testing {

namespace {

QImage noisyPicture(QSize size, QImage::Format format) {
    Noise noise;
    QImage image(size, format);
    for (int y = 0; y < image.height(); ++y)
        for (int i = 0; i < image.width() * 4; ++i)
            image.scanLine(y)[i] = uchar(noise.next(127) + 128);
    return image;
}

QImage unpacked(const QByteArray& packed, const QImage& like) {
    QImage image(like.size(), like.format());
    EXPECT_TRUE(unpackPixels(packed, image));
    return image;
}

TEST(PackedPixels, EveryByteComesBackInEveryFormatOfFourBytes) {
    for (const auto format :
         {QImage::Format_RGBA8888, QImage::Format_RGBA8888_Premultiplied, QImage::Format_ARGB32,
          QImage::Format_RGBX8888, QImage::Format_RGB32}) {
        for (const QSize size : {QSize(1, 1), QSize(7, 1), QSize(1, 9), QSize(61, 37)}) {
            const QImage image = noisyPicture(size, format);
            const QImage back = unpacked(packedPixels(image), image);
            for (int y = 0; y < image.height(); ++y)
                EXPECT_EQ(std::memcmp(back.constScanLine(y), image.constScanLine(y),
                                      std::size_t(image.width()) * 4),
                          0);
        }
    }
}

TEST(PackedPixels, ColoursUnderFullTransparencyComeBackToo) {
    QImage image(5, 5, QImage::Format_RGBA8888);
    image.fill(QColor(200, 100, 50, 0));
    EXPECT_EQ(unpacked(packedPixels(image), image).pixelColor(2, 2), QColor(200, 100, 50, 0));
}

TEST(PackedPixels, AnEmptyCutOutTakesNextToNothing) {
    QImage image(1920, 1080, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    EXPECT_LT(packedPixels(image).size(), 1920 * 1080 * 4 / 100);
}

TEST(PackedPixels, ASmoothPictureTakesLessThanAThird) {
    const QImage image =
        grayPicture(QSize(640, 360), [](int x, int y) { return (x / 3 + y / 2) % 256; });
    EXPECT_LT(packedPixels(image).size() * 3, image.sizeInBytes());
}

TEST(PackedPixels, DamagedBytesAreRefused) {
    const QImage image = noisyPicture({32, 32}, QImage::Format_RGBA8888);
    const QByteArray packed = packedPixels(image);
    QImage back(image.size(), image.format());
    EXPECT_FALSE(unpackPixels(packed.left(packed.size() / 2), back));
    EXPECT_FALSE(unpackPixels({}, back));
    EXPECT_FALSE(unpackPixels(QByteArray(100, char(0xff)), back));
    QImage larger(33, 32, image.format());
    EXPECT_FALSE(unpackPixels(packed, larger)) << "pixels of another size";
}

} // namespace

} // namespace stillwick::testing
