#include "Desktop/TemporaryFile.h"

#include "Desktop/DesktopError.h"

#include <QRandomGenerator>
#include <QScopeGuard>

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stillwick {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view namePrefix = ".stillwick-";
constexpr std::size_t nameDigits = 16;

[[noreturn]] void throwErrno() {
    throw DesktopError::fromErrno(errno);
}

/// Of fixed length, so that every name that the folder can hold can be written.
std::string temporaryName() {
    const quint64 number = QRandomGenerator::system()->generate64();
    const std::string digits = QByteArray::number(number, 16).toStdString();
    return std::string(namePrefix) + std::string(nameDigits - digits.size(), '0') + digits;
}

bool isTemporaryName(std::string_view name) {
    return name.size() == namePrefix.size() + nameDigits && name.starts_with(namePrefix) &&
           name.find_first_not_of("0123456789abcdef", namePrefix.size()) == std::string_view::npos;
}

/// Some file systems cannot synchronise a file or a folder and say so.
bool isUnsupported(int code) {
    return code == EINVAL || code == ENOTSUP || code == ENOSYS;
}

void removeIfAbandoned(const fs::path& path) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return;
    const auto closing = qScopeGuard([descriptor] { ::close(descriptor); });
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
        status.st_uid == ::geteuid() && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        ::unlink(path.c_str());
}

} // namespace

TemporaryFile::TemporaryFile(const fs::path& folder, mode_t mode) {
    while (!tryToMake(folder, mode)) {
    }
}

TemporaryFile::~TemporaryFile() {
    if (!m_path.empty())
        ::unlink(m_path.c_str());
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool TemporaryFile::tryToMake(const fs::path& folder, mode_t mode) {
    // Not mkostemp, which ignores umask and the folder's default access list.
    const fs::path path = folder / temporaryName();
    const int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
    if (descriptor < 0 && (errno == EEXIST || errno == EINTR))
        return false;
    if (descriptor < 0)
        throwErrno();
    m_descriptor = descriptor;
    if (!isClaimed()) {
        ::close(std::exchange(m_descriptor, -1));
        return false;
    }
    m_path = path;
    return true;
}

/// Whether the file is locked and still there: who clears away may have met it before its lock.
bool TemporaryFile::isClaimed() const {
    if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK; // without locks here, nobody can lock it to clear it away
    struct stat status {};
    return ::fstat(m_descriptor, &status) != 0 || status.st_nlink > 0;
}

void TemporaryFile::takeOwnerAndPermissionsOf(const struct stat& status) {
    // The owner goes first because changing it drops the set-user bits.
    [[maybe_unused]] const int owner = ::fchown(m_descriptor, status.st_uid, status.st_gid);
    [[maybe_unused]] const int mode = ::fchmod(m_descriptor, status.st_mode & 07777U);
}

void TemporaryFile::write(const QByteArray& content) {
    for (qsizetype written = 0; written < content.size();) {
        const auto rest = static_cast<std::size_t>(content.size() - written);
        const ssize_t count = ::write(m_descriptor, content.constData() + written, rest);
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            errno = ENOSPC;
        if (count <= 0)
            throwErrno();
        written += count;
    }
    synchronise(m_descriptor);
}

void TemporaryFile::moveTo(const fs::path& target) {
    // Network file systems tell of failures when a file is closed. The lock lasts with the copy.
    const int copy = ::fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0);
    if (copy < 0)
        throwErrno();
    // A descriptor is gone even when closing it is interrupted.
    const int closed = ::close(std::exchange(m_descriptor, copy));
    if (closed != 0 && errno != EINTR)
        throwErrno();
    if (::rename(m_path.c_str(), target.c_str()) != 0) {
        // The folder took the temporary file, so it is the old file that may not be removed.
        if (errno == EPERM || errno == EACCES)
            throw DesktopError(DesktopError::Category::FileProtected);
        throwErrno();
    }
    m_path.clear();
}

void removeAbandonedTemporaryFiles(const fs::path& folder) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        if (isTemporaryName(entry->path().filename().native()))
            removeIfAbandoned(entry->path());
}

void synchronise(int descriptor) {
    while (::fsync(descriptor) != 0) {
        if (isUnsupported(errno))
            return;
        if (errno != EINTR)
            throwErrno();
    }
}

} // namespace stillwick
