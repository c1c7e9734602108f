// That scripts/damaged-films sees what goes wrong: it is given programs that go wrong.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

// Shell scripts in the program's place: called with still FILM --at TIME -o PICTURE.
constexpr const char* refuses =
    "echo \"$2 — Ce type de fichier n'est pas pris en charge.\" >&2; exit 2\n";
constexpr const char* draws = "ffmpeg -nostdin -v error -f lavfi -i testsrc -frames:v 1 \"$6\"\n";

struct Verdict {
    int status = -1;
    std::string told;
};

class DamagedFilmsTest : public testing::Test {
protected:
    Verdict verdictOn(const QByteArray& program, const QStringList& options = {}) {
        const QString path = folder.filePath(QStringLiteral("program"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/bash\n" + program);
        file.close();
        EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QProcess script;
        script.setProcessChannelMode(QProcess::MergedChannels);
        script.start(QStringLiteral(DAMAGED_FILMS),
                     QStringList{QStringLiteral("--program"), path, QStringLiteral("--damage"),
                                 QStringLiteral(DAMAGE_FILM), QStringLiteral("--clips"),
                                 QStringLiteral(STILLWICK_CLIPS), QStringLiteral("--keep"),
                                 kept()} +
                         options + QStringList{QStringLiteral("2")});
        constexpr int twoMinutes = 120'000;
        EXPECT_TRUE(script.waitForFinished(twoMinutes));
        return {script.exitCode(), script.readAll().toStdString()};
    }
    void expectWrong(const QByteArray& program, const char* what, const QStringList& options = {}) {
        const Verdict verdict = verdictOn(program, options);
        EXPECT_EQ(verdict.status, 1) << verdict.told;
        EXPECT_THAT(verdict.told, HasSubstr(what));
        EXPECT_THAT(verdict.told, HasSubstr("seed 1, film 0 ("));
        EXPECT_THAT(verdict.told, HasSubstr("seed 1, film 1 ("));
        EXPECT_THAT(verdict.told, HasSubstr("2 went wrong"));
        EXPECT_EQ(QDir(kept()).entryList(QDir::Files).size(), 2);
    }
    [[nodiscard]] QString kept() const { return folder.filePath(QStringLiteral("kept")); }

    QTemporaryDir folder;
};

TEST_F(DamagedFilmsTest, ARefusalInDocumentedWordsIsRight) {
    const Verdict verdict = verdictOn(refuses);
    EXPECT_EQ(verdict.status, 0) << verdict.told;
    EXPECT_THAT(verdict.told, HasSubstr("2 damaged films: 0 gave a picture, 2 were refused"));
    EXPECT_FALSE(QDir(kept()).exists());
}

TEST_F(DamagedFilmsTest, AWholePictureIsRight) {
    const Verdict verdict = verdictOn(draws);
    EXPECT_EQ(verdict.status, 0) << verdict.told;
    EXPECT_THAT(verdict.told, HasSubstr("2 gave a picture, 0 were refused, 0 went wrong"));
}

TEST_F(DamagedFilmsTest, ACrashIsReported) {
    expectWrong("kill -SEGV $$\n", "exit status -11");
}

TEST_F(DamagedFilmsTest, AProgramThatNeverEndsIsReported) {
    const QStringList bound{QStringLiteral("--seconds"), QStringLiteral("0.05")};
    expectWrong("exec sleep 100\n", "; exit status -9", bound);
}

TEST_F(DamagedFilmsTest, AProgramThatRunsOnAndOnIsReported) {
    const QStringList bound{QStringLiteral("--seconds"), QStringLiteral("0.5")};
    expectWrong("while :; do :; done\n", "took ", bound);
}

TEST_F(DamagedFilmsTest, AProgramThatIsSlowIsReported) {
    const QStringList bound{QStringLiteral("--seconds"), QStringLiteral("1")};
    expectWrong(QByteArray("exec python3 -c 'import sys, time\n"
                           "while time.process_time() < 1.5: pass\n"
                           "sys.stderr.write(sys.argv[1] + \" — Le fichier est vide.\\n\")\n"
                           "sys.exit(2)' \"$2\"\n"),
                "took 1.", bound);
}

TEST_F(DamagedFilmsTest, AProgramThatTakesMuchMemoryIsReported) {
    const QStringList bound{QStringLiteral("--megabytes"), QStringLiteral("100")};
    expectWrong(QByteArray("python3 -c 'len(b\"x\" * (200 << 20))'\n") + refuses, "held 2", bound);
}

TEST_F(DamagedFilmsTest, APictureThatIsNotWholeIsReported) {
    expectWrong(QByteArray(draws) + "truncate -s -12 \"$6\"\n", "the picture: cut off");
}

TEST_F(DamagedFilmsTest, APictureWithAChangedByteIsReported) {
    expectWrong(QByteArray(draws) +
                    "printf x | dd of=\"$6\" bs=1 seek=60 conv=notrunc status=none\n",
                "the picture: checksum of");
}

TEST_F(DamagedFilmsTest, NoPictureWhereOneIsPromisedIsReported) {
    expectWrong("exit 0\n", "the picture: there is none");
}

TEST_F(DamagedFilmsTest, APictureInSpiteOfARefusalIsReported) {
    expectWrong(QByteArray(draws) + refuses, "left x.png");
}

TEST_F(DamagedFilmsTest, AFileThatIsLeftBesideIsReported) {
    expectWrong(QByteArray("touch \"${6%/*}/.stillwick-0123456789abcdef\"\n") + refuses,
                "left .stillwick-0123456789abcdef");
}

TEST_F(DamagedFilmsTest, ARefusalWithoutAWordIsReported) {
    expectWrong("exit 2\n", "told ''");
}

TEST_F(DamagedFilmsTest, ARefusalInOtherWordsIsReported) {
    expectWrong("echo \"$2 — Invalid data found when processing input\" >&2; exit 2\n", "told '/");
}

TEST_F(DamagedFilmsTest, ARefusalOfTwoLinesIsReported) {
    expectWrong(QByteArray("echo Aïe. >&2\n") + refuses, "Aïe.");
}

TEST_F(DamagedFilmsTest, AnUndocumentedStatusIsReported) {
    expectWrong("exit 3\n", "exit status 3");
}

TEST_F(DamagedFilmsTest, ANumberIsAlwaysTheSameFilm) {
    const auto filmOf = [this](const QStringList& options) {
        QDir(kept()).removeRecursively();
        EXPECT_THAT(verdictOn(refuses, options).told, HasSubstr("went well"));
        QFile film(
            QDir(kept()).entryInfoList({QStringLiteral("1-*")}, QDir::Files).value(0).filePath());
        EXPECT_TRUE(film.open(QIODevice::ReadOnly));
        return film.readAll();
    };
    const QStringList seventh{QStringLiteral("--only"), QStringLiteral("7")};
    const QByteArray film = filmOf(seventh);
    EXPECT_FALSE(film.isEmpty());
    EXPECT_EQ(filmOf(seventh), film);
    EXPECT_NE(filmOf({QStringLiteral("--only"), QStringLiteral("8")}), film);
}

} // namespace
