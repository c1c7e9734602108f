#include "ForkedChild.h"

#include <array>
#include <cerrno>
#include <exception>
#include <fstream>
#include <system_error>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace stillwick {

namespace {

std::string obstacle(const std::string& what) {
    return what + ": " + std::generic_category().message(errno);
}

/// A user name space in which this user is the superuser; files need an owner that it knows.
bool becomeSuperuserOfANewNamespace() {
    const std::string user = "0 " + std::to_string(::geteuid()) + " 1";
    const std::string group = "0 " + std::to_string(::getegid()) + " 1";
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    return (std::ofstream("/proc/self/setgroups") << "deny" << std::flush) &&
           (std::ofstream("/proc/self/uid_map") << user << std::flush) &&
           (std::ofstream("/proc/self/gid_map") << group << std::flush);
}

/// Nothing may leave the child but its report: an exception would go on with the parent's tests.
std::string reportOf(const std::function<std::string()>& work) {
    try {
        return work();
    } catch (const std::exception& error) {
        return std::string("threw ") + error.what();
    }
}

[[noreturn]] void runAndReport(const std::function<std::string()>& work, int descriptor) {
    const std::string report = reportOf(work);
    const ssize_t written = ::write(descriptor, report.data(), report.size());
    ::_exit(written == static_cast<ssize_t>(report.size()) ? 0 : 1);
}

std::string everythingFrom(int descriptor) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = ::read(descriptor, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    return text;
}

} // namespace

std::string inChild(const std::function<std::string()>& work) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return obstacle("pipe");
    const pid_t child = ::fork();
    if (child < 0)
        return obstacle("fork");
    if (child == 0)
        runAndReport(work, ends[1]);
    ::close(ends[1]);
    std::string report = everythingFrom(ends[0]);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? report : "died";
}

void becomeNobody() {
    constexpr unsigned nobody = 65534;
    if (::geteuid() != 0)
        return;
    if (::setresgid(nobody, nobody, nobody) != 0 || ::setresuid(nobody, nobody, nobody) != 0)
        ::_exit(1);
}

std::string mountSmallDisk(const std::string& folder, const std::string& size) {
    if (::unshare(CLONE_NEWNS) != 0 && !becomeSuperuserOfANewNamespace())
        return obstacle("unshare");
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return obstacle("mount private");
    if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, ("size=" + size).c_str()) != 0)
        return obstacle("mount tmpfs");
    return {};
}

std::string makeDiskReadOnly(const std::string& folder) {
    if (::mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        return obstacle("remount");
    return {};
}

} // namespace stillwick
