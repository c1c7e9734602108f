// The program itself, as a person calls it.
#include "ForkedChild.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <sys/wait.h>

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

TEST(Program, WithoutAScreenItSaysThatTheWindowCannotOpen) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromUtf8(name));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(STILLWICK_PROGRAM), QStringList());
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 2);
    EXPECT_TRUE(QString::fromUtf8(process.readAllStandardError())
                    .startsWith(QStringLiteral("Aucun écran")));
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

QStringList filesBelow(const QString& folder) {
    QStringList files;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext())
        files.append(QDir(folder).relativeFilePath(entries.next()));
    files.sort();
    return files;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(Program, GroupsGetFoldersNotesAndIndexes) {
    const QTemporaryDir folder;
    const QStringList words =
        QStringLiteral("--style;comic;--outline;6;--outline-color;#ff0000;--crop;"
                       "--group;Plan A/B;--group-note;première\nséance;--at;1;--note;vue de face;"
                       "--at;2;--group;Plan C;--at;3;-o")
            .split(u';');
    const Ending ending =
        run(QStringList{QStringLiteral("capture"), sample} + words + QStringList{folder.path()});
    EXPECT_EQ(ending.status, 0) << ending.complaints.toStdString();
    EXPECT_EQ(filesBelow(folder.path()),
              QStringList({QStringLiteral("Plan A-B/Plan A-B.md"),
                           QStringLiteral("Plan A-B/balles_00-00-01-000.png"),
                           QStringLiteral("Plan A-B/balles_00-00-02-000.png"),
                           QStringLiteral("Plan C/Plan C.md"),
                           QStringLiteral("Plan C/balles_00-00-03-000.png")}));
    EXPECT_EQ(QString::fromUtf8(contentOf(folder.filePath(QStringLiteral("Plan A-B/Plan A-B.md")))),
              "# Plan A/B\n\npremière\nséance\n\n## Images\n"
              "- [balles_00-00-01-000.png](balles_00-00-01-000.png) — 00:01.000\n"
              "  > vue de face\n"
              "- [balles_00-00-02-000.png](balles_00-00-02-000.png) — 00:02.000\n");
    EXPECT_EQ(ending.output.count(u'\n'), 5); // each file is named
    const QImage picture(folder.filePath(QStringLiteral("Plan C/balles_00-00-03-000.png")));
    int red = 0;
    for (int x = 0; x < picture.width(); ++x)
        red += (picture.pixel(x, 2) | 0xff000000U) == 0xffff0000U ? 1 : 0;
    EXPECT_GT(red, 10); // the outline touches the cropped picture's border
}

TEST(Program, ControlCStopsBetweenCapturesAndSaysWhatWasWritten) {
    const QTemporaryDir folder;
    QStringList words{QStringLiteral("capture"), sample, QStringLiteral("-o"), folder.path()};
    for (int i = 0; i < 39; ++i)
        words += {QStringLiteral("--at"), QStringLiteral("%1/10").arg(i)};
    QProcess process;
    process.start(QStringLiteral(STILLWICK_PROGRAM), words);
    ASSERT_TRUE(process.waitForReadyRead(60'000)); // the first file is named
    ::kill(pid_t(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished(60'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 130);
    const QString named = QString::fromUtf8(process.readAllStandardOutput());
    const QStringList files = filesBelow(folder.path());
    EXPECT_LT(files.size(), 39);
    EXPECT_EQ(named.count(u'\n'), files.size());
    for (const QString& file : files) {
        EXPECT_TRUE(named.contains(folder.filePath(file) + u'\n'));
        EXPECT_EQ(QImage(folder.filePath(file)).size(), QSize(1280, 720)) << file.toStdString();
    }
    EXPECT_EQ(QString::fromUtf8(process.readAllStandardError()),
              QStringLiteral("Interrompu après %1 instant(s) sur 39 : %1 fichier(s) écrit(s) dans "
                             "« %2 ».\n")
                  .arg(files.size())
                  .arg(folder.path()));
}

TEST(Program, ASavedProjectExportsTheVerySameFiles) {
    const QTemporaryDir folder;
    const QString direct = folder.filePath(QStringLiteral("direct"));
    const QString project = folder.filePath(QStringLiteral("séance.stillwick"));
    const Ending captured = run({QStringLiteral("capture"),
                                 sample,
                                 QStringLiteral("--group"),
                                 QStringLiteral("Départ"),
                                 QStringLiteral("--group-note"),
                                 QStringLiteral("Essai"),
                                 QStringLiteral("--at"),
                                 QStringLiteral("1"),
                                 QStringLiteral("--note"),
                                 QStringLiteral("haut"),
                                 QStringLiteral("--at"),
                                 QStringLiteral("1001/500"),
                                 QStringLiteral("--group"),
                                 QStringLiteral("Fin"),
                                 QStringLiteral("--at"),
                                 QStringLiteral("3.5"),
                                 QStringLiteral("--style"),
                                 QStringLiteral("comic"),
                                 QStringLiteral("--outline"),
                                 QStringLiteral("5"),
                                 QStringLiteral("--outline-color"),
                                 QStringLiteral("#ff800040"),
                                 QStringLiteral("--crop"),
                                 QStringLiteral("-o"),
                                 direct,
                                 QStringLiteral("--save"),
                                 project});
    ASSERT_EQ(captured.status, 0) << captured.complaints.toStdString();
    EXPECT_TRUE(captured.output.endsWith(project + u'\n'));
    const QString again = folder.filePath(QStringLiteral("again"));
    const Ending exported = run({QStringLiteral("export"), project, QStringLiteral("-o"), again});
    ASSERT_EQ(exported.status, 0) << exported.complaints.toStdString();
    ASSERT_EQ(filesBelow(again), filesBelow(direct));
    EXPECT_EQ(filesBelow(again).size(), 5);
    for (const QString& file : filesBelow(direct))
        EXPECT_EQ(contentOf(QDir(again).filePath(file)), contentOf(QDir(direct).filePath(file)))
            << file.toStdString();
}

TEST(Program, AProjectExportsIntoItsOwnFolderUnlessTold) {
    const QTemporaryDir folder;
    const QString project = folder.filePath(QStringLiteral("p.stillwick"));
    const Ending captured = run({QStringLiteral("capture"), sample, QStringLiteral("--at"),
                                 QStringLiteral("1"), QStringLiteral("-o"), QStringLiteral("out"),
                                 QStringLiteral("--save"), QStringLiteral("p.stillwick")},
                                folder.path());
    ASSERT_EQ(captured.status, 0) << captured.complaints.toStdString();
    const QString picture = folder.filePath(QStringLiteral("out/balles_00-00-01-000.png"));
    ASSERT_TRUE(QFile::remove(picture));
    EXPECT_EQ(run({QStringLiteral("export"), project}).status, 0);
    EXPECT_TRUE(QFile::exists(picture));
}

TEST(Program, AProjectWhoseFilmIsGoneEndsWithTwo) {
    const QTemporaryDir folder;
    const QString film = folder.filePath(QStringLiteral("film.mp4"));
    const QString project = folder.filePath(QStringLiteral("p.stillwick"));
    ASSERT_TRUE(QFile::copy(sample, film));
    ASSERT_EQ(run({QStringLiteral("capture"), film, QStringLiteral("--at"), QStringLiteral("1"),
                   QStringLiteral("-o"), folder.path(), QStringLiteral("--save"), project})
                  .status,
              0);
    ASSERT_TRUE(QFile::remove(film));
    const Ending ending = run({QStringLiteral("export"), project});
    EXPECT_EQ(ending.status, 2);
    EXPECT_EQ(ending.complaints,
              QStringLiteral("Vidéo introuvable. Rouvrez-la via « Ouvrir une vidéo ».\n"));
}

TEST(Program, AProjectThatCannotBeReadOrSavedSaysWhy) {
    const QTemporaryDir folder;
    const Ending missing =
        run({QStringLiteral("export"), folder.filePath(QStringLiteral("absent.stillwick"))});
    EXPECT_EQ(missing.status, 2);
    EXPECT_TRUE(missing.complaints.startsWith(QStringLiteral("Échec de l'ouverture : ")));
    const Ending unsaved =
        run({QStringLiteral("capture"), sample, QStringLiteral("--at"), QStringLiteral("1"),
             QStringLiteral("-o"), folder.path(), QStringLiteral("--save"),
             folder.filePath(QStringLiteral("absent/p.stillwick"))});
    EXPECT_EQ(unsaved.status, 1) << "the pictures are there, the project is not";
    EXPECT_TRUE(unsaved.complaints.startsWith(QStringLiteral("Échec de l'enregistrement : ")));
}

TEST(Program, AFullDiskFailsTheCapturesThatDoNotFitAndLeavesNoHalfFile) {
    const QTemporaryDir folder;
    const QString disk = folder.filePath(QStringLiteral("disk"));
    ASSERT_TRUE(QDir().mkpath(disk));
    const std::string report = stillwick::inChild([&]() -> std::string {
        // A cut-out takes about 130 kB.
        if (const auto obstacle = stillwick::mountSmallDisk(disk.toStdString(), "200k");
            !obstacle.empty())
            return "skip " + obstacle;
        const std::string command = "'" STILLWICK_PROGRAM "' capture '" + sample.toStdString() +
                                    "' --at 1 --at 2 --at 3 -o '" + disk.toStdString() +
                                    "/stills' 2>'" + folder.path().toStdString() +
                                    "/complaints' >/dev/null";
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the child has one thread
        const int status = std::system(command.c_str());
        const QStringList files = filesBelow(disk);
        const bool isWhole =
            files.size() == 1 && QImage(disk + u'/' + files.first()).size() == QSize(1280, 720);
        return std::to_string(WEXITSTATUS(status)) + (isWhole ? " whole" : " broken");
    });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_EQ(report, "1 whole");
    EXPECT_EQ(QString::fromUtf8(contentOf(folder.filePath(QStringLiteral("complaints")))),
              "00:02.000 — Échec de l'export : Le disque est plein.\n"
              "00:03.000 — Échec de l'export : Le disque est plein.\n");
}

} // namespace
