// Pictures that need not be in memory, as values.
#include "Stillwick/StillPicture.h"

#include <gtest/gtest.h>

namespace stillwick::testing {

namespace {

QImage halves(QSize size) {
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(QColor(200, 40, 40));
    for (int y = 0; y < size.height(); ++y)
        for (int x = size.width() / 2; x < size.width(); ++x)
            image.setPixelColor(x, y, QColor(0, 0, 0, 0));
    return image;
}

TEST(StillPicture, NoPictureIsNullAndEmpty) {
    for (const StillPicture& none : {StillPicture(), StillPicture(QImage())}) {
        EXPECT_TRUE(none.isNull());
        EXPECT_TRUE(none.image().isNull());
        EXPECT_TRUE(none.small().isNull());
        EXPECT_TRUE(none.size().isEmpty());
    }
}

TEST(StillPicture, ABitmapReadsAsTheVeryBitmap) {
    const QImage image = halves({640, 360});
    const StillPicture picture = image;
    EXPECT_EQ(picture.size(), QSize(640, 360));
    EXPECT_EQ(picture.image(), image);
    EXPECT_EQ(picture.image().format(), QImage::Format_RGBA8888);
}

TEST(StillPicture, TheSmallOneFitsTheBoxAndKeepsProportions) {
    EXPECT_EQ(StillPicture(halves({1920, 1080})).small().size(), QSize(192, 108));
    EXPECT_EQ(StillPicture(halves({1080, 1920})).small().size(), QSize(60, 108));
    EXPECT_EQ(StillPicture(halves({4000, 10})).small().size(), QSize(192, 1));
}

TEST(StillPicture, ASmallPictureIsNotEnlarged) {
    const QImage image = halves({100, 40});
    EXPECT_EQ(StillPicture(image).small(), image);
}

TEST(StillPicture, TransparencyStaysInTheSmallOneWithoutAHalo) {
    const QImage small = StillPicture(halves({1920, 1080})).small();
    EXPECT_EQ(small.pixelColor(10, 50), QColor(200, 40, 40));
    EXPECT_EQ(small.pixelColor(180, 50).alpha(), 0);
    for (int x = 0; x < small.width(); ++x) {
        const QColor color = small.pixelColor(x, 50);
        if (color.alpha() > 40) {
            EXPECT_NEAR(color.red(), 200, 4) << x; // no dark fringe
        }
    }
}

} // namespace

} // namespace stillwick::testing
