#include "Vision/ParallelJobs.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <stdexcept>

namespace stillwick {
namespace {

TEST(ParallelJobsTest, EachJobRunsOnce) {
    std::array<std::atomic<int>, 40> runs{};
    std::vector<std::function<void()>> jobs;
    for (std::atomic<int>& count : runs)
        jobs.emplace_back([&count] { ++count; });
    runSideBySide(jobs);
    for (const std::atomic<int>& count : runs)
        EXPECT_EQ(count, 1);
    runSideBySide({});
}

TEST(ParallelJobsTest, TheFirstFailureComesThroughAndTheOthersRun) {
    std::atomic<int> ended = 0;
    const auto fail = [](const char* text) {
        return [text] {
            throw std::runtime_error(text);
        };
    };
    try {
        runSideBySide({[&ended] { ++ended; }, fail("first"), fail("second"),
                       [&ended] {
                           ++ended;
                       }});
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "first");
    }
    EXPECT_EQ(ended, 2);
}

} // namespace
} // namespace stillwick
