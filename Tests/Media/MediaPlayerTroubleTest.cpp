// Films that are damaged, replaced, or gone while they are open.
#include "PlayerFixture.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <vector>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using Status = MediaPlayer::TimeControlStatus;

class MediaPlayerTroubleTest : public PlayerFixture {};

TEST_F(MediaPlayerTroubleTest,
       WhatIsGrabbedAtTheTimeShownIsTheFrameShownEvenWhereTheFilmIsDamaged) {
    const auto damaged = QStringLiteral(STILLWICK_CLIPS "/films/damaged.mp4");
    open(damaged);
    ImageGenerator generator(asset);
    generator.setAppliesPreferredTrackTransform(true);
    generator.setRequestedTimeToleranceBefore(CMTime::zero());
    for (int i = 0; i < 40; ++i) {
        stepBy(i % 3 == 2 ? -1 : 2);
        ASSERT_EQ(generator.generateImage(player.currentTime()).image, player.picture());
    }
}

TEST_F(MediaPlayerTroubleTest, AnotherFilmTakesThePlaceOfOneThatIsStillSeeking) {
    open(longFilm);
    player.seek(CMTime::make(1000, 1), CMTime::zero(), CMTime::zero());
    std::vector<CMTime> times;
    QObject::connect(&player, &MediaPlayer::pictureChanged, &player,
                     [&] { times.push_back(player.currentTime()); });
    open(film);
    EXPECT_EQ(player.currentTime(), CMTime::zero());
    EXPECT_EQ(player.picture(), pictureAt(film, CMTime::zero()));
    for (const CMTime& time : times)
        EXPECT_EQ(time, CMTime::zero());
}

TEST_F(MediaPlayerTroubleTest, AnItemThatWasReplacedStepsNoMore) {
    open(film);
    const auto old = item;
    open(film);
    old->step(5);
    runFor(50ms);
    EXPECT_EQ(player.currentTime(), CMTime::zero());
}

TEST_F(MediaPlayerTroubleTest, AFileThatIsNoFilmFailsWithASentence) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("notes.mp4"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("Ceci n'est pas un film.");
    file.close();
    QString why;
    QObject::connect(&player, &MediaPlayer::failed, &player,
                     [&why](const QString& description) { why = description; });
    asset = std::make_shared<MediaAsset>(path);
    item = std::make_shared<MediaPlayerItem>(asset);
    player.replaceCurrentItem(item);
    ASSERT_TRUE(runUntil([&why] { return !why.isEmpty(); }));
    EXPECT_EQ(why, QStringLiteral("Ce type de fichier n'est pas pris en charge."));
    player.play();
    item->step(1);
    ASSERT_TRUE(runUntil(
        [this] { return !player.isSeeking() && player.timeControlStatus() == Status::Paused; }));
    EXPECT_TRUE(player.picture().isNull());
}

TEST_F(MediaPlayerTroubleTest, AFilmDeletedWhileItPlaysPlaysToItsEnd) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("film.mp4"));
    ASSERT_TRUE(QFile::copy(film, path));
    open(path);
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.currentTime() >= frameTime(5); }));
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(runUntil([this] { return player.timeControlStatus() == Status::Paused; }));
    EXPECT_EQ(player.currentTime(), frameTime(90));
}

TEST_F(MediaPlayerTroubleTest, AFilmCutOffWhileItPlaysPlaysWhatCanBeReadAndThenPauses) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("film.ts"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(STILLWICK_CLIPS "/films/closed_h264.ts"), path));
    open(path);
    ASSERT_TRUE(QFile::resize(path, QFile(path).size() / 3));
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.timeControlStatus() == Status::Playing; }));
    ASSERT_TRUE(runUntil([this] { return player.timeControlStatus() == Status::Paused; }));
    EXPECT_FALSE(player.picture().isNull());
}

TEST_F(MediaPlayerTroubleTest, ADamagedStretchIsPassedWithTheLastGoodPictureHeld) {
    open(QStringLiteral(STILLWICK_CLIPS "/films/damaged.mp4"));
    player.play();
    ASSERT_TRUE(runUntil([this] { return player.timeControlStatus() == Status::Playing; }));
    ASSERT_TRUE(runUntil([this] { return player.timeControlStatus() == Status::Paused; }));
    EXPECT_EQ(player.currentTime(), asset->loadDuration().result());
}

TEST_F(MediaPlayerTroubleTest, ClosingInTheMidstOfADecodeDoesNotWaitForItsEnd) {
    const CMTime end = MediaAsset(longFilm).loadDuration().result();
    QElapsedTimer timer;
    timer.start();
    (void)pictureAt(longFilm, end);
    const qint64 whole = timer.elapsed();
    auto closing = std::make_unique<MediaPlayer>();
    closing->replaceCurrentItem(
        std::make_shared<MediaPlayerItem>(std::make_shared<MediaAsset>(longFilm)));
    ASSERT_TRUE(runUntil([&] { return !closing->picture().isNull(); }));
    closing->seek(end, CMTime::zero(), CMTime::zero());
    runFor(50ms);
    EXPECT_TRUE(closing->isSeeking());
    timer.start();
    closing.reset();
    EXPECT_LT(timer.elapsed(), std::max<qint64>(100, whole / 4));
}

} // namespace

} // namespace stillwick::testing
