// A library to preload: makes the system calls of file writing fail on demand, as hardware would.
// STILLWICK_FAULT names a call, what comes of it, and from which call on: "write ENOSPC 2". Only
// descriptors above standard error are touched.
#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

struct Fault {
    std::array<char, 16> call{};
    std::array<char, 16> outcome{};
    int from = 0;
};

const Fault& fault() {
    static const Fault parsed = [] {
        Fault read;
        if (const char* text = std::getenv("STILLWICK_FAULT")) // NOLINT(concurrency-mt-unsafe)
            std::sscanf(text, "%15s %15s %d", read.call.data(), read.outcome.data(), &read.from);
        return read;
    }();
    return parsed;
}

/// Whether this call is one that goes wrong; counts the calls of that name.
bool strikes(std::string_view call) {
    static int calls = 0;
    return call == fault().call.data() && ++calls >= fault().from;
}

bool strikesOnce(std::string_view call) {
    static bool struck = false;
    return !struck && strikes(call) && (struck = true);
}

int errorCode() {
    struct Name {
        std::string_view name;
        int code;
    };
    for (const auto& [name, code] :
         {Name{"ENOSPC", ENOSPC}, Name{"EIO", EIO}, Name{"EDQUOT", EDQUOT}, Name{"EINVAL", EINVAL},
          Name{"EINTR", EINTR}, Name{"EPERM", EPERM}, Name{"EFBIG", EFBIG}})
        if (name == fault().outcome.data())
            return code;
    std::abort();
}

bool isOutcome(std::string_view outcome) {
    return outcome == fault().outcome.data();
}

template <typename Function>
Function original(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int failing() {
    errno = errorCode();
    return -1;
}

} // namespace

extern "C" {

ssize_t write(int descriptor, const void* bytes, size_t count) {
    static const auto call = original<ssize_t (*)(int, const void*, size_t)>("write");
    if (descriptor <= STDERR_FILENO || fault().from == 0)
        return call(descriptor, bytes, count);
    if (isOutcome("SHORT"))
        return call(descriptor, bytes, strikes("write") && count > 1 ? count / 2 : count);
    if (isOutcome("NOTHING"))
        return strikes("write") ? 0 : call(descriptor, bytes, count);
    if (isOutcome("EINTR") ? strikesOnce("write") : strikes("write"))
        return failing();
    return call(descriptor, bytes, count);
}

int fsync(int descriptor) {
    static const auto call = original<int (*)(int)>("fsync");
    if (isOutcome("EINTR") ? strikesOnce("fsync") : strikes("fsync"))
        return failing();
    return call(descriptor);
}

int close(int descriptor) {
    static const auto call = original<int (*)(int)>("close");
    if (descriptor <= STDERR_FILENO || !strikes("close"))
        return call(descriptor);
    call(descriptor);
    return failing();
}

int rename(const char* from, const char* to) {
    static const auto call = original<int (*)(const char*, const char*)>("rename");
    return strikes("rename") ? failing() : call(from, to);
}

} // extern "C"
