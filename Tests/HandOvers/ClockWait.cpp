// GCC 12's thread sanitizer knows the waits of conditions by the clock of the day, but not the one
// by a clock named, which std::condition_variable::wait_until uses for the steady clock: it does
// not see the mutex being let go and taken again, and takes what the mutex guards for a race. Here
// the second goes by way of the first.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include <pthread.h>

namespace {

constexpr std::int64_t nanosecondsASecond = 1'000'000'000;
constexpr std::int64_t longestSeconds = 365L * 24 * 3600;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * nanosecondsASecond + time.tv_nsec;
}

timespec now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return time;
}

} // namespace

// The name is the system's.
extern "C" int pthread_cond_clockwait( // NOLINT(readability-identifier-naming)
    pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock, const timespec* end) {
    const timespec here = now(clock);
    if (end->tv_nsec < 0 || end->tv_nsec >= nanosecondsASecond)
        return EINVAL;
    const std::int64_t seconds =
        std::clamp(end->tv_sec - here.tv_sec, -longestSeconds, longestSeconds);
    const std::int64_t day = nanoseconds(now(CLOCK_REALTIME)) + seconds * nanosecondsASecond +
                             end->tv_nsec - here.tv_nsec;
    const timespec dayEnd{day / nanosecondsASecond, day % nanosecondsASecond};
    return pthread_cond_timedwait(condition, mutex, &dayEnd);
}
