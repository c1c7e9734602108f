#include "Desktop/Interruption.h"

#include "ForkedChild.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace stillwick {
namespace {

/// Runs the event loop for a while, or until something was told.
void wait(const int& told, int until) {
    const QDeadlineTimer deadline(5000);
    while (told < until && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

/// How a child ends that sends itself the signals and waits after each to be told.
int endOfChild(std::initializer_list<int> numbers) {
    const pid_t child = fork();
    if (child == 0) {
        int count = 1;
        char name[] = "test";
        char* arguments[] = {name, nullptr};
        const QCoreApplication application(count, arguments);
        Interruption interruption;
        int told = 0;
        QObject::connect(&interruption, &Interruption::requested, &application, [&] { ++told; });
        for (const int number : numbers) {
            ::kill(getpid(), number);
            wait(told, told + 1);
        }
        _exit(told);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

TEST(InterruptionTest, TheFirstWishIsToldAndTheProgramGoesOn) {
    for (const int number : {SIGINT, SIGTERM}) {
        const int status = endOfChild({number});
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 1);
    }
}

TEST(InterruptionTest, TheSecondEndsTheProgramAtOnce) {
    const int status = endOfChild({SIGINT, SIGINT});
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGINT);
}

TEST(InterruptionTest, OtherSignalsDoWhatTheyAlwaysDo) {
    const int status = endOfChild({SIGUSR1});
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGUSR1);
}

TEST(InterruptionTest, WithoutItSignalsAreAsBefore) {
    const std::string mask = inChild([]() -> std::string {
        int count = 1;
        char name[] = "test";
        char* arguments[] = {name, nullptr};
        const QCoreApplication application(count, arguments);
        { const Interruption interruption; }
        sigset_t blocked{};
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        return sigismember(&blocked, SIGINT) == 1 ? "blocked" : "open";
    });
    EXPECT_EQ(mask, "open");
}

} // namespace
} // namespace stillwick
