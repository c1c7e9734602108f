#include "Desktop/Bookmark.h"

#include <QCryptographicHash>

#include <filesystem>
#include <system_error>

#include <sys/stat.h>

namespace stillwick {

namespace {

constexpr qsizetype checkLength = 8;

QByteArray header() {
    return QByteArrayLiteral("swbm\x01");
}

/// Tells a damaged path, which may lead to another file, from a whole one.
QByteArray checkOf(const QByteArray& path) {
    return QCryptographicHash::hash(path, QCryptographicHash::Sha256).first(checkLength);
}

bool isThere(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

} // namespace

std::optional<QByteArray> makeBookmark(const QByteArray& path) {
    if (path.isEmpty() || path.contains('\0'))
        return std::nullopt;
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path.toStdString(), error);
    if (error)
        return std::nullopt;
    const QByteArray bytes = QByteArray::fromStdString(absolute.string());
    return header() + checkOf(bytes) + bytes;
}

std::optional<QByteArray> resolveBookmark(const QByteArray& bookmark) {
    const qsizetype pathBegin = header().size() + checkLength;
    if (bookmark.size() <= pathBegin || !bookmark.startsWith(header()))
        return std::nullopt;
    const QByteArray path = bookmark.sliced(pathBegin);
    if (bookmark.sliced(header().size(), checkLength) != checkOf(path))
        return std::nullopt;
    // Anyone can make a check that fits: only what makeBookmark would have made is followed.
    if (!path.startsWith('/') || path.contains('\0') || !isThere(path))
        return std::nullopt;
    return path;
}

} // namespace stillwick
