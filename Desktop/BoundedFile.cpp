#include "Desktop/BoundedFile.h"

#include "Desktop/DesktopError.h"
#include "Desktop/FileSystemPath.h"

#include <QScopeGuard>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stillwick {

namespace {

[[noreturn]] void throwErrno() {
    throw DesktopError::fromErrnoOfReading(errno);
}

int opened(const std::filesystem::path& path) {
    for (;;) {
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        if (descriptor >= 0)
            return descriptor;
        if (errno != EINTR)
            throwErrno();
    }
}

qint64 sizeOfRegularFile(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        throwErrno();
    if (!S_ISREG(status.st_mode))
        throw DesktopError(DesktopError::Category::NoRegularFile);
    return status.st_size;
}

/// Fills the bytes from the file; how many there were.
qsizetype filled(QByteArray& bytes, int descriptor) {
    qsizetype count = 0;
    while (count < bytes.size()) {
        const auto rest = std::size_t(bytes.size() - count);
        const ssize_t more = ::read(descriptor, bytes.data() + count, rest);
        if (more == 0)
            break;
        if (more > 0)
            count += more;
        else if (errno != EINTR)
            throwErrno();
    }
    return count;
}

} // namespace

QByteArray readFile(const QString& path, qint64 mostBytes) {
    const int descriptor = opened(fileSystemPath(path));
    const auto closing = qScopeGuard([descriptor] { ::close(descriptor); });
    QByteArray bytes(std::min(mostBytes, sizeOfRegularFile(descriptor)), Qt::Uninitialized);
    bytes.truncate(filled(bytes, descriptor));
    return bytes;
}

} // namespace stillwick
