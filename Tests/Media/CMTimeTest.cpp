#include "Media/CMTime.h"

#include <gtest/gtest.h>

#include <QSet>

#include <array>
#include <cmath>
#include <limits>
#include <string>

namespace stillwick {

namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int32_t finest = std::numeric_limits<std::int32_t>::max();

/// Field by field, where `==` compares only what a time means.
void expectFields(const CMTime& time, std::int64_t value, std::int32_t timescale,
                  std::uint32_t flags) {
    EXPECT_EQ(time.value, value);
    EXPECT_EQ(time.timescale, timescale);
    EXPECT_EQ(time.flags, flags);
    EXPECT_EQ(time.epoch, 0);
}

std::string display(const CMTime& time) {
    return time.displayString().toStdString();
}

std::string fileName(const CMTime& time) {
    return time.fileNameString().toStdString();
}

TEST(CMTimeTest, ADefaultTimeIsInvalid) {
    EXPECT_FALSE(CMTime{}.isValid());
    EXPECT_FALSE(CMTime{}.isNumeric());
}

TEST(CMTimeTest, ATimeMadeOfAPairIsValidNumericAndOfEpochZero) {
    const CMTime time = CMTime::make(1001, 30000);
    expectFields(time, 1001, 30000, 1U);
    EXPECT_TRUE(time.isNumeric());
}

TEST(CMTimeTest, TimesWithoutAValueAreValidButNotNumeric) {
    for (const CMTime& time :
         {CMTime::indefinite(), CMTime::positiveInfinity(), CMTime::negativeInfinity()}) {
        EXPECT_TRUE(time.isValid());
        EXPECT_FALSE(time.isNumeric());
    }
}

TEST(CMTimeTest, TheZeroTimeShowsZeros) {
    expectFields(CMTime::zero(), 0, 1, 1U);
    EXPECT_EQ(display(CMTime::zero()), "00:00.000");
    EXPECT_EQ(fileName(CMTime::zero()), "00-00-00-000");
}

TEST(CMTimeTest, AnHourShowsAsSixtyMinutesAndNamesFilesWithHours) {
    EXPECT_EQ(display(CMTime::make(372525, 100)), "62:05.250");
    EXPECT_EQ(fileName(CMTime::make(372525, 100)), "01-02-05-250");
    EXPECT_EQ(display(CMTime::make(4500, 1)), "75:00.000");
}

TEST(CMTimeTest, MinutesAndHoursWidenPastTwoDigits) {
    EXPECT_EQ(display(CMTime::make(36000, 1)), "600:00.000");
    EXPECT_EQ(fileName(CMTime::make(360000, 1)), "100-00-00-000");
}

// 3725.042 has no exact double; the fraction of the nearest one is 0.04199999999991633.
TEST(CMTimeTest, MillisecondsComeFromTheFractionInDoublePrecision) {
    EXPECT_EQ(display(CMTime::make(3725042, 1000)), "62:05.041");
    EXPECT_EQ(fileName(CMTime::make(3725042, 1000)), "01-02-05-041");
}

TEST(CMTimeTest, MillisecondsAreTruncatedWithoutACarry) {
    EXPECT_EQ(display(CMTime::make(599999, 10000)), "00:59.999");
    EXPECT_EQ(display(CMTime::make(19996, 10000)), "00:01.999");
    EXPECT_EQ(fileName(CMTime::make(35999999, 10000)), "00-59-59-999");
}

// -1.25 s: the whole seconds go toward zero (-1), the fraction is measured from the floor (-2).
TEST(CMTimeTest, ANegativeTimeTruncatesSecondsAndFloorsTheFraction) {
    EXPECT_EQ(display(CMTime::make(-5, 4)), "00:-1.750");
    EXPECT_EQ(fileName(CMTime::make(-5, 4)), "00-00--1-750");
}

TEST(CMTimeTest, TimesThatAreNotNumbersShowZeros) {
    for (const CMTime& time : {CMTime::invalid(), CMTime::indefinite(), CMTime::positiveInfinity(),
                               CMTime::negativeInfinity(), CMTime::make(0, 0), CMTime::make(5, 0),
                               CMTime{90, 30, CMTime::Valid | CMTime::Indefinite, 0},
                               CMTime{90, 30, CMTime::HasBeenRounded, 0}}) {
        EXPECT_EQ(time.safeSeconds(), 0.0);
        EXPECT_EQ(display(time), "00:00.000");
        EXPECT_EQ(fileName(time), "00-00-00-000");
    }
}

TEST(CMTimeTest, SecondsAreTheQuotientInDoublePrecision) {
    EXPECT_EQ(CMTime::make(1, 4).seconds(), 0.25);
    EXPECT_EQ(CMTime::make(-3, 2).safeSeconds(), -1.5);
    EXPECT_EQ(CMTime::make(3, -2).seconds(), -1.5);
    EXPECT_EQ(CMTime::positiveInfinity().seconds(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(CMTime::negativeInfinity().seconds(), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(CMTime::indefinite().seconds()));
    EXPECT_TRUE(std::isnan(CMTime::invalid().seconds()));
}

// 2^63 s: one more than the largest integer, which is what the largest value becomes as a double.
// 2^63 - 1 = 153722867280912930 * 60 + 7 = 2562047788015215 * 3600 + 30 * 60 + 7
TEST(CMTimeTest, SecondsPastTheLargestIntegerShowAsTheLargest) {
    for (const CMTime& time : {CMTime::make(largest, 1), CMTime::make(smallest, -1)}) {
        EXPECT_EQ(display(time), "153722867280912930:07.000");
        EXPECT_EQ(fileName(time), "2562047788015215-30-07-000");
    }
}

TEST(CMTimeTest, NoTimeEndsTheProgramWhateverItsNumbers) {
    const std::int32_t shortest = std::numeric_limits<std::int32_t>::min();
    for (const std::int64_t value : {smallest, smallest + 1, std::int64_t(-1), std::int64_t(0),
                                     std::int64_t(1), largest - 1, largest})
        for (const std::int32_t timescale : {shortest, -1, 0, 1, 2, -(shortest + 1)}) {
            const CMTime time = CMTime::make(value, timescale);
            EXPECT_FALSE(display(time).empty());
            EXPECT_FALSE(fileName(time).empty());
            EXPECT_EQ(time, time);
            EXPECT_EQ(qHash(time), qHash(time));
            for (const CMTime& other : {CMTime::make(largest, 1), CMTime::make(smallest, shortest)})
                EXPECT_TRUE((time + other).isValid() && (time - other).isValid() &&
                            (-time).isValid());
        }
}

// 2^63 = 153722867280912930 * 60 + 8
TEST(CMTimeTest, TheSmallestIntegerOfSecondsStillShows) {
    EXPECT_EQ(display(CMTime::make(smallest, 1)), "-153722867280912930:-8.000");
}

TEST(CMTimeTest, EqualTimesOfDifferentTimescalesAreEquivalent) {
    EXPECT_EQ(CMTime::make(1, 2), CMTime::make(2, 4));
    EXPECT_EQ(CMTime::make(0, 30), CMTime::make(0, 600));
    EXPECT_EQ(CMTime::make(-1, 2), CMTime::make(1, -2));
    EXPECT_NE(CMTime::make(1001, 30000), CMTime::make(1, 30));
}

TEST(CMTimeTest, TheRoundedFlagDoesNotCountInComparison) {
    EXPECT_EQ(CMTime::make(1, 2), (CMTime{1, 2, CMTime::Valid | CMTime::HasBeenRounded, 0}));
}

// In doubles both sides of each pair are the same number.
TEST(CMTimeTest, TimesNearTheLargestValueCompareExactly) {
    EXPECT_LT(CMTime::make(largest - 1, finest), CMTime::make(largest, finest));
    EXPECT_LT(CMTime::make(largest, finest), CMTime::make(largest, finest - 1));
    EXPECT_GT(CMTime::make(smallest, finest), CMTime::make(smallest, finest - 1));
    // (2^63 - 1)/2 is 4611686018427387903.5
    EXPECT_LT(CMTime::make(4611686018427387903, 1), CMTime::make(largest, 2));
    EXPECT_GT(CMTime::make(4611686018427387904, 1), CMTime::make(largest, 2));
    EXPECT_EQ(CMTime::make(largest - 1, 2), CMTime::make(4611686018427387903, 1));
}

TEST(CMTimeTest, TimesThatAreNotNumbersHaveAFixedPlaceInTheOrder) {
    const std::array order{
        CMTime::negativeInfinity(), CMTime::make(smallest, 1), CMTime::zero(),
        CMTime::make(largest, 1),   CMTime::indefinite(),      CMTime::positiveInfinity(),
        CMTime::invalid()};
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t j = 0; j < order.size(); ++j)
            EXPECT_EQ(order.at(i) <=> order.at(j), std::weak_ordering(i <=> j)) << i << ' ' << j;
}

TEST(CMTimeTest, ALaterEpochComesAfterEveryTimeOfAnEarlierOne) {
    EXPECT_GT((CMTime{0, 1, CMTime::Valid, 1}), CMTime::make(largest, 1));
    EXPECT_EQ((CMTime{0, 1, CMTime::Valid, 1}) - CMTime::make(1, 1), CMTime::indefinite());
}

TEST(CMTimeTest, EquivalentTimesHaveTheSameHash) {
    EXPECT_EQ(qHash(CMTime::make(1, 2), 7), qHash(CMTime::make(300, 600), 7));
    EXPECT_EQ(qHash(CMTime::make(1, -2)), qHash(CMTime::make(-1, 2)));
    EXPECT_EQ(qHash(CMTime::make(0, 30)), qHash(CMTime::make(0, -1)));
    EXPECT_EQ(qHash(CMTime::make(smallest, 2)), qHash(CMTime::make(smallest / 2, 1)));
    EXPECT_EQ(qHash(CMTime::make(3, 0)), qHash(CMTime::positiveInfinity()));
    EXPECT_EQ(qHash(CMTime{1, 2, CMTime::Valid | CMTime::HasBeenRounded, 0}),
              qHash(CMTime::make(1, 2)));
}

TEST(CMTimeTest, TheHashTellsFramesApart) {
    QSet<std::size_t> hashes;
    constexpr int frames = 1000;
    for (int frame = 0; frame < frames; ++frame)
        hashes.insert(qHash(CMTime::make(frame * std::int64_t{1001}, 30000)));
    EXPECT_EQ(hashes.size(), frames);
}

TEST(CMTimeTest, SumsKeepACommonTimescaleWhereItFits) {
    expectFields(CMTime::make(1, 30) + CMTime::make(2, 30), 3, 30, 1U);
    expectFields(CMTime::make(1, 2) + CMTime::make(1, 3), 5, 6, 1U);
    expectFields(CMTime::make(1, 600) - CMTime::make(1, 30), -19, 600, 1U);
    expectFields(CMTime::make(1, 2) + CMTime::make(1, -3), 1, 6, 1U);
}

// 1/2147483647 + 1/2147483646 at the finer timescale is 1 + 2147483647/2147483646, just over 2.
TEST(CMTimeTest, ASumWithoutACommonTimescaleIsRoundedToTheFiner) {
    expectFields(CMTime::make(1, finest) + CMTime::make(1, finest - 1), 2, finest, 3U);
}

// 46349 * 46351 is over 2^31. 10/46349 + 1/46351 is, in 1/46351, 10 * 46351/46349 + 1 = 11.00043.
TEST(CMTimeTest, ARoundedSumTakesTheNearestValue) {
    expectFields(CMTime::make(10, 46349) + CMTime::make(1, 46351), 11, 46351, 3U);
    expectFields(CMTime::make(-10, 46349) - CMTime::make(1, 46351), -11, 46351, 3U);
}

// (2^16 + 1) and 2^16 have the common timescale 2^32 + 2^16. 2^15/2^16 is a half, and half of the
// odd 65537 lies between two values.
TEST(CMTimeTest, HalvesAreRoundedAwayFromZero) {
    expectFields(CMTime::make(0, 65537) + CMTime::make(32768, 65536), 32769, 65537, 3U);
    expectFields(CMTime::make(0, 65537) - CMTime::make(32768, 65536), -32769, 65537, 3U);
}

TEST(CMTimeTest, AnExactSumIsNotFlaggedEvenWithoutACommonTimescale) {
    expectFields(CMTime::make(1, 65537) + CMTime::make(65536, 65536), 65538, 65537, 1U);
}

TEST(CMTimeTest, ARoundedOperandMakesTheSumRounded) {
    const CMTime rounded{1, 2, CMTime::Valid | CMTime::HasBeenRounded, 0};
    expectFields(rounded + CMTime::make(1, 2), 2, 2, 3U);
    expectFields(-rounded, -1, 2, 3U);
}

TEST(CMTimeTest, ASumPast64BitsIsTheInfinityOfItsSign) {
    EXPECT_EQ(CMTime::make(largest, 1) + CMTime::make(1, 1), CMTime::positiveInfinity());
    EXPECT_EQ(CMTime::make(smallest, 1) - CMTime::make(1, 1), CMTime::negativeInfinity());
    EXPECT_EQ(CMTime::make(largest, 2) + CMTime::make(1, 3), CMTime::positiveInfinity());
    EXPECT_EQ(CMTime::make(smallest, 1) + CMTime::make(smallest, finest),
              CMTime::negativeInfinity());
}

TEST(CMTimeTest, TheSmallestValueCanBeSubtractedThoughNotNegated) {
    expectFields(CMTime::make(-1, 1) - CMTime::make(smallest, 1), largest, 1, 1U);
    EXPECT_EQ(-CMTime::make(smallest, 1), CMTime::positiveInfinity());
    expectFields(-CMTime::make(smallest, -1), smallest, 1, 1U);
    expectFields(-CMTime::make(largest, 1), -largest, 1, 1U);
}

TEST(CMTimeTest, TheSmallestTimescaleIsATimescaleLikeAnother) {
    constexpr std::int32_t coarsest = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(CMTime::make(std::int64_t{coarsest}, coarsest), CMTime::make(1, 1));
    EXPECT_EQ(CMTime::make(std::int64_t{coarsest}, coarsest) + CMTime::zero(), CMTime::make(1, 1));
}

TEST(CMTimeTest, SumsOfTimesThatAreNotNumbersKeepTheirKind) {
    const CMTime one = CMTime::make(1, 1);
    const CMTime plus = CMTime::positiveInfinity();
    const CMTime minus = CMTime::negativeInfinity();
    EXPECT_EQ(one + plus, plus);
    EXPECT_EQ(one - plus, minus);
    EXPECT_EQ(minus + one, minus);
    EXPECT_EQ(plus + plus, plus);
    EXPECT_EQ(plus - minus, plus);
    EXPECT_EQ(plus + minus, CMTime::indefinite());
    EXPECT_EQ(plus - plus, CMTime::indefinite());
    EXPECT_EQ(plus + CMTime::indefinite(), CMTime::indefinite());
    EXPECT_EQ(CMTime::indefinite() - one, CMTime::indefinite());
    EXPECT_EQ(CMTime::invalid() + plus, CMTime::invalid());
    EXPECT_EQ(one - CMTime::invalid(), CMTime::invalid());
    EXPECT_EQ(-plus, minus);
    EXPECT_EQ(-minus, plus);
    EXPECT_EQ(-CMTime::indefinite(), CMTime::indefinite());
    EXPECT_EQ(-CMTime::invalid(), CMTime::invalid());
}

TEST(CMTimeTest, SecondsBecomeTheNearestValue) {
    expectFields(CMTime::fromSeconds(83.5, 600), 50100, 600, 1U);
    expectFields(CMTime::fromSeconds(0.0, 600), 0, 600, 1U);
    expectFields(CMTime::fromSeconds(-0.25, 30), -8, 30, 3U); // -7.5, away from zero
    expectFields(CMTime::fromSeconds(0.25, 30), 8, 30, 3U);
    expectFields(CMTime::fromSeconds(0.25, 29), 7, 29, 3U); // 7.25
    expectFields(CMTime::fromSeconds(1e-300, 600), 0, 600, 3U);
}

// 0.1 is the double 0x1.999999999999ap-4, above a tenth, so its half-way product is above a half.
TEST(CMTimeTest, SecondsAreRoundedFromTheExactDouble) {
    expectFields(CMTime::fromSeconds(0.1, 5), 1, 5, 3U);
    // 0.49999999999999994 is the largest double under a half; adding a half to it gives 1.0.
    expectFields(CMTime::fromSeconds(0.49999999999999994, 1), 0, 1, 3U);
    // 2^53 + 2 is a double; as a product with 3 it no longer is one.
    expectFields(CMTime::fromSeconds(9007199254740994.0, 3), 27021597764222982, 3, 1U);
}

TEST(CMTimeTest, SecondsThatDoNotFitBecomeInfinite) {
    expectFields(CMTime::fromSeconds(-9223372036854775808.0, 1), smallest, 1, 1U);
    EXPECT_EQ(CMTime::fromSeconds(9223372036854775808.0, 1), CMTime::positiveInfinity());
    EXPECT_EQ(CMTime::fromSeconds(1e300, 600), CMTime::positiveInfinity());
    EXPECT_EQ(CMTime::fromSeconds(-std::numeric_limits<double>::max(), finest),
              CMTime::negativeInfinity());
    EXPECT_EQ(CMTime::fromSeconds(std::numeric_limits<double>::infinity(), 30),
              CMTime::positiveInfinity());
}

TEST(CMTimeTest, SecondsThatAreNoNumberBecomeIndefinite) {
    EXPECT_EQ(CMTime::fromSeconds(std::numeric_limits<double>::quiet_NaN(), 30),
              CMTime::indefinite());
}

TEST(CMTimeTest, ATimescaleThatIsNotPositiveMakesNoTime) {
    EXPECT_EQ(CMTime::fromSeconds(1.0, 0), CMTime::invalid());
    EXPECT_EQ(CMTime::fromSeconds(1.0, -30), CMTime::invalid());
}

} // namespace

} // namespace stillwick
