#include "Stillwick/BatchExportService.h"

#include "Await.h"
#include "ColumnSegmenter.h"
#include "Media/MediaAsset.h"
#include "Stillwick/AnnotationRenderer.h"
#include "Stillwick/AppError.h"
#include "Stillwick/ImageCrop.h"
#include "Stillwick/ProjectStore.h"
#include "Stillwick/SubjectExtractionService.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

namespace stillwick {
namespace {

using Placement = ExportGroup::Placement;

const QString sample = QStringLiteral(STILLWICK_SOURCE_DIR "/Samples/balles.mp4");

/// A mark from the picture's left border to its right, far above the ball.
Annotation topLine() {
    Annotation line;
    line.kind = AnnotationKind::line;
    line.start = {0, 0.02};
    line.end = {1, 0.02};
    line.a = 1;
    line.lineWidth = 0.01;
    return line;
}

CapturedFrame frameAt(std::int64_t milliseconds, const QString& note = {},
                      const QList<Annotation>& annotations = {}) {
    return {CMTime::make(milliseconds, 1000), {}, {}, false, note, annotations};
}

class BatchExportServiceTest : public ::testing::Test {
protected:
    BatchExportServiceTest() {
        auto asset = std::make_shared<const MediaAsset>(sample);
        asset->open();
        m_extractor.prepare(std::move(asset));
        m_job.videoName = QStringLiteral("balles");
        m_job.outputFolder = m_folder.filePath(QStringLiteral("sortie"));
    }

    [[nodiscard]] BatchExportService service() const {
        return {m_extractor, std::make_shared<SubjectExtractionService>(m_segmenter),
                ImageExportService(), m_renderer};
    }

    /// Runs the job to its end; what was told stands in `m_log`, in order.
    void run(std::stop_token stop = {}) {
        QCoro::waitFor(service().run(m_job, events(), std::move(stop)));
    }

    ExportEvents events() {
        return {[this](int count) {
                    isOnMainThread();
                    m_log.append(QStringLiteral("%1").arg(count));
                    if (m_afterProgress)
                        m_afterProgress(count);
                },
                [this](const ExportFailure& failure) {
                    isOnMainThread();
                    m_log.append(failure.timestamp + QStringLiteral(" — ") + failure.message);
                },
                [this](const QString& path) {
                    isOnMainThread();
                    m_written.append(QDir(m_folder.path()).relativeFilePath(path));
                }};
    }

    static void isOnMainThread() {
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
    }

    /// All files and folders that exist, as paths from the output folder.
    [[nodiscard]] QStringList tree(const QString& folder = {}) const {
        const QDir dir(m_job.outputFolder + u'/' + folder);
        QStringList names;
        for (const QFileInfo& entry : dir.entryInfoList(
                 QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name)) {
            names.append(folder + entry.fileName() +
                         (entry.isDir() ? QStringLiteral("/") : QString()));
            if (entry.isDir())
                names += tree(names.last());
        }
        return names;
    }

    [[nodiscard]] QString text(const QString& file) const {
        QFile opened(m_job.outputFolder + u'/' + file);
        return opened.open(QIODevice::ReadOnly) ? QString::fromUtf8(opened.readAll()) : QString();
    }

    [[nodiscard]] QImage picture(const QString& file) const {
        return QImage(m_job.outputFolder + u'/' + file);
    }

    QTemporaryDir m_folder;
    VideoFrameExtractorService m_extractor;
    std::shared_ptr<const ForegroundSegmenter> m_segmenter =
        std::make_shared<const testing::ColumnSegmenter>(std::vector{300, 200, 100});
    ExtractRenderer m_renderer = ExtractRenderer::make();
    ExportJob m_job;
    std::function<void(int)> m_afterProgress;
    QStringList m_log;
    QStringList m_written;
};

TEST_F(BatchExportServiceTest, AnEmptyGroupWithAFolderGetsItAndAnEmptyIndex) {
    m_job.groups = {{QStringLiteral("Plan A"), {}, {}, Placement::subfolder}};
    run();
    EXPECT_EQ(tree(), QStringList({QStringLiteral("Plan A/"), QStringLiteral("Plan A/Plan A.md")}));
    EXPECT_EQ(text(QStringLiteral("Plan A/Plan A.md")), "# Plan A\n\n## Images\n_Aucune image_\n");
    EXPECT_TRUE(m_log.isEmpty());
}

TEST_F(BatchExportServiceTest, AnEmptyGroupWithoutFolderAndNotesWritesNothing) {
    m_job.groups = {{QStringLiteral("Captures"), {}, {}, Placement::outputFolder}};
    run();
    EXPECT_TRUE(tree().isEmpty());
    EXPECT_TRUE(m_written.isEmpty());
}

TEST_F(BatchExportServiceTest, WithoutNotesThereIsNoIndexInTheOutputFolder) {
    m_job.groups = {{QStringLiteral("Captures"), {}, {frameAt(1000)}, Placement::outputFolder}};
    run();
    EXPECT_EQ(tree(), QStringList(QStringLiteral("balles_00-00-01-000.png")));
}

TEST_F(BatchExportServiceTest, OneNotedCaptureGivesTheGroupAnIndexInTheOutputFolder) {
    m_job.groups = {{QStringLiteral("Plan A"),
                     {},
                     {frameAt(1000), frameAt(1500, QStringLiteral("vue\nde face "))},
                     Placement::outputFolder}};
    run();
    EXPECT_EQ(tree(),
              QStringList({QStringLiteral("Plan A.md"), QStringLiteral("balles_00-00-01-000.png"),
                           QStringLiteral("balles_00-00-01-500.png")}));
    EXPECT_EQ(text(QStringLiteral("Plan A.md")),
              "# Plan A\n\n## Images\n"
              "- [balles_00-00-01-000.png](balles_00-00-01-000.png) — 00:01.000\n"
              "- [balles_00-00-01-500.png](balles_00-00-01-500.png) — 00:01.500\n"
              "  > vue de face\n");
    EXPECT_EQ(m_log, QStringList({QStringLiteral("1"), QStringLiteral("2")}));
    EXPECT_EQ(m_written, QStringList({QStringLiteral("sortie/balles_00-00-01-000.png"),
                                      QStringLiteral("sortie/balles_00-00-01-500.png"),
                                      QStringLiteral("sortie/Plan A.md")}));
}

TEST_F(BatchExportServiceTest, GroupNotesStandInTheIndexAsTheyWereTyped) {
    m_job.groups = {{QStringLiteral("Plan A: essai"),
                     QStringLiteral(" a\n\nb\n"),
                     {frameAt(0)},
                     Placement::outputFolder}};
    run();
    EXPECT_EQ(text(QStringLiteral("Plan A- essai.md")),
              "# Plan A: essai\n\n a\n\nb\n\n\n## Images\n"
              "- [balles_00-00-00-000.png](balles_00-00-00-000.png) — 00:00.000\n");
}

TEST_F(BatchExportServiceTest, ABlankNoteMakesAnIndexButNoQuote) {
    m_job.groups = {
        {QStringLiteral("G"), {}, {frameAt(0, QStringLiteral(" \n "))}, Placement::outputFolder}};
    run();
    EXPECT_EQ(text(QStringLiteral("G.md")),
              "# G\n\n## Images\n- [balles_00-00-00-000.png](balles_00-00-00-000.png) — "
              "00:00.000\n");
}

TEST_F(BatchExportServiceTest, EachSubjectGetsAFileAndALineAndTheCaptureCountsOnce) {
    m_job.mode = ExportMode::perSubject;
    m_job.groups = {
        {QStringLiteral("G"), {}, {frameAt(500, QStringLiteral("trois"))}, Placement::subfolder}};
    run();
    EXPECT_EQ(tree(QStringLiteral("G/")),
              QStringList({QStringLiteral("G/G.md"), QStringLiteral("G/balles_00-00-00-500_s1.png"),
                           QStringLiteral("G/balles_00-00-00-500_s2.png"),
                           QStringLiteral("G/balles_00-00-00-500_s3.png")}));
    EXPECT_EQ(text(QStringLiteral("G/G.md")),
              "# G\n\n## Images\n"
              "- [balles_00-00-00-500_s1.png](balles_00-00-00-500_s1.png) — 00:00.500\n"
              "  > trois\n"
              "- [balles_00-00-00-500_s2.png](balles_00-00-00-500_s2.png) — 00:00.500\n"
              "  > trois\n"
              "- [balles_00-00-00-500_s3.png](balles_00-00-00-500_s3.png) — 00:00.500\n"
              "  > trois\n");
    EXPECT_EQ(m_log, QStringList(QStringLiteral("1")));
}

// The columns are 300, 200 and 100 wide, in a picture of 1280 x 720.
TEST_F(BatchExportServiceTest, CroppedSubjectsAreCutEachToItsOwn) {
    m_job.mode = ExportMode::perSubject;
    m_job.crop = true;
    m_job.groups = {
        {QStringLiteral("G"), {}, {frameAt(0, {}, {topLine()})}, Placement::outputFolder}};
    run();
    EXPECT_EQ(picture(QStringLiteral("balles_00-00-00-000_s1.png")).size(), QSize(300, 720));
    EXPECT_EQ(picture(QStringLiteral("balles_00-00-00-000_s3.png")).size(), QSize(100, 720));
    // Marks are not burnt into single subjects.
    EXPECT_NE(picture(QStringLiteral("balles_00-00-00-000_s1.png")).pixelColor(100, 14),
              QColor(Qt::black));
}

TEST_F(BatchExportServiceTest, AMergedCropHoldsTheMarksToo) {
    m_job.crop = true;
    m_job.groups = {{QStringLiteral("G"),
                     {},
                     {frameAt(0), frameAt(100, {}, {topLine()})},
                     Placement::outputFolder}};
    run();
    EXPECT_EQ(picture(QStringLiteral("balles_00-00-00-000.png")).size(), QSize(600, 720));
    EXPECT_EQ(picture(QStringLiteral("balles_00-00-00-100.png")).size(), QSize(1280, 720));
}

TEST_F(BatchExportServiceTest, AMergedPictureIsLiftedRenderedMarkedAndTrimmedInThatOrder) {
    m_segmenter = standardSegmenter();
    m_job.crop = true;
    m_job.filter = FilterStyle::poster;
    m_job.edge = {1.5, 1, true, 5, 1, 0, 0, 1};
    m_job.groups = {
        {QStringLiteral("G"), {}, {frameAt(1000, {}, {topLine()})}, Placement::outputFolder}};
    run();
    const QImage frame = testing::await(m_extractor.image(CMTime::make(1, 1)));
    const QImage lifted =
        SubjectExtractionService(m_segmenter).extractNow(frame, ExportMode::merged, false).front();
    const QImage expected = ImageCrop::trimmedToContent(
        AnnotationRenderer::draw({topLine()}, m_renderer.render(lifted, m_job.filter, m_job.edge)));
    EXPECT_EQ(
        picture(QStringLiteral("balles_00-00-01-000.png")).convertToFormat(QImage::Format_RGBA8888),
        expected);
}

TEST_F(BatchExportServiceTest, ACaptureWithoutSubjectIsToldBeforeItIsCountedAndTheNextFollows) {
    m_segmenter = testing::blindSegmenter();
    m_job.groups = {{QStringLiteral("A"), {}, {frameAt(0), frameAt(1000)}, Placement::subfolder},
                    {QStringLiteral("B"), {}, {frameAt(2000)}, Placement::subfolder}};
    run();
    const QString message = QStringLiteral(" — Aucun sujet détecté dans cette image.");
    EXPECT_EQ(m_log, QStringList({QStringLiteral("00:00.000") + message, QStringLiteral("1"),
                                  QStringLiteral("00:01.000") + message, QStringLiteral("2"),
                                  QStringLiteral("00:02.000") + message, QStringLiteral("3")}));
    EXPECT_EQ(text(QStringLiteral("A/A.md")), "# A\n\n## Images\n_Aucune image_\n");
}

TEST_F(BatchExportServiceTest, ATimeBeyondTheFilmFailsAloneAndProgressIsWhole) {
    m_job.groups = {{QStringLiteral("A"),
                     {},
                     {frameAt(0), frameAt(99'000), frameAt(1000)},
                     Placement::subfolder}};
    run();
    EXPECT_EQ(m_log,
              QStringList({QStringLiteral("1"),
                           QStringLiteral("01:39.000 — Échec de l'extraction de l'image : Il n'y a "
                                          "pas d'image à cet instant."),
                           QStringLiteral("2"), QStringLiteral("3")}));
    EXPECT_EQ(tree(QStringLiteral("A/")).size(), 3);
}

TEST_F(BatchExportServiceTest, WithoutAFilmEveryCaptureFails) {
    m_extractor = VideoFrameExtractorService();
    m_job.groups = {{QStringLiteral("A"), {}, {frameAt(0)}, Placement::outputFolder}};
    run();
    EXPECT_EQ(m_log, QStringList({QStringLiteral("00:00.000 — Aucune vidéo chargée."),
                                  QStringLiteral("1")}));
}

TEST_F(BatchExportServiceTest, GroupsWhoseFolderNamesAgreeShareOneAndTheSecondIndexStays) {
    m_job.groups = {{QStringLiteral("A/B"), {}, {frameAt(0)}, Placement::subfolder},
                    {QStringLiteral("A:B"), {}, {frameAt(1000)}, Placement::subfolder}};
    run();
    EXPECT_EQ(tree(), QStringList({QStringLiteral("A-B/"), QStringLiteral("A-B/A-B.md"),
                                   QStringLiteral("A-B/balles_00-00-00-000.png"),
                                   QStringLiteral("A-B/balles_00-00-01-000.png")}));
    EXPECT_EQ(text(QStringLiteral("A-B/A-B.md")),
              "# A:B\n\n## Images\n"
              "- [balles_00-00-01-000.png](balles_00-00-01-000.png) — 00:01.000\n");
}

TEST_F(BatchExportServiceTest, AGroupWhoseNameLeadsUpwardsWritesNothingAnywhere) {
    for (const QString& name : {QStringLiteral(".."), QStringLiteral("."), QString(QChar(0))}) {
        m_log.clear();
        m_job.groups = {{name, QStringLiteral("notes"), {frameAt(0)}, Placement::subfolder},
                        {QStringLiteral("B"), {}, {}, Placement::subfolder}};
        run();
        ASSERT_EQ(m_log.size(), 2);
        EXPECT_TRUE(m_log[0].contains(
            QStringLiteral("ne peut pas être le nom d'un fichier ou d'un dossier.")))
            << m_log[0].toStdString();
        EXPECT_EQ(m_log[1], "1");
        EXPECT_EQ(tree(), QStringList({QStringLiteral("B/"), QStringLiteral("B/B.md")}));
        EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList(QStringLiteral("sortie")));
    }
}

TEST_F(BatchExportServiceTest, AFilmNameWithASlashWritesNothingOutside) {
    m_job.videoName = QStringLiteral("../balles");
    m_job.groups = {{QStringLiteral("A"), {}, {frameAt(0)}, Placement::outputFolder}};
    run();
    ASSERT_EQ(m_log.size(), 2);
    EXPECT_EQ(m_log[0],
              "00:00.000 — Échec de l'export : « ../balles_00-00-00-000.png » ne peut pas "
              "être le nom d'un fichier ou d'un dossier.");
    EXPECT_TRUE(tree().isEmpty());
}

TEST_F(BatchExportServiceTest, ANameTooLongFailsItsCapturesAlone) {
    m_job.groups = {{QString(300, u'x'), {}, {frameAt(0)}, Placement::subfolder},
                    {QStringLiteral("B"), {}, {frameAt(0)}, Placement::subfolder}};
    run();
    ASSERT_EQ(m_log.size(), 3);
    EXPECT_TRUE(m_log[0].startsWith(QStringLiteral("00:00.000 — Échec de l'export : ")));
    EXPECT_EQ(m_log[2], "2");
    EXPECT_EQ(tree(), QStringList({QStringLiteral("B/"), QStringLiteral("B/B.md"),
                                   QStringLiteral("B/balles_00-00-00-000.png")}));
}

TEST_F(BatchExportServiceTest, AFileInTheFoldersPlaceFailsEveryCapture) {
    QFile file(m_job.outputFolder);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    m_job.groups = {{QStringLiteral("A"),
                     QStringLiteral("notes"),
                     {frameAt(0), frameAt(1000)},
                     Placement::subfolder}};
    run();
    ASSERT_EQ(m_log.size(), 4);
    EXPECT_TRUE(m_log[0].startsWith(QStringLiteral("00:00.000 — Échec de l'export : ")));
    EXPECT_TRUE(m_written.isEmpty());
}

TEST_F(BatchExportServiceTest, AnIndexThatCannotBeWrittenIsNotTold) {
    QDir().mkpath(m_job.outputFolder + QStringLiteral("/A.md"));
    m_job.groups = {
        {QStringLiteral("A"), QStringLiteral("notes"), {frameAt(0)}, Placement::outputFolder}};
    run();
    EXPECT_EQ(m_log, QStringList(QStringLiteral("1")));
    EXPECT_EQ(m_written, QStringList(QStringLiteral("sortie/balles_00-00-00-000.png")));
}

TEST_F(BatchExportServiceTest, AFolderThatVanishesFailsWhatFollowsAndIsNotMadeAgain) {
    m_job.groups = {{QStringLiteral("A"), {}, {frameAt(0), frameAt(1000)}, Placement::subfolder}};
    m_afterProgress = [this](int) {
        QDir(m_job.outputFolder).removeRecursively();
    };
    run();
    ASSERT_EQ(m_log.size(), 3);
    EXPECT_EQ(m_log[0], "1");
    EXPECT_TRUE(m_log[1].startsWith(QStringLiteral("00:01.000 — Échec de l'export : ")));
    EXPECT_FALSE(QDir(m_job.outputFolder).exists());
}

TEST_F(BatchExportServiceTest, StoppedItFinishesTheCaptureAndItsIndexAndBeginsNoOther) {
    std::stop_source stop;
    m_job.groups = {{QStringLiteral("A"), {}, {frameAt(0), frameAt(1000)}, Placement::subfolder},
                    {QStringLiteral("B"), {}, {frameAt(2000)}, Placement::subfolder}};
    m_afterProgress = [&stop](int) {
        stop.request_stop();
    };
    run(stop.get_token());
    EXPECT_EQ(m_log, QStringList(QStringLiteral("1")));
    EXPECT_EQ(tree(), QStringList({QStringLiteral("A/"), QStringLiteral("A/A.md"),
                                   QStringLiteral("A/balles_00-00-00-000.png")}));
    EXPECT_EQ(text(QStringLiteral("A/A.md")),
              "# A\n\n## Images\n"
              "- [balles_00-00-00-000.png](balles_00-00-00-000.png) — 00:00.000\n");
}

TEST_F(BatchExportServiceTest, AFilmOpenedInTheMeantimeDoesNotChangeTheExport) {
    m_job.groups = {
        {QStringLiteral("A"), {}, {frameAt(0), frameAt(1000)}, Placement::outputFolder}};
    const BatchExportService running = service();
    auto task = running.run(m_job, events());
    m_extractor.prepare(std::make_shared<const MediaAsset>(QStringLiteral("/nowhere.mp4")));
    QCoro::waitFor(std::move(task));
    EXPECT_EQ(m_log, QStringList({QStringLiteral("1"), QStringLiteral("2")}));
}

/// A group as a state makes it of a project's, in a folder of its own.
ExportGroup exportGroupOf(const GroupDTO& group) {
    QList<CapturedFrame> frames;
    for (const FrameDTO& frame : group.frames)
        frames.append({CMTime::make(frame.timeValue, frame.timeScale),
                       {},
                       {},
                       false,
                       frame.notes,
                       frame.annotations.value_or(QList<Annotation>())});
    return {group.name, group.notes, frames, Placement::subfolder};
}

TEST_F(BatchExportServiceTest, AHostileProjectIsExportedIntoItsFolderAlone) {
    const ProjectFile project = ProjectStore::load(QUrl::fromLocalFile(
        QStringLiteral(STILLWICK_SOURCE_DIR "/Fuzz/projects/hostile.stillwick")));
    int captures = 0;
    for (const GroupDTO& group : project.groups) {
        m_job.groups.append(exportGroupOf(group));
        // One capture that can be made, so that names are put to the test and not times alone.
        m_job.groups.append({group.name, group.notes, {frameAt(500)}, Placement::subfolder});
        captures += int(group.frames.size()) + 1;
    }
    for (const QString& name : {project.videoName, QStringLiteral("balles")}) {
        m_job.videoName = name;
        m_log.clear();
        run();
        EXPECT_EQ(m_log.last(), QString::number(captures));
        EXPECT_EQ(
            QDir(m_folder.path())
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot),
            QStringList(QStringLiteral("sortie")));
    }
    EXPECT_TRUE(tree().contains(QStringLiteral("a-..-..-b/balles_00-00-00-500.png")));
    for (const QString& entry : tree())
        EXPECT_LE(entry.count(u'/'), 1) << entry.toStdString();
}

TEST_F(BatchExportServiceTest, WhatAKilledExportLeftIsClearedAway) {
    QDir().mkpath(m_job.outputFolder);
    QFile left(m_job.outputFolder + QStringLiteral("/.stillwick-0123456789abcdef"));
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    m_job.groups = {{QStringLiteral("Captures"), {}, {frameAt(500)}, Placement::outputFolder}};
    run();
    EXPECT_EQ(tree(), QStringList(QStringLiteral("balles_00-00-00-500.png")));
}

TEST_F(BatchExportServiceTest, AFileOfTheSameNameIsReplaced) {
    m_job.groups = {{QStringLiteral("A"), {}, {frameAt(0), frameAt(0)}, Placement::outputFolder}};
    run();
    EXPECT_EQ(tree().size(), 1);
    EXPECT_EQ(m_log.last(), "2");
}

} // namespace
} // namespace stillwick
