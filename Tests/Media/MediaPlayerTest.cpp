// Seeks and steps as whoever asks for them sees them. That the pictures are the right ones is
// proved by random walks in PlayerWalkTest.
#include "PlayerFixture.h"
#include "Reference.h"

#include <QPointer>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using Status = MediaPlayer::TimeControlStatus;

class MediaPlayerTest : public PlayerFixture {};

TEST_F(MediaPlayerTest, AnEmptyPlayerDoesNothing) {
    player.play();
    player.pause();
    player.seek(CMTime::make(1, 1), CMTime::zero(), CMTime::zero());
    EXPECT_EQ(player.timeControlStatus(), Status::Paused);
    EXPECT_EQ(player.currentTime(), CMTime::zero());
    EXPECT_TRUE(player.picture().isNull());
    EXPECT_EQ(player.currentItem(), nullptr);
}

TEST_F(MediaPlayerTest, AFilmOpensPausedAtItsFirstPicture) {
    open(film);
    EXPECT_EQ(player.timeControlStatus(), Status::Paused);
    EXPECT_EQ(player.currentTime(), CMTime::zero());
    EXPECT_EQ(player.picture(), pictureAt(film, CMTime::zero()));
}

TEST_F(MediaPlayerTest, AfterASeekTheCurrentTimeIsTheTimeAskedFor) {
    open(film);
    for (const CMTime& time : {CMTime::make(1033, 600), CMTime::make(7, 1000), middleOf(71)}) {
        seekTo(time);
        EXPECT_EQ(player.currentTime().value, time.value);
        EXPECT_EQ(player.currentTime().timescale, time.timescale);
        EXPECT_EQ(player.picture(), pictureAt(film, time));
    }
}

TEST_F(MediaPlayerTest, AfterAStepTheCurrentTimeIsTheFramesOwn) {
    open(film);
    seekTo(middleOf(15));
    stepBy(1);
    EXPECT_EQ(player.currentTime(), frameTime(16));
    EXPECT_EQ(player.currentTime().timescale, 15360) << "the track's time base";
    stepBy(-3);
    EXPECT_EQ(player.currentTime(), frameTime(13));
    EXPECT_EQ(player.picture(), pictureAt(film, middleOf(13)));
}

TEST_F(MediaPlayerTest, StepBackAtTheFirstFrameStaysThere) {
    open(film);
    stepBy(-1);
    EXPECT_EQ(player.currentTime(), CMTime::zero());
    stepBy(-100);
    EXPECT_EQ(player.currentTime(), CMTime::zero());
    stepBy(1);
    EXPECT_EQ(player.currentTime(), frameTime(1));
}

TEST_F(MediaPlayerTest, StepOnAtTheLastFrameStaysThere) {
    open(film);
    seekTo(frameTime(88));
    stepBy(5);
    EXPECT_EQ(player.currentTime(), frameTime(89));
    stepBy(1);
    EXPECT_EQ(player.currentTime(), frameTime(89));
    stepBy(-1);
    EXPECT_EQ(player.currentTime(), frameTime(88));
}

TEST_F(MediaPlayerTest, StepsAskedFasterThanTheyCanBeShownAreAddedUp) {
    open(film);
    for (int i = 0; i < 50; ++i)
        item->step(1);
    for (int i = 0; i < 7; ++i)
        item->step(-1);
    settle();
    EXPECT_EQ(player.currentTime(), frameTime(43));
}

TEST_F(MediaPlayerTest, AStepAskedDuringASeekCountsFromThePlaceSought) {
    open(film);
    player.seek(middleOf(60), CMTime::zero(), CMTime::zero());
    item->step(-2);
    settle();
    EXPECT_EQ(player.currentTime(), frameTime(58));
}

TEST_F(MediaPlayerTest, ANewerSeekReplacesStepsAskedBefore) {
    open(film);
    item->step(30);
    player.seek(middleOf(5), CMTime::zero(), CMTime::zero());
    settle();
    EXPECT_EQ(player.currentTime(), middleOf(5));
}

/// Walks through a film both ways; the times come from ffprobe.
void expectEveryFrameOnce(MediaPlayer& player, MediaPlayerItem& item, const QString& path) {
    const ReferenceFilm reference = referenceFor(path);
    ASSERT_FALSE(reference.frames.empty());
    const auto timeOf = [&reference](std::size_t index) {
        return CMTime::make(reference.frames[index].time * reference.timeBaseNumerator,
                            reference.timeBaseDenominator);
    };
    const auto settled = [&player] {
        return !player.isSeeking();
    };
    for (std::size_t i = 1; i < reference.frames.size(); ++i) {
        item.step(1);
        ASSERT_TRUE(runUntil(settled));
        ASSERT_EQ(player.currentTime(), timeOf(i)) << "frame " << i;
    }
    for (std::size_t i = reference.frames.size() - 1; i-- > 0;) {
        item.step(-1);
        ASSERT_TRUE(runUntil(settled));
        ASSERT_EQ(player.currentTime(), std::max(CMTime::zero(), timeOf(i))) << "frame " << i;
    }
}

class EveryFrameTest : public PlayerFixture, public ::testing::WithParamInterface<const char*> {};

TEST_P(EveryFrameTest, IsMetOnceStepByStepBothWays) {
    const QString path = QStringLiteral(STILLWICK_CLIPS "/films/") + QString::fromUtf8(GetParam());
    open(path);
    expectEveryFrameOnce(player, *item, path);
}

INSTANTIATE_TEST_SUITE_P(Clips, EveryFrameTest,
                         ::testing::Values("closed_h264.mp4", "open_hevc.mp4", "open_h264.ts",
                                           "one_group_h264.mp4", "variable_rate.mkv",
                                           "mbaff_h264.ts", "closed_h264.avi"),
                         [](const auto& clip) {
                             std::string name = clip.param;
                             for (char& character : name)
                                 character = character == '.' ? '_' : character;
                             return name;
                         });

TEST_F(MediaPlayerTest, ADraggedSliderShowsPicturesAllTheWayAndEndsOnTheExactOne) {
    open(longFilm);
    const CMTime end = asset->loadDuration().result();
    int shown = 0;
    QObject::connect(&player, &MediaPlayer::pictureChanged, &player, [&shown] { ++shown; });
    CMTime last = CMTime::zero();
    for (int i = 1; i <= 60; ++i) {
        last = CMTime::fromSeconds(end.seconds() * 0.9 * i / 60, 600);
        player.seek(last, CMTime::zero(), CMTime::zero());
        runFor(16ms);
    }
    EXPECT_GE(shown, 3);
    settle();
    EXPECT_EQ(player.currentTime(), last);
    EXPECT_EQ(player.picture(), pictureAt(longFilm, last));
}

TEST_F(MediaPlayerTest, ObserversAreCalledAtEachJumpOnTheMainThread) {
    open(film);
    std::vector<std::string> log;
    runFor(20ms);
    const auto token = player.addPeriodicTimeObserver(CMTime::make(1, 30), [&](const CMTime& time) {
        EXPECT_EQ(QThread::currentThread(), application().thread());
        log.push_back(std::to_string(std::lround(time.seconds() * 30)));
    });
    seekTo(frameTime(12));
    EXPECT_EQ(log, std::vector<std::string>({"12"}));
    stepBy(-1);
    EXPECT_EQ(log, std::vector<std::string>({"12", "11"}));
    player.play();
    ASSERT_TRUE(runUntil([&log] { return log.size() >= 8; }));
    player.pause();
    runFor(20ms);
    const std::size_t size = log.size();
    const std::string last = std::to_string(std::lround(player.currentTime().seconds() * 30));
    EXPECT_EQ(log.back(), last);
    runFor(150ms);
    EXPECT_EQ(log.size(), size) << "nothing moves while paused";
    player.removeTimeObserver(token);
}

TEST_F(MediaPlayerTest, ARemovedObserverIsNeverCalledAgain) {
    open(film);
    int calls = 0;
    MediaPlayer::ObserverToken token{};
    token = player.addPeriodicTimeObserver(CMTime::make(1, 30), [&](const CMTime&) {
        ++calls;
        player.removeTimeObserver(token); // from within itself
    });
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.currentTime() >= frameTime(10); }));
    player.pause();
    runFor(50ms);
    EXPECT_EQ(calls, 1);
}

TEST_F(MediaPlayerTest, NothingOfARemovedObserverOutlivesThePlayer) {
    auto shortLived = std::make_unique<MediaPlayer>();
    const auto token = shortLived->addPeriodicTimeObserver(CMTime::make(1, 30), [](CMTime) {});
    const QPointer<QTimer> timer = shortLived->findChild<QTimer*>();
    ASSERT_FALSE(timer.isNull());
    shortLived->removeTimeObserver(token);
    shortLived.reset(); // before the event loop could delete anything
    EXPECT_TRUE(timer.isNull());
}

TEST_F(MediaPlayerTest, SeeksDuringSeeksAreAnsweredInTheirOrderAndTheNewestStays) {
    open(longFilm);
    const std::vector<CMTime> asked = {CMTime::make(9001, 600), CMTime::make(301, 600),
                                       CMTime::make(6001, 600), CMTime::make(2401, 600)};
    std::vector<std::string> log;
    const auto nameOf = [&asked](const CMTime& time) {
        const auto place = std::find(asked.begin(), asked.end(), time);
        return place == asked.end() ? std::string("near") : std::to_string(place - asked.begin());
    };
    QObject::connect(&player, &MediaPlayer::pictureChanged, &player,
                     [&] { log.push_back(nameOf(player.currentTime())); });
    for (const CMTime& time : asked) {
        player.seek(time, CMTime::zero(), CMTime::zero());
        runFor(1ms);
    }
    settle();
    runFor(100ms);
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back(), "3");
    EXPECT_EQ(std::count(log.begin(), log.end(), "3"), 1) << "and is shown once";
    std::erase(log, "near");
    EXPECT_TRUE(std::is_sorted(log.begin(), log.end()));
}

TEST_F(MediaPlayerTest, ASeekGivenWhileTheFilmOpensIsCarriedOut) {
    asset = std::make_shared<MediaAsset>(film);
    item = std::make_shared<MediaPlayerItem>(asset);
    player.replaceCurrentItem(item);
    player.seek(middleOf(33), CMTime::zero(), CMTime::zero());
    settle();
    EXPECT_EQ(player.currentTime(), middleOf(33));
    EXPECT_EQ(player.picture(), pictureAt(film, middleOf(33)));
}

TEST_F(MediaPlayerTest, ASeekPastTheEndShowsTheLastFrameAtTheFilmsEnd) {
    open(film);
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    for (const CMTime& past : {CMTime::make(1000, 1), CMTime::make(largest, 1),
                               CMTime::make(largest, 90'000), CMTime::make(largest - 1, 2)}) {
        seekTo(past);
        EXPECT_EQ(player.currentTime(), frameTime(90));
        EXPECT_EQ(player.picture(), pictureAt(film, frameTime(89)));
        seekTo(CMTime::make(-largest, 1));
        EXPECT_EQ(player.currentTime(), CMTime::zero());
    }
}

TEST_F(MediaPlayerTest, ASeekToWhatIsNotATimeIsIgnored) {
    open(film);
    seekTo(frameTime(10));
    player.seek(CMTime::indefinite(), CMTime::zero(), CMTime::zero());
    player.seek(CMTime::make(1, 0), CMTime::zero(), CMTime::zero());
    EXPECT_FALSE(player.isSeeking());
}

TEST_F(MediaPlayerTest, AFilmsFirstPictureMayBeginAfterItsZero) {
    open(QStringLiteral(STILLWICK_CLIPS "/films/late_start.mp4"));
    EXPECT_EQ(player.currentTime(), CMTime::zero());
    stepBy(1);
    const CMTime second = player.currentTime();
    EXPECT_GT(second, CMTime::make(7, 10));
    stepBy(-1);
    EXPECT_EQ(player.currentTime(), second - frameTime(1));
}

} // namespace

} // namespace stillwick::testing
