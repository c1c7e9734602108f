// The system refusing to read a film on from some place, by strace: the failure is told as such, or
// what is told is what the whole film gives.
#include "../Strace.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace stillwick {
namespace {

struct Outcome {
    int status;
    QByteArray told;
    QByteArray picture;
};

class ReadFaultTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!testing::canTrace())
            GTEST_SKIP() << "strace cannot trace here";
    }

    /// Takes the picture in the middle of the film under strace, which is to do this.
    Outcome run(const QString& option) const {
        const QString picture = m_folder.filePath(QStringLiteral("x.png"));
        QFile::remove(picture);
        const testing::Traced traced = testing::traced(
            {QStringLiteral("-f"), QStringLiteral("-o"), logPath(), QStringLiteral("-P"), film(),
             QStringLiteral("-e"), option, QStringLiteral(STILLWICK_PROGRAM),
             QStringLiteral("still"), film(), QStringLiteral("--at"), QStringLiteral("1"),
             QStringLiteral("-o"), picture});
        QFile file(picture);
        return {traced.status, traced.errors,
                file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray()};
    }

    /// How often the film was read in the last run.
    int countOfReads() const {
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
    const Outcome whole = run(QStringLiteral("trace=read"));
    ASSERT_EQ(whole.status, 0);
    ASSERT_FALSE(whole.picture.isEmpty());
    const int count = countOfReads();
    ASSERT_GT(count, 2);
    int failures = 0;
    for (int i = 1; i <= count; ++i) {
        const Outcome outcome = run(QStringLiteral("inject=read:error=EIO:when=%1+").arg(i));
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
