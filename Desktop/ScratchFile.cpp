#include "Desktop/ScratchFile.h"

#include <QDir>
#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace stillwick {

namespace {

// Ranges begin at whole blocks, so that a discarded one leaves no block half in use.
constexpr qint64 blockSize = 4096;
constexpr qint64 shareOfDiskLeftFree = 8;

qint64 inBlocks(qint64 bytes) {
    return (bytes + blockSize - 1) / blockSize * blockSize;
}

bool writeAll(int descriptor, const QByteArray& bytes, qint64 offset) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t now = ::pwrite(descriptor, bytes.constData() + written,
                                     std::size_t(bytes.size() - written), offset + written);
        if (now < 0 && errno == EINTR)
            continue;
        if (now <= 0)
            return false;
        written += now;
    }
    return true;
}

} // namespace

QStringList ScratchFile::standardFolders() {
    return {QStringLiteral("/var/tmp"), QDir::tempPath()};
}

std::unique_ptr<ScratchFile> ScratchFile::create(const QStringList& folders, qint64 mostBytes) {
    constexpr int onlyOurs = 0600;
    for (const QString& folder : folders) {
        const int descriptor = ::open(QFile::encodeName(folder).constData(),
                                      O_TMPFILE | O_RDWR | O_CLOEXEC | O_EXCL, onlyOurs);
        if (descriptor >= 0)
            return std::unique_ptr<ScratchFile>(new ScratchFile(descriptor, mostBytes));
    }
    return nullptr;
}

ScratchFile::~ScratchFile() {
    ::close(m_descriptor);
}

bool ScratchFile::hasRoomFor(qint64 bytes) const {
    if (m_used + bytes > m_mostBytes)
        return false;
    struct statvfs disk {};
    if (::fstatvfs(m_descriptor, &disk) != 0)
        return false;
    const auto block = qint64(disk.f_frsize);
    return (qint64(disk.f_bavail) * block - bytes) >
           qint64(disk.f_blocks) * block / shareOfDiskLeftFree;
}

std::optional<ScratchFile::Range> ScratchFile::append(const QByteArray& bytes) {
    const qint64 taken = inBlocks(bytes.size());
    if (!hasRoomFor(taken))
        return std::nullopt;
    m_used += taken;
    const Range range{m_end.fetch_add(taken), bytes.size()};
    if (writeAll(m_descriptor, bytes, range.offset))
        return range;
    discard(range);
    return std::nullopt;
}

QByteArray ScratchFile::read(const Range& range) const {
    QByteArray bytes(range.size, Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t now = ::pread(m_descriptor, bytes.data() + done,
                                    std::size_t(bytes.size() - done), range.offset + done);
        if (now < 0 && errno == EINTR)
            continue;
        if (now <= 0)
            return {};
        done += now;
    }
    return bytes;
}

void ScratchFile::discard(const Range& range) {
    // Where the file system cannot do this the space stays taken until the file is closed.
    if (::fallocate(m_descriptor, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, range.offset,
                    inBlocks(range.size)) == 0)
        m_used -= inBlocks(range.size);
}

} // namespace stillwick
