// Processes killed in the midst of saving a project: what is on the disk then can be read, and is
// not older than the last save that was told to have succeeded.
#include "ForkedChild.h"
#include "NumberedProject.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <array>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace stillwick {
namespace {

using std::chrono::microseconds;
using testing::loaded;
using testing::namesIn;
using testing::numbered;
using testing::saved;

/// A process that saves project after project, and tells the number of each that succeeded.
class SavingProcess {
public:
    SavingProcess(const std::string& path, qint64 firstNumber, int captures) {
        if (::pipe(m_ends.data()) != 0)
            throw std::runtime_error("no pipe");
        m_process = ::fork();
        if (m_process == 0)
            saveForEver(path, firstNumber, captures);
        ::close(m_ends[1]);
    }
    ~SavingProcess() { ::close(m_ends[0]); }
    Q_DISABLE_COPY_MOVE(SavingProcess)

    /// The number of the last save that succeeded, or `before`.
    qint64 killed(qint64 before) const {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
        qint64 last = before;
        while (::read(m_ends[0], &last, sizeof last) == sizeof last) {
        }
        return last;
    }

private:
    [[noreturn]] void saveForEver(const std::string& path, qint64 number, int captures) const {
        for (;; ++number)
            if (saved(numbered(number, captures), path) != "ok" ||
                ::write(m_ends[1], &number, sizeof number) != sizeof number)
                ::_exit(1);
    }

    std::array<int, 2> m_ends{};
    pid_t m_process = -1;
};

/// Kills so many saving processes, each within `longest`. Returns what was wrong after the first
/// after which anything was; else "ok" and how many were killed with a save half done.
std::string survives(const std::string& folder, int kills, microseconds longest) {
    const std::string path = folder + "/a";
    std::mt19937 random(7);
    qint64 number = 1;
    int halfDone = 0;
    if (std::string report = saved(numbered(number), path); report != "ok")
        return report;
    for (int kill = 0; kill < kills; ++kill) {
        const std::array sizes{1, 30, 1000};
        const SavingProcess process(path, number + 1, sizes[random() % sizes.size()]);
        std::this_thread::sleep_for(microseconds(random() % unsigned(longest.count())));
        const qint64 told = process.killed(number);
        const std::string found = loaded(path);
        if (found != std::to_string(told) && found != std::to_string(told + 1))
            return std::to_string(told) + " was told, found: " + found;
        number = std::stoll(found);
        halfDone += namesIn(folder) == "a" ? 0 : 1;
    }
    const std::string report = saved(numbered(number), path);
    return report + ' ' + namesIn(folder) + ' ' + std::to_string(halfDone);
}

void expectSurvival(const std::string& report, int leastHalfDone) {
    ASSERT_TRUE(report.starts_with("ok a ")) << report;
    EXPECT_GE(std::stoi(report.substr(5)), leastHalfDone) << "the kills came at other moments";
}

TEST(ProjectKillTest, AThousandKillsLeaveAReadableProjectAndTheNextSaveClearsAway) {
    const QTemporaryDir folder;
    const std::string report = inChild([&]() -> std::string {
        if (const auto obstacle = mountSmallDisk(folder.path().toStdString(), "16m");
            !obstacle.empty())
            return "skip " + obstacle;
        return survives(folder.path().toStdString(), 1000, microseconds(8000));
    });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    expectSurvival(report, 20);
}

// Where the bytes take their time to the disk.
TEST(ProjectKillTest, AHundredKillsOnARealDiskDoNoHarmEither) {
    const QTemporaryDir folder;
    expectSurvival(survives(folder.path().toStdString(), 100, microseconds(60'000)), 1);
}

} // namespace
} // namespace stillwick
