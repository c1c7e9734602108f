// The program itself, as a person calls it.
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString sample =
    QStringLiteral(STILLWICK_SOURCE_DIR "/Samples/balles.mp4"); // 30 pictures a second, 4 s

struct Ending {
    int status = -1;
    QString output;
    QString complaints;
};

Ending run(const QStringList& arguments, const QString& workingFolder = {}) {
    QProcess process;
    process.setWorkingDirectory(workingFolder);
    process.start(QStringLiteral(STILLWICK_PROGRAM), arguments);
    constexpr int twoMinutes = 120'000;
    if (!process.waitForFinished(twoMinutes) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

int coveredPixels(const QImage& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) > 127 ? 1 : 0;
    }
    return count;
}

TEST(Program, StillWritesTheWholePictureAndNamesIt) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("image.png"));
    const Ending ending = run({QStringLiteral("still"), sample, QStringLiteral("--at"),
                               QStringLiteral("00:01.000"), QStringLiteral("-o"), file});
    EXPECT_EQ(ending.status, 0) << ending.complaints.toStdString();
    EXPECT_EQ(ending.output, file + u'\n');
    const QImage picture(file);
    EXPECT_EQ(picture.size(), QSize(1280, 720));
    EXPECT_EQ(coveredPixels(picture), 1280 * 720);
}

TEST(Program, CaptureMakesItsFolderAndLiftsTheSubjects) {
    const QTemporaryDir folder;
    const QString stills = folder.filePath(QStringLiteral("a/stills"));
    const Ending ending = run({QStringLiteral("capture"), sample, QStringLiteral("--at"),
                               QStringLiteral("1"), QStringLiteral("-o"), stills});
    EXPECT_EQ(ending.status, 0) << ending.complaints.toStdString();
    EXPECT_EQ(ending.output, stills + QStringLiteral("/balles_00-00-01-000.png\n"));
    const QImage cutOut(stills + QStringLiteral("/balles_00-00-01-000.png"));
    EXPECT_EQ(cutOut.size(), QSize(1280, 720));
    // Two balls of radius 135 and 105: 57256 and 34636 pixels.
    EXPECT_NEAR(coveredPixels(cutOut), 57256 + 34636, 2500);
}

TEST(Program, PerSubjectWritesOneCroppedFileForEach) {
    const QTemporaryDir folder;
    const Ending ending =
        run({QStringLiteral("capture"), sample, QStringLiteral("--at"), QStringLiteral("1"),
             QStringLiteral("-o"), folder.path(), QStringLiteral("--mode"),
             QStringLiteral("perSubject"), QStringLiteral("--crop")});
    EXPECT_EQ(ending.status, 0) << ending.complaints.toStdString();
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files, QDir::Name),
              QStringList({QStringLiteral("balles_00-00-01-000_s1.png"),
                           QStringLiteral("balles_00-00-01-000_s2.png")}));
    const QImage left(folder.filePath(QStringLiteral("balles_00-00-01-000_s1.png")));
    const QImage right(folder.filePath(QStringLiteral("balles_00-00-01-000_s2.png")));
    constexpr double tolerance = 8; // the soft edge, on both sides
    EXPECT_NEAR(left.width(), 271, tolerance);
    EXPECT_NEAR(left.height(), 271, tolerance);
    EXPECT_NEAR(right.width(), 211, tolerance);
    EXPECT_NEAR(right.height(), 211, tolerance);
}

TEST(Program, AFailedCaptureIsToldAndTheOthersAreMade) {
    const QTemporaryDir folder;
    const Ending ending =
        run({QStringLiteral("capture"), sample, QStringLiteral("--at"), QStringLiteral("9"),
             QStringLiteral("--at"), QStringLiteral("2"), QStringLiteral("-o"), folder.path()});
    EXPECT_EQ(ending.status, 1);
    EXPECT_EQ(ending.output, folder.filePath(QStringLiteral("balles_00-00-02-000.png\n")));
    EXPECT_EQ(ending.complaints, QStringLiteral("00:09.000 — Échec de l'extraction de l'image : "
                                                "Il n'y a pas d'image à cet instant.\n"));
}

TEST(Program, AMissingFilmEndsWithTwo) {
    const Ending ending =
        run({QStringLiteral("still"), QStringLiteral("/nowhere/film.mp4"), QStringLiteral("--at"),
             QStringLiteral("1"), QStringLiteral("-o"), QStringLiteral("/nowhere/x.png")});
    EXPECT_EQ(ending.status, 2);
    EXPECT_TRUE(ending.output.isEmpty());
    EXPECT_EQ(ending.complaints,
              QStringLiteral("/nowhere/film.mp4 — Le fichier est introuvable.\n"));
}

TEST(Program, AFolderThatCannotBeMadeEndsWithTwo) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const Ending ending =
        run({QStringLiteral("capture"), sample, QStringLiteral("--at"), QStringLiteral("1"),
             QStringLiteral("-o"), file.fileName() + QStringLiteral("/stills")});
    EXPECT_EQ(ending.status, 2);
    EXPECT_TRUE(ending.complaints.contains(file.fileName()));
}

TEST(Program, ABadOptionNamesItselfAndShowsTheUsage) {
    const Ending ending = run({QStringLiteral("capture"), sample, QStringLiteral("--fast")});
    EXPECT_EQ(ending.status, 2);
    EXPECT_TRUE(ending.complaints.startsWith(QStringLiteral("Option inconnue : « --fast ».")));
    EXPECT_TRUE(ending.complaints.contains(QStringLiteral("Utilisation :")));
    EXPECT_TRUE(ending.output.isEmpty());
}

TEST(Program, WithoutACommandItSaysThatTheWindowIsStillToCome) {
    const Ending ending = run({});
    EXPECT_EQ(ending.status, 2);
    EXPECT_TRUE(ending.complaints.startsWith(QStringLiteral("La fenêtre n'existe pas encore")));
}

TEST(Program, HelpGoesToStandardOutput) {
    const Ending ending = run({QStringLiteral("--help")});
    EXPECT_EQ(ending.status, 0);
    EXPECT_TRUE(ending.output.startsWith(QStringLiteral("Utilisation :")));
}

TEST(Program, APathIsWrittenAsItWasGiven) {
    const QTemporaryDir folder;
    const Ending ending =
        run({QStringLiteral("still"), sample, QStringLiteral("--at"), QStringLiteral("0"),
             QStringLiteral("-o"), QStringLiteral("été.png")},
            folder.path());
    EXPECT_EQ(ending.status, 0) << ending.complaints.toStdString();
    EXPECT_EQ(ending.output, QStringLiteral("été.png\n"));
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("été.png"))));
}

} // namespace
