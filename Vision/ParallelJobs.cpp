#include "Vision/ParallelJobs.h"

#include <opencv2/core/utility.hpp>

#include <exception>

namespace stillwick {

void runSideBySide(const std::vector<std::function<void()>>& jobs) {
    std::vector<std::exception_ptr> failures(jobs.size());
    const auto count = static_cast<int>(jobs.size());
    cv::parallel_for_(
        {0, count},
        [&jobs, &failures](const cv::Range& range) {
            for (int i = range.start; i < range.end; ++i) {
                const auto job = static_cast<std::size_t>(i);
                try {
                    jobs[job]();
                } catch (...) {
                    failures[job] = std::current_exception();
                }
            }
        },
        count);
    for (const std::exception_ptr& failure : failures)
        if (failure != nullptr)
            std::rethrow_exception(failure);
}

} // namespace stillwick
