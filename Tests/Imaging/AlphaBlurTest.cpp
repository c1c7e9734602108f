#include "Imaging/AlphaBlur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using stillwick::gaussianBlurred;

namespace {

/// Full on the left, empty from `edge` on.
QImage step(int width, int height, int edge) {
    QImage image(width, height, QImage::Format_Alpha8);
    for (int y = 0; y < height; ++y) {
        std::fill_n(image.scanLine(y), width, uchar{0});
        std::fill_n(image.scanLine(y), edge, uchar{255});
    }
    return image;
}

/// What a Gaussian, sampled at whole pixels, makes of a step whose first empty pixel lies
/// `distance` pixels to the right.
double blurredStep(int distance, double sigma) {
    double all = 0;
    double full = 0;
    const int far = int(10 * sigma) + 10;
    for (int k = -far; k <= far; ++k) {
        const double tap = std::exp(-k * k / (2 * sigma * sigma));
        all += tap;
        full += k < distance ? tap : 0;
    }
    return 255 * full / all;
}

} // namespace

TEST(AlphaBlurTest, AnEdgeIsBlurredByThatDeviation) {
    for (const double sigma : {0.8, 1.5, 3.0, 7.9, 8.0, 10.0, 15.9, 25.0, 60.0}) {
        const QImage blurred = gaussianBlurred(step(600, 5, 300), sigma);
        for (int x = 0; x < 600; ++x) {
            // The kernel ends at three deviations: 0.3 % of it is missing.
            ASSERT_NEAR(blurred.constScanLine(2)[x], blurredStep(300 - x, sigma), 2.5)
                << "sigma " << sigma << " at " << x;
        }
    }
}

TEST(AlphaBlurTest, ThePlanesBordersDoNotFade) {
    QImage full(40, 30, QImage::Format_Alpha8);
    for (int y = 0; y < 30; ++y)
        std::fill_n(full.scanLine(y), 40, uchar{255});
    for (const double sigma : {0.5, 5.0, 50.0, 1e9})
        EXPECT_EQ(gaussianBlurred(full, sigma), full) << sigma;
}

TEST(AlphaBlurTest, BothDirectionsAreBlurredAlike) {
    const QImage across = gaussianBlurred(step(90, 90, 45), 7);
    const QImage down = gaussianBlurred(step(90, 90, 45)
                                            .transformed(QTransform().rotate(90))
                                            .convertToFormat(QImage::Format_Alpha8),
                                        7);
    for (int i = 0; i < 90; ++i)
        EXPECT_EQ(across.constScanLine(45)[i], down.constScanLine(i)[45]);
}

TEST(AlphaBlurTest, ADeviationBeyondMeasureGivesTheMean) {
    const QImage blurred = gaussianBlurred(step(64, 64, 32), 1e12);
    EXPECT_NEAR(blurred.constScanLine(0)[0], 127.5, 16);
    EXPECT_NEAR(blurred.constScanLine(63)[63], 127.5, 16);
}

TEST(AlphaBlurTest, ASinglePixelStays) {
    QImage image(1, 1, QImage::Format_Alpha8);
    image.scanLine(0)[0] = 77;
    EXPECT_EQ(gaussianBlurred(image, 3).constScanLine(0)[0], 77);
    EXPECT_EQ(gaussianBlurred(image, 300).constScanLine(0)[0], 77);
}
