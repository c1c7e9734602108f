#include "Media/SoundSession.h"

#include <gtest/gtest.h>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

struct SoundSessionTest : ::testing::Test {
    std::shared_ptr<PlaybackClock> clock = std::make_shared<PlaybackClock>();
    SoundSession session{std::make_shared<SoundControl>(), clock, 5s, 0s};
    SteadyTime now = SteadyClock::now();
};

TEST_F(SoundSessionTest, HoldsTheClockUntilTheDevicePlays) {
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(clock->at(now + 1h), 5s);
    session.deviceIsAt(5s + 20ms, now);
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(clock->at(now + 1s), 6s + 20ms);
}

TEST_F(SoundSessionTest, CorrectsTheClockThatRuns) {
    session.deviceIsAt(5s, now);
    session.deviceIsAt(6s + 10ms, now + 1s);
    EXPECT_EQ(clock->at(now + 2s), 7s + 10ms);
}

TEST_F(SoundSessionTest, GoesOnAloneFromWhereItStoodOnce) {
    session.goOnAlone();
    EXPECT_TRUE(clock->isRunning());
    const SteadyTime started = clock->steadyTimeOf(5s);
    EXPECT_GE(started, now);
    EXPECT_LE(started, SteadyClock::now());
    session.goOnAlone();
    EXPECT_EQ(clock->steadyTimeOf(5s), started);
}

TEST_F(SoundSessionTest, DoesNotGoOnAloneBeforeItIsLate) {
    session.goOnAloneIfLate();
    EXPECT_TRUE(session.isWaiting() || SteadyClock::now() >= session.deadline());
}

TEST_F(SoundSessionTest, DoesNotTouchTheClockOnceItHasEnded) {
    session.end();
    clock->hold(1s);
    session.deviceIsAt(7s, now);
    session.goOnAlone();
    EXPECT_FALSE(clock->isRunning());
    clock->run(2s, now);
    session.deviceIsAt(9s, now + 1s);
    EXPECT_EQ(clock->at(now + 1s), 3s);
}

TEST_F(SoundSessionTest, GivesTheAnswerOnTheDeviceOnce) {
    EXPECT_FALSE(session.takeDevice());
    session.setDevice({});
    const std::optional<SoundDevice> none = session.takeDevice();
    ASSERT_TRUE(none);
    EXPECT_FALSE(none->format);
    EXPECT_FALSE(session.takeDevice());
    session.setDevice({SoundFormat{44100, 2}});
    const std::optional<SoundDevice> some = session.takeDevice();
    ASSERT_TRUE(some);
    EXPECT_EQ(some->format, (SoundFormat{44100, 2}));
}

TEST(SoundFormat, CountsFramesInLongTimes) {
    const SoundFormat format{44100, 2};
    EXPECT_EQ(format.framesIn(1s), 44100);
    EXPECT_EQ(format.framesIn(1000h), 158'760'000'000);
    EXPECT_EQ(format.timeOf(158'760'000'000), 1000h);
    EXPECT_EQ(format.timeOf(441), 10ms);
    EXPECT_EQ(format.framesIn(-1s), -44100);
}

} // namespace

} // namespace stillwick::testing
