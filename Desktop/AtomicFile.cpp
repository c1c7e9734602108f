#include "Desktop/AtomicFile.h"

#include "Desktop/DesktopError.h"
#include "Desktop/FileSystemPath.h"
#include "Desktop/TemporaryFile.h"

#include <QScopeGuard>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

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

void removeAbandonedWritesBeside(const QString& path) {
    try {
        removeAbandonedTemporaryFiles(folderOf(followedToTarget(fileSystemPath(path))));
    } catch (const DesktopError&) {
        // Writing to the path will tell.
    }
}

} // namespace stillwick
