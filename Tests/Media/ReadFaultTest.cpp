// The system refusing to read a film on from some place, by strace: the failure is told as such, or
// what is told is what the whole film gives.
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace stillwick {
namespace {

struct Outcome {
    int status = -1; ///< −1 where the program did not come to its end
    QByteArray told;
    QByteArray picture;
};

class ReadFaultTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (run({QStringLiteral("-e"), QStringLiteral("trace=none")}).status != 0)
            GTEST_SKIP() << "strace cannot trace here";
    }

    /// Takes the picture in the middle of the film under strace with these options.
    Outcome run(QStringList options) const {
        const QString picture = m_folder.filePath(QStringLiteral("x.png"));
        QFile::remove(picture);
        options << QStringLiteral("-f") << QStringLiteral("-o") << logPath() << QStringLiteral("-P")
                << film() << QStringLiteral(STILLWICK_PROGRAM) << QStringLiteral("still") << film()
                << QStringLiteral("--at") << QStringLiteral("1") << QStringLiteral("-o") << picture;
        QProcess strace;
        strace.start(QStringLiteral("strace"), options);
        if (!strace.waitForFinished() || strace.exitStatus() != QProcess::NormalExit)
            return {};
        QFile file(picture);
        return {strace.exitCode(), strace.readAllStandardError(),
                file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray()};
    }

    /// How often the film is read in an undisturbed run.
    int countOfReads() const {
        EXPECT_EQ(run({QStringLiteral("-e"), QStringLiteral("trace=read")}).status, 0);
        QFile log(logPath());
        EXPECT_TRUE(log.open(QIODevice::ReadOnly));
        return int(log.readAll().count("read("));
    }

private:
    static QString film() {
        return QStringLiteral(STILLWICK_CLIPS "/films/") + QString::fromUtf8(GetParam());
    }
    QString logPath() const { return m_folder.filePath(QStringLiteral("log")); }

    QTemporaryDir m_folder;
};

TEST_P(ReadFaultTest, WhereverReadingFailsItIsToldOrThePictureIsTheSame) {
    const Outcome whole = run({QStringLiteral("-e"), QStringLiteral("trace=none")});
    ASSERT_FALSE(whole.picture.isEmpty());
    const int count = countOfReads();
    ASSERT_GT(count, 2);
    int failures = 0;
    for (int i = 1; i <= count; ++i) {
        const Outcome outcome =
            run({QStringLiteral("-e"), QStringLiteral("inject=read:error=EIO:when=%1+").arg(i)});
        if (outcome.status == 0) {
            EXPECT_TRUE(outcome.picture == whole.picture) << i;
            continue;
        }
        ++failures;
        EXPECT_TRUE(outcome.told.endsWith("La lecture du fichier a échoué.\n"))
            << i << ": " << outcome.told.toStdString();
        EXPECT_TRUE(outcome.picture.isEmpty()) << i;
    }
    EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(Containers, ReadFaultTest,
                         ::testing::Values("closed_h264.mp4", "mpeg2.mkv", "closed_h264.ts",
                                           "closed_h264.avi", "mpeg2.mpg", "closed_h264.flv",
                                           "closed_raw.h264"));

} // namespace
} // namespace stillwick
