#include "Stillwick/TimeText.h"

#include <gtest/gtest.h>

namespace {

using namespace stillwick;

void expectTime(const char* text, std::int64_t value, std::int32_t timescale) {
    const auto time = parseTime(QString::fromUtf8(text));
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(time->value, value) << text;
    EXPECT_EQ(time->timescale, timescale) << text;
}

TEST(TimeText, SecondsKeepEveryDecimalThatIsWritten) {
    expectTime("0", 0, 1);
    expectTime("83.5", 835, 10);
    expectTime("83,5", 835, 10);
    expectTime("0.123456789", 123456789, 1'000'000'000);
    expectTime("1.0", 10, 10);
}

TEST(TimeText, DisplayTimesCountMinutesAndHours) {
    expectTime("01:23.500", 83500, 1000);
    expectTime("75:00.000", 4500000, 1000);
    expectTime("1:02:03.250", 3723250, 1000);
    expectTime("1:00:00", 3600, 1);
}

TEST(TimeText, ExactPairsStandAsTheyAre) {
    expectTime("41750/500", 41750, 500);
    expectTime("0/1", 0, 1);
}

TEST(TimeText, AnythingElseIsNoTime) {
    for (const char* text : {"",
                             "abc",
                             "-1",
                             "1.",
                             ".5",
                             "1:60",
                             "1:60:00",
                             "1:2:3:4",
                             "1/0",
                             "1/-2",
                             "1/2147483648",
                             "5/2/1",
                             "1e3",
                             " 1",
                             "1.0123456789",
                             "9223372036854775808/1",
                             "9999999999.999999999",
                             "１",
                             "83.5\n",
                             "1/2\n"})
        EXPECT_FALSE(parseTime(QString::fromUtf8(text))) << text;
}

} // namespace
