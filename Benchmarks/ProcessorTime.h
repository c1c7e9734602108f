// What a thread has used of the processor. Any thread.
#pragma once

#include <ctime>

namespace stillwick::benchmarks {

/// The processor's time that this thread has used. *Units*: milliseconds.
[[nodiscard]] inline double processorMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

} // namespace stillwick::benchmarks
