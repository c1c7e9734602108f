#include "Desktop/AtomicFile.h"

#include "Desktop/DesktopError.h"
#include "Desktop/FileSystemPath.h"

#include <QRandomGenerator>
#include <QScopeGuard>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// QSaveFile is not used: up to Qt 6.4 its commit() reports success although the disk was full while
// its buffer was flushed, and leaves an empty file in place of the old one.

namespace stillwick {

namespace {

namespace fs = std::filesystem;
using Category = DesktopError::Category;

[[noreturn]] void throwErrno() {
    throw DesktopError::fromErrno(errno);
}

std::optional<struct stat> existingFile(const fs::path& target) {
    struct stat status {};
    if (::lstat(target.c_str(), &status) == 0)
        return status;
    if (errno != ENOENT)
        throwErrno();
    return std::nullopt;
}

/// The file that `path` stands for once links are followed; it need not exist.
fs::path followedToTarget(fs::path path) {
    constexpr int mostLinks = 40; // as the kernel
    for (int followed = 0; followed < mostLinks; ++followed) {
        const auto status = existingFile(path);
        if (!status || !S_ISLNK(status->st_mode))
            return path;
        std::error_code error;
        const fs::path next = fs::read_symlink(path, error);
        if (error)
            throw DesktopError::fromErrno(error.value());
        path = path.parent_path() / next;
    }
    throw DesktopError::fromErrno(ELOOP);
}

void requireReplaceable(const fs::path& target, const struct stat& status) {
    if (!S_ISREG(status.st_mode))
        throw DesktopError(Category::NotAFile);
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0 && errno == EACCES)
        throw DesktopError(Category::FileProtected);
}

fs::path folderOf(const fs::path& target) {
    return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

/// Some file systems cannot synchronise a file or a folder and say so.
bool isUnsupported(int code) {
    return code == EINVAL || code == ENOTSUP || code == ENOSYS;
}

void synchronise(int descriptor) {
    while (::fsync(descriptor) != 0) {
        if (isUnsupported(errno))
            return;
        if (errno != EINTR)
            throwErrno();
    }
}

/// The new content under a passing name in the target's folder; removed unless it was moved away.
class TemporaryFile {
public:
    TemporaryFile(const fs::path& folder, mode_t mode) {
        // Not mkostemp, which ignores umask and the folder's default access list; and a name of
        // fixed length, so that every name the folder can hold can be written.
        do {
            const quint64 number = QRandomGenerator::system()->generate64();
            m_path = folder / (".stillwick-" + std::to_string(number));
            m_descriptor =
                ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        } while (m_descriptor < 0 && (errno == EEXIST || errno == EINTR));
        if (m_descriptor < 0)
            throwErrno();
    }
    ~TemporaryFile() {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        if (!m_path.empty())
            ::unlink(m_path.c_str());
    }
    Q_DISABLE_COPY_MOVE(TemporaryFile)

    void takeOwnerAndPermissionsOf(const struct stat& status) {
        // Best effort: only the superuser gives files away, and some file systems have neither. The
        // owner goes first because changing it drops the set-user bits.
        [[maybe_unused]] const int owner = ::fchown(m_descriptor, status.st_uid, status.st_gid);
        [[maybe_unused]] const int mode = ::fchmod(m_descriptor, status.st_mode & 07777U);
    }

    void write(const QByteArray& content) {
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

    void moveTo(const fs::path& target) {
        // A descriptor is gone even when closing it is interrupted.
        const int closed = ::close(std::exchange(m_descriptor, -1));
        if (closed != 0 && errno != EINTR)
            throwErrno();
        if (::rename(m_path.c_str(), target.c_str()) != 0) {
            // The folder took the temporary file, so it is the old file that may not be removed.
            if (errno == EPERM || errno == EACCES)
                throw DesktopError(Category::FileProtected);
            throwErrno();
        }
        m_path.clear();
    }

private:
    fs::path m_path;
    int m_descriptor = -1;
};

/// Makes the renaming last. A folder that may be written but not read cannot be synchronised.
void synchroniseFolder(const fs::path& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno == EACCES)
            return;
        throwErrno();
    }
    const auto closing = qScopeGuard([descriptor] { ::close(descriptor); });
    synchronise(descriptor);
}

} // namespace

void writeFileAtomically(const QString& path, const QByteArray& content) {
    const fs::path target = followedToTarget(fileSystemPath(path));
    const auto existing = existingFile(target);
    if (existing)
        requireReplaceable(target, *existing);
    constexpr mode_t everyone = 0666;
    TemporaryFile temporary(folderOf(target), existing ? existing->st_mode & 0777U : everyone);
    if (existing)
        temporary.takeOwnerAndPermissionsOf(*existing);
    temporary.write(content);
    temporary.moveTo(target);
    synchroniseFolder(folderOf(target));
}

} // namespace stillwick
