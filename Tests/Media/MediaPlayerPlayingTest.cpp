// Playing, to its end and interrupted.
#include "PlayerFixture.h"

#include <QElapsedTimer>

#include <algorithm>
#include <vector>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using Status = MediaPlayer::TimeControlStatus;

class MediaPlayerPlayingTest : public PlayerFixture {};

TEST_F(MediaPlayerPlayingTest, AStepDuringPlayingEndsItAndCountsFromThePictureSeen) {
    open(film);
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.currentTime() >= frameTime(10); }));
    const CMTime seen = player.currentTime();
    item->step(1);
    EXPECT_EQ(player.timeControlStatus(), Status::Paused);
    settle();
    EXPECT_EQ(player.currentTime(), seen + frameTime(1));
}

TEST_F(MediaPlayerPlayingTest, PlayingEndsPausedOnTheLastFrameAtTheFilmsEnd) {
    open(film);
    seekTo(frameTime(75));
    player.play();
    EXPECT_EQ(player.timeControlStatus(), Status::Waiting);
    std::vector<CMTime> times;
    QObject::connect(&player, &MediaPlayer::pictureChanged, &player,
                     [&] { times.push_back(player.currentTime()); });
    ASSERT_TRUE(runUntil([this] { return player.timeControlStatus() == Status::Paused; }));
    EXPECT_EQ(player.currentTime(), frameTime(90));
    EXPECT_EQ(player.picture(), pictureAt(film, frameTime(89)));
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
}

TEST_F(MediaPlayerPlayingTest, PlayAtTheEndStartsAgainFromZero) {
    open(film);
    seekTo(frameTime(89));
    player.play();
    ASSERT_TRUE(runUntil([this] {
        return player.timeControlStatus() == Status::Playing && player.currentTime() > frameTime(0);
    }));
    EXPECT_LT(player.currentTime(), frameTime(60));
}

TEST_F(MediaPlayerPlayingTest, PlayingGoesByTheClock) {
    open(film);
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.currentTime() >= frameTime(5); }));
    const CMTime from = player.currentTime();
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(runUntil([this] { return player.currentTime() >= frameTime(65); }));
    const double shown = (player.currentTime() - from).seconds();
    const double wall = double(timer.nsecsElapsed()) / 1e9;
    // A busy machine shows late, but what is shown keeps to the clock.
    EXPECT_NEAR(shown, wall, 0.25);
}

TEST_F(MediaPlayerPlayingTest, ASeekDuringPlayingPlaysOnFromThere) {
    open(film);
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.currentTime() >= frameTime(5); }));
    player.seek(frameTime(60), CMTime::zero(), CMTime::zero());
    ASSERT_TRUE(runUntil([this] { return player.currentTime() > frameTime(62); }));
    EXPECT_EQ(player.timeControlStatus(), Status::Playing);
}

TEST_F(MediaPlayerPlayingTest, APauseKeepsThePictureSeen) {
    open(film);
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.currentTime() >= frameTime(20); }));
    player.pause();
    const CMTime time = player.currentTime();
    const QImage picture = player.picture();
    runFor(200ms);
    EXPECT_EQ(player.currentTime(), time);
    EXPECT_EQ(player.picture(), picture);
    EXPECT_EQ(picture, pictureAt(film, time));
}

} // namespace

} // namespace stillwick::testing
