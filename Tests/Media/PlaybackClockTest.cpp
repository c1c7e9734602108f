#include "Media/PlaybackClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

const SteadyTime start{1000s}; // made up: no case looks at the real clock

TEST(PlaybackClock, StandsAtZeroUntilItIsTold) {
    const PlaybackClock clock;
    EXPECT_FALSE(clock.isRunning());
    EXPECT_EQ(clock.at(start), 0ns);
    EXPECT_EQ(clock.at(start + 1h), 0ns);
}

TEST(PlaybackClock, RunsAsFastAsTheWallClock) {
    PlaybackClock clock;
    clock.run(5s, start);
    EXPECT_TRUE(clock.isRunning());
    EXPECT_EQ(clock.at(start), 5s);
    EXPECT_EQ(clock.at(start + 1ns), 5s + 1ns);
    EXPECT_EQ(clock.at(start + 3h), 5s + 3h);
}

TEST(PlaybackClock, StandsUntilTheTimeFromWhichItRuns) {
    PlaybackClock clock;
    clock.run(5s, start + 100ms);
    EXPECT_EQ(clock.at(start), 5s);
    EXPECT_EQ(clock.at(start + 100ms), 5s);
    EXPECT_EQ(clock.at(start + 101ms), 5s + 1ms);
}

TEST(PlaybackClock, StandsStillWhereItIsHeld) {
    PlaybackClock clock;
    clock.run(5s, start);
    clock.hold(clock.at(start + 2s));
    EXPECT_FALSE(clock.isRunning());
    EXPECT_EQ(clock.at(start + 2s), 7s);
    EXPECT_EQ(clock.at(start + 9s), 7s);
}

TEST(PlaybackClock, MayBeSentBackByANewRun) {
    PlaybackClock clock;
    clock.run(50s, start);
    EXPECT_EQ(clock.at(start + 1s), 51s);
    clock.run(2s, start + 1s);
    EXPECT_EQ(clock.at(start + 1s), 2s);
}

TEST(PlaybackClock, MakesUpForASmallErrorWithinHalfASecond) {
    for (const nanoseconds error : {nanoseconds(40ms), nanoseconds(-40ms), nanoseconds(3ms)}) {
        PlaybackClock clock;
        clock.run(0s, start);
        clock.correct(10s + error, start + 10s);
        EXPECT_EQ(clock.at(start + 10s), 10s) << "not at once";
        EXPECT_EQ(clock.at(start + 10s + 250ms), 10s + 250ms + error / 2);
        EXPECT_EQ(clock.at(start + 10s + 500ms), 10s + 500ms + error);
        EXPECT_EQ(clock.at(start + 20s), 20s + error);
    }
}

TEST(PlaybackClock, NeitherJumpsNorTurnsBackUnderNoisyMeasurements) {
    PlaybackClock clock;
    clock.run(0s, start);
    nanoseconds last = 0ns;
    for (int tick = 1; tick <= 10'000; ++tick) { // 10 s in steps of 1 ms
        const SteadyTime now = start + tick * 1ms;
        if (tick % 50 == 0) {
            const nanoseconds noise = (tick / 50 * 7919 % 37 - 18) * 1ms;
            clock.correct(tick * 1ms + noise, now);
        }
        const nanoseconds film = clock.at(now);
        ASSERT_GE(film - last, 900us) << "8 % slower at most, at " << tick << " ms";
        ASSERT_LE(film - last, 1100us) << "8 % faster at most, at " << tick << " ms";
        last = film;
    }
}

TEST(PlaybackClock, AveragesWhatItIsTold) {
    PlaybackClock clock;
    clock.run(0s, start);
    for (int i = 1; i <= 200; ++i) // ±20 ms around 15 ms ahead
        clock.correct(i * 50ms + 15ms + (i % 2 ? 20ms : -20ms), start + i * 50ms);
    const nanoseconds error = clock.at(start + 10s) - 10s;
    // A first-order low pass of 0.5 s lets pass 50 ms / 0.5 s of an alternating input, halved.
    EXPECT_GE(error, 13ms);
    EXPECT_LE(error, 17ms);
}

TEST(PlaybackClock, TakesALargeErrorForwardAtOnce) {
    PlaybackClock clock;
    clock.run(0s, start);
    clock.correct(10s + 41ms, start + 10s);
    EXPECT_EQ(clock.at(start + 10s), 10s + 41ms);
    EXPECT_EQ(clock.at(start + 11s), 11s + 41ms);
}

TEST(PlaybackClock, StandsWhereALargeErrorLeadsBack) {
    PlaybackClock clock;
    clock.run(0s, start);
    EXPECT_EQ(clock.at(start + 10s), 10s);
    clock.correct(9s, start + 10s);
    EXPECT_EQ(clock.at(start + 10s + 500ms), 10s);
    EXPECT_EQ(clock.at(start + 11s), 10s);
    EXPECT_EQ(clock.at(start + 11s + 200ms), 10s + 200ms);
}

TEST(PlaybackClock, StandsWhereALargeErrorLeadsBackThoughNoOneHadAsked) {
    PlaybackClock clock;
    clock.run(0s, start);
    clock.correct(9s, start + 10s);
    EXPECT_EQ(clock.at(start + 10s), 10s);
}

TEST(PlaybackClock, NeverGivesLessThanBeforeThoughAMeasurementComesLate) {
    PlaybackClock clock;
    clock.run(0s, start);
    const nanoseconds before = clock.at(start + 10s);
    clock.correct(9s + 930ms, start + 9s + 960ms); // 30 ms behind
    EXPECT_GE(clock.at(start + 10s), before);
}

TEST(PlaybackClock, IsNotMovedByMeasurementsWhileItIsHeld) {
    PlaybackClock clock;
    clock.hold(5s);
    clock.correct(9s, start);
    EXPECT_EQ(clock.at(start), 5s);
    EXPECT_FALSE(clock.isRunning());
}

TEST(PlaybackClock, IsNotMovedByMeasurementsFromBeforeItRan) {
    PlaybackClock clock;
    clock.run(5s, start);
    clock.correct(90s, start - 1ms);
    EXPECT_EQ(clock.at(start + 1s), 6s);
}

TEST(PlaybackClock, TellsWhenAFilmTimeComes) {
    PlaybackClock clock;
    EXPECT_EQ(clock.steadyTimeOf(0s), SteadyTime::max()) << "held";
    clock.run(5s, start);
    EXPECT_EQ(clock.steadyTimeOf(5s), start);
    EXPECT_EQ(clock.steadyTimeOf(8s), start + 3s);
    EXPECT_EQ(clock.steadyTimeOf(4s), start - 1s);
    for (const nanoseconds error : {nanoseconds(37ms), nanoseconds(-37ms)}) {
        clock.run(0s, start);
        clock.correct(10s + error, start + 10s);
        for (int step = 0; step < 20; ++step) { // across the slew and past it
            const nanoseconds film = 10s + step * 50ms;
            const nanoseconds there = clock.at(clock.steadyTimeOf(film));
            EXPECT_LE(std::max(film, there) - std::min(film, there), 2ns) << "rounding";
        }
    }
}

TEST(PlaybackClock, GivesEveryThreadTimesThatDoNotTurnBack) {
    PlaybackClock clock;
    clock.run(0s, start);
    std::atomic<int> tick = 0;
    std::atomic<int> turnedBack = 0;
    {
        std::vector<std::jthread> readers;
        for (int reader = 0; reader < 3; ++reader) {
            readers.emplace_back([&] {
                nanoseconds last = 0ns;
                while (tick < 20'000) {
                    const nanoseconds film = clock.at(start + tick.load() * 100us);
                    turnedBack += film < last ? 1 : 0;
                    last = film;
                }
            });
        }
        for (; tick < 20'000; ++tick) {
            const int now = tick;
            if (now % 7 == 0)
                clock.correct(now * 100us + (now % 3 - 1) * 30ms, start + now * 100us);
        }
    }
    EXPECT_EQ(turnedBack, 0);
}

} // namespace

} // namespace stillwick::testing
