// The background work on captures: pictures and subjects, in which order, and what is left of it
// when the captures go.
#include "Await.h"
#include "GateSegmenter.h"
#include "SampleState.h"

#include "Media/ImageGenerator.h"
#include "Media/MediaAsset.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QSignalSpy>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;

/// The picture of the sample at a time, by a generator of its own.
QImage pictureAt(const CMTime& time) {
    ImageGenerator generator(std::make_shared<const MediaAsset>(sampleFilm().toLocalFile()));
    generator.setAppliesPreferredTrackTransform(true);
    generator.setRequestedTimeToleranceBefore(CMTime::zero());
    generator.setRequestedTimeToleranceAfter(CMTime::zero());
    return generator.generateImage(time).image;
}

/// What happens to captures, in order: "A picture", "A subject", "A none".
class EventLog {
public:
    explicit EventLog(AppState& state) {
        QObject::connect(&state, &AppState::frameChanged, &state, [this, &state](const QUuid& id) {
            const CapturedFrame frame = frameIn(state, id);
            const QString what = !frame.subjectExtracted         ? QStringLiteral("picture")
                                 : frame.subjectPreview.isNull() ? QStringLiteral("none")
                                                                 : QStringLiteral("subject");
            lines.append(names.value(id, QStringLiteral("?")) + u' ' + what);
        });
    }

    QHash<QUuid, QString> names;
    QStringList lines;
};

class AppStateWorkTest : public ::testing::Test {
protected:
    void SetUp() override { load(*state); }

    QUuid capture(const QString& name, std::int64_t milliseconds) {
        const QUuid id = captureAt(*state, milliseconds);
        log.names.insert(id, name);
        return id;
    }

    std::shared_ptr<GateSegmenter> gate = std::make_shared<GateSegmenter>();
    std::unique_ptr<AppState> state = stateWith(gate);
    EventLog log{*state};
};

TEST_F(AppStateWorkTest, ACaptureGetsTheVeryPictureThenItsSubject) {
    const QUuid id = capture(QStringLiteral("A"), 1500);
    ASSERT_TRUE(runUntil([&] { return !frameIn(*state, id).thumbnail.isNull(); }));
    EXPECT_FALSE(frameIn(*state, id).subjectExtracted);
    const QImage expected = pictureAt(CMTime::make(1500, 1000));
    EXPECT_EQ(frameIn(*state, id).thumbnail.image(), expected);
    EXPECT_EQ(frameIn(*state, id).thumbnail.image(), state->player()->picture());
    gate->open(1);
    finish(*state);
    const CapturedFrame frame = frameIn(*state, id);
    EXPECT_TRUE(frame.subjectExtracted);
    const QImage subject = frame.subjectPreview.image();
    ASSERT_EQ(subject.size(), expected.size());
    EXPECT_EQ(subject.pixelColor(10, 100), expected.pixelColor(10, 100));
    EXPECT_EQ(subject.pixelColor(expected.width() - 1, 100).alpha(), 0);
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("A picture"), QStringLiteral("A subject")}));
    EXPECT_EQ(state->errorMessage(), std::nullopt);
}

TEST_F(AppStateWorkTest, APictureWithoutASubjectEndsWithoutPreviewAndMessage) {
    state = stateWith(blindSegmenter());
    load(*state);
    const QUuid id = captureAt(*state, 300);
    finish(*state);
    EXPECT_TRUE(frameIn(*state, id).subjectExtracted);
    EXPECT_TRUE(frameIn(*state, id).subjectPreview.isNull());
    EXPECT_FALSE(frameIn(*state, id).thumbnail.isNull());
    EXPECT_EQ(state->errorMessage(), std::nullopt);
}

TEST_F(AppStateWorkTest, ASystemWithoutSegmenterEndsWithoutPreviewAndMessage) {
    state = stateWith(nullptr);
    load(*state);
    const QUuid id = captureAt(*state, 300);
    finish(*state);
    EXPECT_TRUE(frameIn(*state, id).subjectExtracted);
    EXPECT_TRUE(frameIn(*state, id).subjectPreview.isNull());
    EXPECT_EQ(state->errorMessage(), std::nullopt);
}

TEST_F(AppStateWorkTest, AFailedGrabEndsWithoutPicturesAndWithoutMessage) {
    const QTemporaryDir folder;
    const QString sound = folder.filePath(QStringLiteral("sound.m4a"));
    QProcess program;
    program.start(QStringLiteral("ffmpeg"),
                  {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                   QStringLiteral("lavfi"), QStringLiteral("-i"), QStringLiteral("sine=duration=1"),
                   sound});
    ASSERT_TRUE(program.waitForFinished());
    state->loadVideo(QUrl::fromLocalFile(sound));
    ASSERT_TRUE(runUntil([this] { return state->duration() == state->duration(); }));
    state->captureCurrentFrame();
    const QUuid id = *state->selection().begin();
    finish(*state);
    EXPECT_TRUE(frameIn(*state, id).thumbnail.isNull());
    EXPECT_TRUE(frameIn(*state, id).subjectPreview.isNull());
    EXPECT_TRUE(frameIn(*state, id).subjectExtracted);
    EXPECT_EQ(state->errorMessage(), std::nullopt);
}

TEST_F(AppStateWorkTest, TheSelectedCaptureComesFirst) {
    const QUuid a = capture(QStringLiteral("A"), 0);
    capture(QStringLiteral("B"), 200);
    capture(QStringLiteral("C"), 400);
    capture(QStringLiteral("D"), 600);
    capture(QStringLiteral("E"), 800);
    state->setSelection({a});
    ASSERT_TRUE(runUntil([this] { return gate->waiting() == StillRegenerator::mostAtOnce; }));
    QStringList subjects;
    for (int i = 1; i <= 5; ++i) {
        gate->open(1);
        ASSERT_TRUE(runUntil([&] {
            subjects = log.lines.filter(QStringLiteral("subject"));
            return subjects.size() == i;
        }));
    }
    // Two at a time: which of two that are under way ends first is open.
    EXPECT_TRUE(subjects.mid(0, 2).contains(QStringLiteral("A subject")))
        << subjects.join(u',').toStdString();
    EXPECT_EQ(state->unfinishedFrames(), 0);
}

TEST_F(AppStateWorkTest, OneAtATimeTheSelectedComesFirstThenTheNewest) {
    StillRegenerator regenerator(std::make_shared<SubjectExtractionService>(gate),
                                 PictureStore::shared());
    regenerator.setMostAtOnce(1);
    VideoFrameExtractorService extractor;
    extractor.prepare(std::make_shared<const MediaAsset>(sampleFilm().toLocalFile()));
    QList<QUuid> ids;
    QList<qsizetype> order;
    QObject::connect(&regenerator, &StillRegenerator::finished,
                     [&](const QUuid& id) { order.append(ids.indexOf(id)); });
    for (int i = 0; i < 5; ++i) {
        ids.append(QUuid::createUuid());
        regenerator.regenerate(ids.back(), CMTime::make(200 * i, 1000), extractor);
    }
    regenerator.prefer(ids[2]);
    gate->open(5);
    ASSERT_TRUE(runUntil([&regenerator] { return regenerator.remaining() == 0; }));
    EXPECT_EQ(order, (QList<qsizetype>{2, 4, 3, 1, 0}));
}

TEST_F(AppStateWorkTest, ThePictureOfTheSelectedCaptureIsTheNextThatComes) {
    QList<QUuid> ids;
    for (int i = 0; i < 12; ++i)
        ids.append(capture(QString::number(i), i * 150));
    const QTemporaryDir folder;
    const QUrl project = QUrl::fromLocalFile(folder.filePath(QStringLiteral("p.stillwick")));
    state->saveProject(project);
    for (int i = 0; i < 12; ++i) {
        state->openProject(project);
        runFor(std::chrono::milliseconds(i)); // others are on their way
        const CapturedFrame chosen = state->allFrames()[i];
        if (!chosen.thumbnail.isNull())
            continue;
        const qsizetype before = log.lines.size();
        state->setSelection({chosen.id()});
        ASSERT_TRUE(runUntil([&] { return log.lines.size() > before; }));
        EXPECT_FALSE(frameIn(*state, chosen.id()).thumbnail.isNull()) << i;
    }
}

TEST_F(AppStateWorkTest, ADeletedCaptureLeavesNoTrace) {
    const QUuid id = capture(QStringLiteral("A"), 0);
    ASSERT_TRUE(runUntil([this] { return gate->waiting() == 1; }));
    const QStringList before = log.lines;
    state->deleteFrame(id);
    EXPECT_EQ(state->unfinishedFrames(), 0);
    ASSERT_TRUE(runUntil([this] { return gate->waiting() == 0; })) << "the work is withdrawn";
    gate->open(1);
    runFor(50ms);
    EXPECT_EQ(log.lines, before);
    EXPECT_EQ(state->frameCount(), 0);
}

TEST_F(AppStateWorkTest, ACaptureOfADeletedGroupLeavesNoTrace) {
    state->addGroup();
    capture(QStringLiteral("A"), 0);
    ASSERT_TRUE(runUntil([this] { return gate->waiting() == 1; }));
    const QStringList before = log.lines;
    state->deleteGroup(state->activeGroupID());
    ASSERT_TRUE(runUntil([this] { return gate->waiting() == 0; }));
    gate->open(1);
    runFor(50ms);
    EXPECT_EQ(log.lines, before);
}

TEST_F(AppStateWorkTest, ACaptureMovedMeanwhileGetsItsResultsWhereItIs) {
    const QUuid id = capture(QStringLiteral("A"), 0);
    state->addGroup();
    state->moveFrame(id, state->activeGroupID());
    gate->open(1);
    finish(*state);
    ASSERT_EQ(state->groups()[1].frames.size(), 1);
    EXPECT_FALSE(state->groups()[1].frames.front().subjectPreview.isNull());
    EXPECT_TRUE(state->groups()[0].frames.isEmpty());
}

TEST_F(AppStateWorkTest, NotesWrittenMeanwhileStay) {
    const QUuid id = capture(QStringLiteral("A"), 0);
    ASSERT_TRUE(runUntil([this] { return gate->waiting() == 1; }));
    state->setNote(QStringLiteral("pied gauche"), id);
    gate->open(1);
    finish(*state);
    EXPECT_EQ(frameIn(*state, id).notes, QStringLiteral("pied gauche"));
    EXPECT_FALSE(frameIn(*state, id).subjectPreview.isNull());
}

TEST_F(AppStateWorkTest, AnotherFilmEndsTheWorkOnTheCapturesOfThisOne) {
    capture(QStringLiteral("A"), 0);
    capture(QStringLiteral("B"), 100);
    ASSERT_TRUE(runUntil([this] { return gate->waiting() > 0; }));
    load(*state);
    const QStringList before = log.lines;
    gate->open(10);
    runFor(50ms);
    EXPECT_EQ(log.lines, before);
    EXPECT_EQ(state->frameCount(), 0);
}

TEST_F(AppStateWorkTest, AStateThatClosesInTheMiddleLeavesNothingRunning) {
    for (int i = 0; i < 12; ++i) {
        auto closing = stateWith(gate);
        load(*closing);
        captureAt(*closing, 0);
        captureAt(*closing, 100);
        runFor(std::chrono::milliseconds(i * 5));
        closing.reset();
    }
    EXPECT_TRUE(runUntil([this] { return gate->waiting() == 0; }, 5s));
}

TEST_F(AppStateWorkTest, TenCapturesInARowAllArrive) {
    gate->open(1000);
    QList<QUuid> ids;
    for (int i = 0; i < 10; ++i)
        ids.append(capture(QString::number(i), i * 150));
    finish(*state);
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(frameIn(*state, ids[i]).subjectPreview.isNull());
        EXPECT_EQ(frameIn(*state, ids[i]).thumbnail.image(), pictureAt(CMTime::make(i * 150, 1000)))
            << i;
    }
    EXPECT_EQ(state->frameCount(), 10);
}

TEST_F(AppStateWorkTest, PicturesReadAsTheVeryPicturesWhereverTheyRest) {
    const QTemporaryDir folder;
    for (const qint64 disk : {qint64(1) << 30, qint64(0)}) { // packed; made again
        auto store = std::make_shared<PictureStore>(PictureStore::Bounds{0, disk},
                                                    QStringList{folder.path()});
        state = stateWith(std::make_shared<ColumnSegmenter>(std::vector{100}), store);
        load(*state);
        const QUuid first = captureAt(*state, 200);
        const QUuid second = captureAt(*state, 900);
        finish(*state);
        store->settle();
        const QImage picture = pictureAt(CMTime::make(200, 1000));
        EXPECT_EQ(frameIn(*state, first).thumbnail.image(), picture) << disk;
        EXPECT_EQ(frameIn(*state, second).thumbnail.image(), pictureAt(CMTime::make(900, 1000)));
        const QImage subject = frameIn(*state, first).subjectPreview.image();
        EXPECT_EQ(subject.pixelColor(50, 50), picture.pixelColor(50, 50));
        EXPECT_EQ(subject.pixelColor(150, 50).alpha(), 0);
    }
}

TEST_F(AppStateWorkTest, ARenderingIsWhatTheRendererMakesOfTheSubject) {
    const QUuid id = capture(QStringLiteral("A"), 0);
    gate->open(1);
    finish(*state);
    EdgeOptions options;
    options.shrink = 3;
    options.outline = true;
    state->setEdgeOptions(options);
    const CapturedFrame frame = frameIn(*state, id);
    const QImage rendered = await(state->rendered(frame, FilterStyle::poster));
    EXPECT_EQ(rendered, ExtractRenderer::make().render(frame.subjectPreview.image(),
                                                       FilterStyle::poster, options.params()));
}

TEST_F(AppStateWorkTest, ARenderingTakesTheSettingsOfTheMomentOfTheCall) {
    const QUuid id = capture(QStringLiteral("A"), 0);
    gate->open(1);
    finish(*state);
    const CapturedFrame frame = frameIn(*state, id);
    auto rendering = state->rendered(frame, FilterStyle::none);
    EdgeOptions options;
    options.shrink = 12;
    state->setEdgeOptions(options);
    EXPECT_EQ(await(std::move(rendering)), frame.subjectPreview.image());
}

TEST_F(AppStateWorkTest, WithoutASubjectAndAfterAStopThereIsNoRendering) {
    const QUuid id = capture(QStringLiteral("A"), 0);
    EXPECT_TRUE(await(state->rendered(frameIn(*state, id), FilterStyle::none)).isNull());
    gate->open(1);
    finish(*state);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(
        await(state->rendered(frameIn(*state, id), FilterStyle::none, stop.get_token())).isNull());
}

} // namespace

} // namespace stillwick::testing
