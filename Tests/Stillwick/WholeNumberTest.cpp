#include "Stillwick/WholeNumber.h"

#include <gtest/gtest.h>

#include <QByteArray>

namespace stillwick {
namespace {

TEST(WholeNumberTest, PlainDigitsAreExactOver64Bits) {
    EXPECT_EQ(wholeNumber("0"), 0);
    EXPECT_EQ(wholeNumber("-0"), 0);
    EXPECT_EQ(wholeNumber("9223372036854775807"), 9223372036854775807);
    EXPECT_EQ(wholeNumber("-9223372036854775808"), -9223372036854775807 - 1);
    EXPECT_EQ(wholeNumber("9223372036854775808"), std::nullopt);
    EXPECT_EQ(wholeNumber("-9223372036854775809"), std::nullopt);
    EXPECT_EQ(wholeNumber("100000000000000000000000000"), std::nullopt);
}

TEST(WholeNumberTest, PointsAndExponentsAreWorkedOutWithoutRounding) {
    EXPECT_EQ(wholeNumber("12.0"), 12);
    EXPECT_EQ(wholeNumber("-1.2e1"), -12);
    EXPECT_EQ(wholeNumber("1200e-2"), 12);
    EXPECT_EQ(wholeNumber("12.50E+1"), 125);
    EXPECT_EQ(wholeNumber("0.00120e4"), 12);
    EXPECT_EQ(wholeNumber("1e18"), 1000000000000000000);
    EXPECT_EQ(wholeNumber("9223372036854775807.0"), 9223372036854775807);
    EXPECT_EQ(wholeNumber("922337203685477580.7e1"), 9223372036854775807);
    EXPECT_EQ(wholeNumber("92233720368547758080e-1"), std::nullopt);
    EXPECT_EQ(wholeNumber("9007199254740993.0"), 9007199254740993); // no double has this value
    EXPECT_EQ(wholeNumber("1e19"), std::nullopt);
}

TEST(WholeNumberTest, AFractionIsNone) {
    for (const char* number : {"0.5", "1.25e1", "12e-1", "1e-1", "9223372036854775806.5"})
        EXPECT_EQ(wholeNumber(number), std::nullopt) << number;
}

TEST(WholeNumberTest, ZeroIsZeroAndTheRestIsNoneWhateverTheExponent) {
    EXPECT_EQ(wholeNumber("0.000"), 0);
    EXPECT_EQ(wholeNumber("-0e99999999999999999999999"), 0);
    EXPECT_EQ(wholeNumber("0e-99999999999999999999999"), 0);
    EXPECT_EQ(wholeNumber("1e99999999999999999999999"), std::nullopt);
    EXPECT_EQ(wholeNumber("1e-99999999999999999999999"), std::nullopt);
    EXPECT_EQ(wholeNumber("1" + QByteArray(1'000'000, '0') + "e-1000000"), 1);
    EXPECT_EQ(wholeNumber("0." + QByteArray(1'000'000, '0') + "1e1000001"), 1);
}

} // namespace
} // namespace stillwick
