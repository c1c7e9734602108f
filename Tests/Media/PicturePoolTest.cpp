// Bitmaps from a pool are bitmaps like any other, and their memory comes back.
#include "Media/PicturePool.h"

#include <gtest/gtest.h>

#include <QColor>

#include <memory>

namespace stillwick::testing {

namespace {

TEST(PicturePoolTest, GivesABitmapOfTheSizeAskedFor) {
    PicturePool pool;
    QImage image = pool.take(33, 7);
    EXPECT_EQ(image.size(), QSize(33, 7));
    EXPECT_EQ(image.format(), QImage::Format_RGBA8888_Premultiplied);
    image.fill(QColor(1, 2, 3));
    EXPECT_EQ(image.pixelColor(32, 6), QColor(1, 2, 3));
}

TEST(PicturePoolTest, ABitmapHeldIsNotGivenAgain) {
    PicturePool pool;
    QImage first = pool.take(40, 30);
    first.fill(Qt::red);
    QImage second = pool.take(40, 30);
    second.fill(Qt::blue);
    EXPECT_NE(first.constBits(), second.constBits());
    EXPECT_EQ(first.pixelColor(0, 0), QColor(Qt::red));
}

TEST(PicturePoolTest, TheMemoryOfABitmapThatIsGoneIsUsedAgain) {
    PicturePool pool;
    const uchar* memory = nullptr;
    {
        const QImage image = pool.take(40, 30);
        memory = image.constBits();
    }
    const QImage again = pool.take(40, 30);
    EXPECT_EQ(again.constBits(), memory);
}

TEST(PicturePoolTest, ACopyThatIsChangedLeavesTheOtherAlone) {
    PicturePool pool;
    QImage image = pool.take(8, 8);
    image.fill(Qt::red);
    QImage copy = image;
    copy.setPixelColor(0, 0, Qt::blue);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::red));
}

TEST(PicturePoolTest, ABitmapMayOutliveItsPool) {
    auto pool = std::make_unique<PicturePool>();
    QImage image = pool->take(16, 16);
    pool.reset();
    image.fill(Qt::green);
    EXPECT_EQ(image.pixelColor(15, 15), QColor(Qt::green));
}

TEST(PicturePoolTest, WhatIsNoSizeGivesNoBitmap) {
    PicturePool pool;
    EXPECT_TRUE(pool.take(0, 5).isNull());
    EXPECT_TRUE(pool.take(5, -1).isNull());
}

} // namespace

} // namespace stillwick::testing
