// The playback half of the working state.
#include "EventLoop.h"

#include "Media/MediaAsset.h"
#include "Stillwick/AppState.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;

class AppStateTest : public ::testing::Test {
protected:
    AppStateTest() { application(); }

    /// A film made by the ffmpeg program from its test picture.
    [[nodiscard]] QUrl makeFilm(const QString& name, const QString& rate, double seconds) const {
        const QString path = folder.filePath(name);
        run({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
             QStringLiteral("testsrc2=s=64x48:r=") + rate, QStringLiteral("-t"),
             QString::number(seconds), QStringLiteral("-c:v"), QStringLiteral("libx264"),
             QStringLiteral("-preset"), QStringLiteral("ultrafast"), path});
        return QUrl::fromLocalFile(path);
    }

    void run(const QStringList& arguments) const {
        QProcess program;
        program.start(QStringLiteral("ffmpeg"),
                      QStringList{QStringLiteral("-nostdin"), QStringLiteral("-v"),
                                  QStringLiteral("error"), QStringLiteral("-y")} +
                          arguments);
        ASSERT_TRUE(program.waitForFinished());
        ASSERT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    }

    /// Opens a film and waits until it is shown and described.
    void load(const QUrl& url) {
        QSignalSpy described(&state, &AppState::durationChanged);
        state.loadVideo(url);
        ASSERT_TRUE(
            runUntil([&] { return !described.isEmpty() && !state.player()->picture().isNull(); }));
        runFor(50ms); // the frame rate comes after the duration
    }

    void settle() {
        ASSERT_TRUE(runUntil([this] { return !state.player()->isSeeking(); }));
        runFor(5ms);
    }

    QTemporaryDir folder;
    AppState state;
};

TEST_F(AppStateTest, BeginsWithOneEmptyGroupAndNoVideo) {
    EXPECT_FALSE(state.hasVideo());
    EXPECT_EQ(state.videoName(), QStringLiteral("video"));
    EXPECT_EQ(state.currentTime(), CMTime::zero());
    EXPECT_EQ(state.duration(), CMTime::zero());
    EXPECT_FALSE(state.isPlaying());
    EXPECT_EQ(state.frameDuration().value, 1);
    EXPECT_EQ(state.frameDuration().timescale, 30);
    ASSERT_EQ(state.groups().size(), 1);
    EXPECT_EQ(state.groups().front().name, QStringLiteral("Captures"));
    EXPECT_EQ(state.activeGroupID(), state.groups().front().id());
    EXPECT_EQ(state.player()->currentItem(), nullptr);
}

TEST_F(AppStateTest, WithoutAVideoPlaybackDoesNothing) {
    state.togglePlayPause();
    state.stepFrame(1);
    state.stepInterval(true);
    state.seek(CMTime::make(1, 1));
    runFor(20ms);
    EXPECT_FALSE(state.isPlaying());
    EXPECT_EQ(state.currentTime(), CMTime::zero());
    EXPECT_EQ(state.errorMessage(), std::nullopt);
}

TEST_F(AppStateTest, TheNameOfTheVideoIsTheFilesWithoutItsExtension) {
    load(makeFilm(QStringLiteral("Essai 3.mp4"), QStringLiteral("25"), 1));
    EXPECT_EQ(state.videoName(), QStringLiteral("Essai 3"));
    state.prepareVideo(QUrl::fromLocalFile(folder.filePath(QStringLiteral("a.b.mov"))));
    EXPECT_EQ(state.videoName(), QStringLiteral("a.b"));
    state.prepareVideo(QUrl::fromLocalFile(folder.filePath(QStringLiteral(".film"))));
    EXPECT_EQ(state.videoName(), QStringLiteral(".film"));
}

TEST_F(AppStateTest, AnIntervalBackNearTheStartGoesToZero) {
    load(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 3));
    state.seek(CMTime::make(240, 600));
    settle();
    EXPECT_EQ(state.currentTime(), CMTime::make(2, 5));
    state.stepInterval(false);
    settle();
    EXPECT_EQ(state.currentTime(), CMTime::zero());
}

TEST_F(AppStateTest, AnIntervalOnNearTheEndGoesExactlyToTheDuration) {
    load(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 3));
    ASSERT_EQ(state.duration(), CMTime::make(3, 1));
    state.seek(CMTime::make(1500, 600));
    settle();
    state.stepInterval(true);
    settle();
    EXPECT_EQ(state.currentTime(), CMTime::make(3, 1));
}

TEST_F(AppStateTest, AnIntervalInTheMiddleMovesByOneSecond) {
    load(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 3));
    state.seek(CMTime::make(333, 600));
    settle();
    state.stepInterval(true);
    settle();
    EXPECT_EQ(state.currentTime(), CMTime::make(933, 600));
}

TEST_F(AppStateTest, WithoutAValidDurationForwardIsNotLimited) {
    EXPECT_EQ(AppState::clamp(CMTime::make(5000, 1), CMTime::invalid()), CMTime::make(5000, 1));
    EXPECT_EQ(AppState::clamp(CMTime::make(-1, 600), CMTime::invalid()), CMTime::zero());
    EXPECT_EQ(AppState::clamp(CMTime::make(7, 2), CMTime::make(3, 1)), CMTime::make(3, 1));
    EXPECT_EQ(AppState::clamp(CMTime::make(5, 2), CMTime::make(3, 1)), CMTime::make(5, 2));
}

TEST_F(AppStateTest, BeforeTheDurationIsKnownAnIntervalOnGoesToZero) {
    state.loadVideo(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 3));
    ASSERT_EQ(state.duration(), CMTime::zero());
    state.stepInterval(true);
    settle();
    EXPECT_EQ(state.currentTime(), CMTime::zero());
}

TEST_F(AppStateTest, FrameRatesAreRoundedToTheNearestInteger) {
    const std::pair<const char*, int> cases[] = {
        {"30000/1001", 30}, {"24000/1001", 24}, {"60000/1001", 60}, {"25", 25}, {"25/2", 13}};
    for (const auto& [rate, rounded] : cases) {
        state.loadVideo(makeFilm(QStringLiteral("film.mp4"), QString::fromUtf8(rate), 2));
        EXPECT_TRUE(runUntil([&] { return state.frameDuration().timescale == rounded; }, 5s))
            << rate << ": " << state.frameDuration().timescale;
        EXPECT_EQ(state.frameDuration().value, 1);
    }
}

TEST_F(AppStateTest, AFrameRateThatRoundsToZeroGivesNoTime) {
    load(makeFilm(QStringLiteral("slow.mp4"), QStringLiteral("3/10"), 20));
    EXPECT_EQ(state.frameDuration().value, 1);
    EXPECT_EQ(state.frameDuration().timescale, 0);
}

TEST_F(AppStateTest, AFileWithoutAVideoTrackKeepsTheFrameDuration) {
    load(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("50"), 1));
    ASSERT_EQ(state.frameDuration().timescale, 50);
    const QString path = folder.filePath(QStringLiteral("sound.m4a"));
    run({QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
         QStringLiteral("sine=duration=2.5"), path});
    QSignalSpy described(&state, &AppState::durationChanged);
    state.loadVideo(QUrl::fromLocalFile(path));
    ASSERT_TRUE(runUntil([&described] { return !described.isEmpty(); }));
    runFor(50ms);
    EXPECT_EQ(state.frameDuration().timescale, 50);
    EXPECT_NEAR(state.duration().seconds(), 2.5, 0.05);
    EXPECT_EQ(state.errorMessage(), std::nullopt);
}

TEST_F(AppStateTest, DurationAndFrameDurationStayUntilTheyAreRead) {
    load(makeFilm(QStringLiteral("first.mp4"), QStringLiteral("50"), 2));
    const QUrl second = makeFilm(QStringLiteral("second.mp4"), QStringLiteral("25"), 1);
    state.loadVideo(second);
    EXPECT_EQ(state.videoURL(), second);
    EXPECT_EQ(state.duration(), CMTime::make(2, 1));
    EXPECT_EQ(state.frameDuration().timescale, 50);
    ASSERT_TRUE(runUntil([this] { return state.frameDuration().timescale == 25; }));
    EXPECT_EQ(state.duration(), CMTime::make(1, 1));
}

TEST_F(AppStateTest, ASecondVideoStartsAFreshSetAndKeepsTheSettings) {
    load(makeFilm(QStringLiteral("first.mp4"), QStringLiteral("25"), 1));
    const QUuid group = state.activeGroupID();
    const auto player = state.player();
    state.setSelection({QUuid::createUuid()});
    state.setOutputFolder(QUrl::fromLocalFile(folder.path()));
    state.setCropToSubject(true);
    state.loadVideo(makeFilm(QStringLiteral("second.mp4"), QStringLiteral("25"), 1));
    ASSERT_EQ(state.groups().size(), 1);
    EXPECT_EQ(state.groups().front().name, QStringLiteral("Captures"));
    EXPECT_NE(state.activeGroupID(), group);
    EXPECT_EQ(state.activeGroupID(), state.groups().front().id());
    EXPECT_TRUE(state.selection().isEmpty());
    EXPECT_TRUE(state.failures().isEmpty());
    EXPECT_TRUE(state.projectURL().isEmpty());
    EXPECT_EQ(state.outputFolder(), QUrl::fromLocalFile(folder.path()));
    EXPECT_TRUE(state.cropToSubject());
    EXPECT_EQ(state.player(), player) << "one player for the state's whole life";
}

TEST_F(AppStateTest, PreparingAVideoLeavesTheCapturesAlone) {
    const QUuid group = state.activeGroupID();
    state.prepareVideo(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 1));
    EXPECT_EQ(state.activeGroupID(), group);
}

TEST_F(AppStateTest, AFileThatCannotBeReadIsReported) {
    const QString path = folder.filePath(QStringLiteral("notes.mov"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("Ceci n'est pas un film.");
    file.close();
    state.loadVideo(QUrl::fromLocalFile(path));
    ASSERT_TRUE(runUntil([this] { return state.errorMessage().has_value(); }));
    EXPECT_EQ(*state.errorMessage(),
              QStringLiteral("Échec de l'extraction de l'image : "
                             "Ce type de fichier n'est pas pris en charge."));
    EXPECT_EQ(state.duration(), CMTime::zero());
    EXPECT_TRUE(state.hasVideo());
}

TEST_F(AppStateTest, PlayingIsReportedByTheObserverAndPauseAtOnce) {
    load(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 3));
    state.togglePlayPause();
    EXPECT_FALSE(state.isPlaying()) << "not before the observer's next call";
    ASSERT_TRUE(runUntil([this] { return state.isPlaying(); }));
    ASSERT_TRUE(runUntil([this] { return state.currentTime() > CMTime::make(1, 5); }));
    state.pause();
    EXPECT_FALSE(state.isPlaying());
    runFor(20ms);
    EXPECT_EQ(state.currentTime(), state.player()->currentTime());
    state.togglePlayPause();
    ASSERT_TRUE(runUntil([this] { return state.isPlaying(); }));
    state.togglePlayPause();
    EXPECT_TRUE(state.isPlaying());
    ASSERT_TRUE(runUntil([this] { return !state.isPlaying(); }));
}

TEST_F(AppStateTest, AStepPausesAtOnceAndMovesByFrames) {
    load(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 3));
    state.togglePlayPause();
    ASSERT_TRUE(runUntil([this] { return state.currentTime() > CMTime::make(1, 5); }));
    state.stepFrame(-2);
    EXPECT_FALSE(state.isPlaying());
    const CMTime seen = state.player()->currentTime();
    settle();
    EXPECT_EQ(state.currentTime(), seen - CMTime::make(2, 25));
}

TEST_F(AppStateTest, TheObserverDoesNotKeepTheStateAlive) {
    auto closing = std::make_unique<AppState>();
    const std::shared_ptr<MediaPlayer> player = closing->player();
    closing->loadVideo(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 2));
    ASSERT_TRUE(runUntil([&player] { return !player->picture().isNull(); }));
    const QPointer<AppState> watched(closing.get());
    closing.reset();
    EXPECT_TRUE(watched.isNull());
    player->play(); // whoever still holds the player may use it
    ASSERT_TRUE(runUntil([&player] { return player->currentTime() > CMTime::make(1, 5); }));
}

TEST_F(AppStateTest, AStateThatGoesWhileItsFilmIsReadLeavesNoTrace) {
    for (int i = 0; i < 20; ++i) {
        AppState closing;
        closing.loadVideo(makeFilm(QStringLiteral("film.mp4"), QStringLiteral("25"), 1));
        if (i % 2 == 0)
            runFor(std::chrono::milliseconds(i));
    }
    runFor(200ms);
}

} // namespace

} // namespace stillwick::testing
