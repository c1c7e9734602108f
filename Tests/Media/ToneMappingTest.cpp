#include "HandmadeFrame.h"

#include "Media/PictureConverter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace stillwick::testing {

namespace {

// 10 bits, limited range: black at 64, white at 940.
constexpr int black = 64;
constexpr int white = 940;

int codeOf(double signal) {
    return int(std::lround(black + signal * (white - black)));
}

/// SMPTE ST 2084: the signal of a luminance in cd/m².
double perceptualQuantizer(double luminance) {
    constexpr double m1 = 2610.0 / 16384;
    constexpr double m2 = 2523.0 / 4096 * 128;
    constexpr double c1 = 3424.0 / 4096;
    constexpr double c2 = 2413.0 / 4096 * 32;
    constexpr double c3 = 2392.0 / 4096 * 32;
    const double power = std::pow(luminance / 10000, m1);
    return std::pow((c1 + c2 * power) / (1 + c3 * power), m2);
}

Stored shown(AVColorTransferCharacteristic transfer, int y, int cb = 512, int cr = 512,
             const TrackDescription& track = {}) {
    HandmadeFrame frame(AV_PIX_FMT_YUV420P10, 32, 32);
    frame.tags().color_trc = transfer;
    frame.tags().colorspace = AVCOL_SPC_BT2020_NCL;
    frame.tags().color_primaries = AVCOL_PRI_BT2020;
    frame.tags().color_range = AVCOL_RANGE_MPEG;
    frame.fill(0, y);
    frame.fill(1, cb);
    frame.fill(2, cr);
    return storedAt(PictureConverter().convert(frame.video(track)), 16, 16);
}

Stored shownPq(double luminance, const TrackDescription& track = {}) {
    return shown(AVCOL_TRC_SMPTE2084, codeOf(perceptualQuantizer(luminance)), 512, 512, track);
}

class ToneMappingTest : public ::testing::TestWithParam<AVColorTransferCharacteristic> {};

TEST_P(ToneMappingTest, GreyStaysGrey) {
    for (int y = black; y <= white; y += 12) {
        const Stored color = shown(GetParam(), y);
        EXPECT_LE(distance(color, {color.g, color.g, color.g, 255}), 1) << y;
    }
}

TEST_P(ToneMappingTest, BlackStaysBlack) {
    EXPECT_EQ(shown(GetParam(), black), (Stored{0, 0, 0, 255}));
    EXPECT_EQ(shown(GetParam(), 4), (Stored{0, 0, 0, 255}));
}

TEST_P(ToneMappingTest, BrighterIsNeverDarker) {
    int last = -1;
    for (int y = black; y < 1020; y += 4) {
        const Stored color = shown(GetParam(), y);
        EXPECT_GE(color.g, last) << y;
        last = color.g;
    }
    EXPECT_EQ(last, 255);
}

// Red lies outside of what sRGB holds: it loses some, but stays red and no channel wraps round.
TEST_P(ToneMappingTest, StrongColoursKeepTheirHue) {
    const Stored red = shown(GetParam(), 350, 420, 800);
    EXPECT_GT(red.r, 150);
    EXPECT_LT(red.g, 60);
    EXPECT_LT(red.b, 60);
    const Stored blue = shown(GetParam(), 250, 800, 470);
    EXPECT_GT(blue.b, 100);
    EXPECT_GT(blue.b, blue.r + 40);
    EXPECT_GT(blue.b, blue.g + 40);
}

INSTANTIATE_TEST_SUITE_P(Transfers, ToneMappingTest,
                         ::testing::Values(AVCOL_TRC_SMPTE2084, AVCOL_TRC_ARIB_STD_B67),
                         [](const ::testing::TestParamInfo<AVColorTransferCharacteristic>& param) {
                             return param.param == AVCOL_TRC_SMPTE2084 ? "Pq" : "Hlg";
                         });

// ITU-R BT.2408: diffuse white is 203 cd/m², which is 58 % of a PQ signal and 75 % of an HLG one.
TEST(ToneMappingTest, DiffuseWhiteIsBrightButLeavesRoomForLights) {
    EXPECT_NEAR(perceptualQuantizer(203), 0.58, 0.005);
    const int pq = shownPq(203).g;
    EXPECT_GE(pq, 215);
    EXPECT_LE(pq, 250);
    const int hlg = shown(AVCOL_TRC_ARIB_STD_B67, codeOf(0.75)).g;
    EXPECT_GE(hlg, 215);
    EXPECT_LE(hlg, 250);
    EXPECT_NEAR(pq, hlg, 4);
}

// The dark half of diffuse white is left as it is: 50 cd/m² is 50 / 203 of white, in sRGB
// 1.055 * 0.2463^(1 / 2.4) - 0.055 = 0.5335.
TEST(ToneMappingTest, DarkTonesAreShownAsTheyAre) {
    EXPECT_NEAR(shownPq(50).g, 136, 2);
    // 10 / 203 = 0.04926: 1.055 * 0.2851 - 0.055 = 0.2458.
    EXPECT_NEAR(shownPq(10).g, 63, 2);
}

TEST(ToneMappingTest, LightsUpToThePeakAreToldApartAndBeyondAreWhite) {
    EXPECT_LT(shownPq(500).g, shownPq(800).g);
    EXPECT_LT(shownPq(700).g, 255);
    EXPECT_GE(shownPq(1000).g, 254);
    EXPECT_EQ(shownPq(1500).g, 255);
    EXPECT_EQ(shownPq(10000), (Stored{255, 255, 255, 255}));
}

TEST(ToneMappingTest, ADeclaredPeakMovesWhite) {
    TrackDescription bright;
    bright.peakLuminance = 4000;
    EXPECT_LT(shownPq(1000, bright).g, 252);
    EXPECT_EQ(shownPq(4100, bright).g, 255);
    TrackDescription dim;
    dim.peakLuminance = 203;
    EXPECT_GE(shownPq(203, dim).g, 254);
    // 1.055 * 0.5^(1 / 2.4) - 0.055 = 0.7354: with so little to compress nothing is compressed.
    EXPECT_NEAR(shownPq(101.5, dim).g, 188, 2);
}

} // namespace

} // namespace stillwick::testing
