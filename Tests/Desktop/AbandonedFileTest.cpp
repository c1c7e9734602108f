// What a killed program left of a write, cleared away by the next.
#include "AtomicFileFixture.h"
#include "ForkedChild.h"

#include <csignal>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace stillwick {

namespace {

class AbandonedFileTest : public AtomicFileTest {
protected:
    const std::string m_name = ".stillwick-0123456789abcdef";

    void removeAbandoned(const std::string& beside) const {
        removeAbandonedWritesBeside(QString::fromStdString(path(beside)));
    }
};

TEST_F(AbandonedFileTest, WhatAKilledProgramLeftIsRemoved) {
    put(path(m_name), "half");
    removeAbandoned("a");
    EXPECT_EQ(names(), "");
    ASSERT_EQ(::mkdir(path("sub").c_str(), 0755), 0);
    ASSERT_EQ(::symlink("sub/target", path("link").c_str()), 0);
    put(path("sub/" + m_name), "half");
    removeAbandoned("link");
    EXPECT_EQ(namesIn(path("sub")), "");
    removeAbandoned("missing/a");
    removeAbandoned({});
}

TEST_F(AbandonedFileTest, WhatAnotherProgramIsWritingStays) {
    put(path(m_name), "half");
    const int writer = ::open(path(m_name).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(writer, LOCK_EX), 0);
    removeAbandoned("a");
    EXPECT_EQ(names(), m_name);
    ::close(writer);
    removeAbandoned("a");
    EXPECT_EQ(names(), "");
}

TEST_F(AbandonedFileTest, WhatWasNotMadeByAWriteStays) {
    put(path(".stillwick-0123456789abcde"), "short");
    put(path(".stillwick-0123456789abcdef0"), "long");
    put(path(".stillwick-0123456789abcdeg"), "other");
    put(path("stillwick-0123456789abcdef"), "shown");
    put(path("a"), "linked");
    ASSERT_EQ(::link(path("a").c_str(), path(m_name).c_str()), 0);
    ASSERT_EQ(::mkdir(path(".stillwick-0000000000000001").c_str(), 0755), 0);
    ASSERT_EQ(::symlink("a", path(".stillwick-0000000000000002").c_str()), 0);
    ASSERT_EQ(::mkfifo(path(".stillwick-0000000000000003").c_str(), 0644), 0);
    const std::string before = names();
    removeAbandoned("a");
    EXPECT_EQ(names(), before);
}

TEST_F(AbandonedFileTest, WhatBelongsToAnotherUserStays) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can make a file of another owner";
    put(path(m_name), "half");
    ASSERT_EQ(::chown(path(m_name).c_str(), 65534, 65534), 0);
    removeAbandoned("a");
    EXPECT_EQ(names(), m_name);
}

/// The user's words for the first of many writes that failed while another process cleared away
/// again and again, or "ok".
std::string writtenWhileClearingAway(const std::string& folder) {
    if (const auto obstacle = mountSmallDisk(folder, "1m"); !obstacle.empty())
        return "skip " + obstacle;
    const pid_t clearing = ::fork();
    if (clearing == 0) {
        for (;;)
            removeAbandonedWritesBeside(QString::fromStdString(folder + "/a"));
    }
    std::string report = "ok";
    for (int round = 0; round < 20'000 && report == "ok"; ++round)
        report = written(folder + "/a", "new");
    ::kill(clearing, SIGKILL);
    ::waitpid(clearing, nullptr, 0);
    return report + ' ' + namesIn(folder);
}

// A file has a name before it has its lock; whoever clears away may come in between.
TEST_F(AbandonedFileTest, ClearingAwayNeverDisturbsAWriter) {
    const auto report = inChild([this] { return writtenWhileClearingAway(path()); });
    if (report.starts_with("skip "))
        GTEST_SKIP() << report.substr(5);
    EXPECT_EQ(report, "ok a");
}

} // namespace

} // namespace stillwick
