#include "HandmadeFrame.h"

#include "Media/PictureConverter.h"

#include <gtest/gtest.h>

#include <QRect>

#include <algorithm>
#include <functional>
#include <random>

namespace stillwick::testing {

namespace {

constexpr int width = 128;
constexpr int height = 64;
constexpr int dark = 40;
constexpr int light = 200;

enum class Fields { Progressive, TopFirst, BottomFirst };

/// A picture without colour whose luma is given by place and field (0 top, 1 bottom).
QImage shown(Fields fields, const std::function<int(int x, int y, int field)>& luma,
             AVPixelFormat format = AV_PIX_FMT_YUV420P) {
    HandmadeFrame frame(format, width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            frame.set(0, x, y, luma(x, y, y % 2));
    }
    frame.fill(1, 128);
    frame.fill(2, 128);
    frame.tags().interlaced_frame = fields == Fields::Progressive ? 0 : 1;
    frame.tags().top_field_first = fields == Fields::TopFirst ? 1 : 0;
    return PictureConverter().convert(frame.video());
}

/// A bar 16 wide that has moved by 12 between the fields.
int movingBar(int x, int /*y*/, int field) {
    const int left = field == 0 ? 40 : 52;
    return x >= left && x < left + 16 ? light : dark;
}

int barOf(int x, int field) {
    return movingBar(x, 0, field);
}

/// Pixels that differ from both rows next to them in the same direction, and strongly.
int combs(const QImage& image) {
    int count = 0;
    for (int y = 1; y + 1 < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int here = storedAt(image, x, y).g;
            const int above = here - storedAt(image, x, y - 1).g;
            const int below = here - storedAt(image, x, y + 1).g;
            count += std::min(above, below) > 20 || std::max(above, below) < -20 ? 1 : 0;
        }
    }
    return count;
}

TEST(DeinterlacingTest, AMovingBarShowsTheCombThatIsToGo) {
    EXPECT_GT(combs(shown(Fields::Progressive, movingBar)), 500);
}

TEST(DeinterlacingTest, AMovingBarStandsWhereTheFirstFieldHasIt) {
    const auto atField = [](int field) {
        return [field](int x, int, int) {
            return barOf(x, field);
        };
    };
    const QImage top = shown(Fields::TopFirst, movingBar);
    EXPECT_EQ(combs(top), 0);
    EXPECT_EQ(distance(top, shown(Fields::Progressive, atField(0))), 0);
    const QImage bottom = shown(Fields::BottomFirst, movingBar);
    EXPECT_EQ(combs(bottom), 0);
    EXPECT_EQ(distance(bottom, shown(Fields::Progressive, atField(1))), 0);
}

TEST(DeinterlacingTest, TheRowsOfTheFirstFieldStayAsTheyAre) {
    std::mt19937 random(3);
    const auto noise = [&random](int, int, int) {
        return int(16 + random() % 220);
    };
    const QImage progressive = shown(Fields::Progressive, noise);
    random.seed(3);
    const QImage interlaced = shown(Fields::TopFirst, noise);
    for (int y = 0; y < height; y += 2) {
        for (int x = 0; x < width; ++x)
            ASSERT_EQ(storedAt(interlaced, x, y), storedAt(progressive, x, y)) << x << ' ' << y;
    }
}

/// What stands still in both fields: stripes of one column, a ramp with grain in which a line of
/// one row lies, a slope.
int stillDetail(int x, int y, int /*field*/) {
    if (y < 16)
        return x % 2 == 0 ? dark : light;
    if (y == 30)
        return light;
    if (y < 44)
        return 40 + x / 2 + (x * 7 + y * 3) % 5;
    return x + 2 * y > 160 ? light : dark;
}

TEST(DeinterlacingTest, FineDetailThatStandsStillIsNotTouched) {
    const QImage progressive = shown(Fields::Progressive, stillDetail);
    EXPECT_EQ(distance(shown(Fields::TopFirst, stillDetail), progressive), 0);
    EXPECT_EQ(distance(shown(Fields::BottomFirst, stillDetail), progressive), 0);
}

TEST(DeinterlacingTest, WhatStandsStillBesideAMovementIsNotTouched) {
    const auto both = [](int x, int y, int field) {
        return x < width / 2 + 24 ? movingBar(x, y, field) : stillDetail(x, y, field);
    };
    const QImage progressive = shown(Fields::Progressive, both);
    const QImage interlaced = shown(Fields::TopFirst, both);
    const QRect still(width / 2 + 32, 0, width / 2 - 32, height);
    EXPECT_EQ(distance(interlaced.copy(still), progressive.copy(still)), 0);
}

TEST(DeinterlacingTest, ColourOfOneFieldDoesNotStainTheOther) {
    // 4:2:0 fields have chroma rows of their own: the top field is blue, the bottom field red.
    HandmadeFrame frame(AV_PIX_FMT_YUV420P, width, height);
    frame.fill(0, 100);
    for (int y = 0; y < height / 2; ++y) {
        frame.fill(1, QRect(0, y, width / 2, 1), y % 2 == 0 ? 200 : 100);
        frame.fill(2, QRect(0, y, width / 2, 1), y % 2 == 0 ? 100 : 200);
    }
    frame.tags().interlaced_frame = 1;
    frame.tags().top_field_first = 1;
    const QImage image = PictureConverter().convert(frame.video());
    // BT.601: Y 84 / 219, Cb 72 / 224, Cr -28 / 224: R 0.208, G 0.362, B 0.953.
    const Stored blue{53, 92, 243, 255};
    for (int y = 0; y < height; y += 2)
        EXPECT_LE(distance(storedAt(image, 60, y), blue), 2) << y;
}

TEST(DeinterlacingTest, ASharpEdgeOfARealHeightKeepsIt) {
    // A bright block whose upper edge lies between two rows: no comb, so nothing may move.
    const auto block = [](int x, int y, int) {
        return y >= 23 && y < 47 && x > 30 && x < 90 ? light : dark;
    };
    EXPECT_EQ(distance(shown(Fields::TopFirst, block), shown(Fields::Progressive, block)), 0);
}

} // namespace

} // namespace stillwick::testing
