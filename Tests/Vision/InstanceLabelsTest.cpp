#include "Vision/InstanceLabels.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace stillwick {
namespace {

cv::Mat1b emptyMask() {
    return cv::Mat1b(200, 300, uchar{0});
}

void addDisc(cv::Mat1b& mask, cv::Point middle, int radius) {
    cv::circle(mask, middle, radius, cv::Scalar(255), cv::FILLED);
}

TEST(InstanceLabelsTest, AnEmptyMaskHasNoInstance) {
    const InstanceLabels instances = instancesOf(emptyMask(), 32);
    EXPECT_EQ(instances.count, 0);
    EXPECT_EQ(cv::countNonZero(instances.labels), 0);
}

TEST(InstanceLabelsTest, SeparateDiscsAreNumberedFromLeftToRight) {
    cv::Mat1b mask = emptyMask();
    addDisc(mask, {220, 60}, 20);
    addDisc(mask, {60, 120}, 40);
    const InstanceLabels instances = instancesOf(mask, 32);
    ASSERT_EQ(instances.count, 2);
    EXPECT_EQ(instances.labels(120, 60), 1);
    EXPECT_EQ(instances.labels(60, 220), 2);
}

TEST(InstanceLabelsTest, OneAboveTheOtherIsNumberedFromTheTop) {
    cv::Mat1b mask = emptyMask();
    addDisc(mask, {150, 150}, 20);
    addDisc(mask, {150, 50}, 20);
    const InstanceLabels instances = instancesOf(mask, 32);
    ASSERT_EQ(instances.count, 2);
    EXPECT_EQ(instances.labels(50, 150), 1);
    EXPECT_EQ(instances.labels(150, 150), 2);
}

// Two discs of radius 40 whose middles are 70 apart: the waist is half √(40² − 35²)·2 = 19.4 wide,
// less than three quarters of 40.
TEST(InstanceLabelsTest, TouchingDiscsArePartedAtTheWaist) {
    cv::Mat1b mask = emptyMask();
    addDisc(mask, {100, 100}, 40);
    addDisc(mask, {170, 100}, 40);
    const InstanceLabels instances = instancesOf(mask, 32);
    ASSERT_EQ(instances.count, 2);
    EXPECT_EQ(instances.labels(100, 100), 1);
    EXPECT_EQ(instances.labels(100, 130), 1);
    EXPECT_EQ(instances.labels(100, 140), 2);
    EXPECT_EQ(instances.labels(100, 170), 2);
    EXPECT_EQ(cv::countNonZero(instances.labels), cv::countNonZero(mask));
}

// Middles 30 apart: the waist is √(40² − 15²) = 37 high, more than three quarters of 40.
TEST(InstanceLabelsTest, DiscsThatLargelyOverlapStayOne) {
    cv::Mat1b mask = emptyMask();
    addDisc(mask, {100, 100}, 40);
    addDisc(mask, {130, 100}, 40);
    EXPECT_EQ(instancesOf(mask, 32).count, 1);
}

TEST(InstanceLabelsTest, BeyondTheMostTheSmallestAreLeftOut) {
    cv::Mat1b mask = emptyMask();
    addDisc(mask, {40, 100}, 10);
    addDisc(mask, {120, 100}, 30);
    addDisc(mask, {220, 100}, 20);
    const InstanceLabels instances = instancesOf(mask, 2);
    ASSERT_EQ(instances.count, 2);
    EXPECT_EQ(instances.labels(100, 40), 0);
    EXPECT_EQ(instances.labels(100, 120), 1);
    EXPECT_EQ(instances.labels(100, 220), 2);
}

// 300×200: a speck is below 120 pixels, or below 5 % of the largest piece.
TEST(InstanceLabelsTest, SpecksGoAndPinHolesClose) {
    cv::Mat1b mask = emptyMask();
    addDisc(mask, {150, 100}, 50); // about 7850 pixels, 5 % are 392
    addDisc(mask, {30, 30}, 8);    // about 200
    addDisc(mask, {270, 30}, 15);  // about 700
    mask(cv::Rect(148, 98, 5, 5)).setTo(0);
    const cv::Mat1b clean = withoutSpecks(mask);
    EXPECT_EQ(clean(30, 30), 0);
    EXPECT_EQ(clean(30, 270), 255);
    EXPECT_EQ(clean(100, 150), 255);
}

TEST(InstanceLabelsTest, AHoleThatIsNoPinHoleStays) {
    cv::Mat1b mask = emptyMask();
    addDisc(mask, {150, 100}, 50);
    mask(cv::Rect(140, 90, 20, 20)).setTo(0);
    EXPECT_EQ(withoutSpecks(mask)(100, 150), 0);
}

TEST(InstanceLabelsTest, SpreadLabelsReachEveryPixel) {
    InstanceLabels instances{cv::Mat1b(4, 8, uchar{0}), 2};
    instances.labels(1, 1) = 1;
    instances.labels(2, 6) = 2;
    const cv::Mat1b large = spreadLabels(instances, {80, 40});
    EXPECT_EQ(cv::countNonZero(large), 80 * 40);
    EXPECT_EQ(large(0, 0), 1);
    EXPECT_EQ(large(39, 79), 2);
}

} // namespace
} // namespace stillwick
