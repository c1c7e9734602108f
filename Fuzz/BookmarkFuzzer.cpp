// Any bytes as a bookmark; any bytes as a path in a bookmark whose check fits; and any damage to a
// bookmark of our own. Nothing is followed but what `makeBookmark` made of an absolute path.
#include "Desktop/Bookmark.h"

#include <QCryptographicHash>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

using namespace stillwick;

void require(bool holds) {
    if (!holds)
        std::abort();
}

/// As the format is documented, whatever the path.
QByteArray handmade(const QByteArray& path) {
    return QByteArrayLiteral("swbm\x01") +
           QCryptographicHash::hash(path, QCryptographicHash::Sha256).first(8) + path;
}

bool isFileOrFolder(const QByteArray& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path.toStdString(), error);
    return std::filesystem::is_regular_file(status) || std::filesystem::is_directory(status);
}

void resolveForeign(const QByteArray& bookmark) {
    const auto path = resolveBookmark(bookmark);
    if (!path)
        return;
    require(path->startsWith('/') && !path->contains('\0') && isFileOrFolder(*path));
    require(bookmark == handmade(*path));
}

void resolveWithFittingCheck(const QByteArray& path) {
    const bool leadsThere = path.startsWith('/') && !path.contains('\0') && isFileOrFolder(path);
    const auto resolved = resolveBookmark(handmade(path));
    require(resolved.has_value() == leadsThere);
    require(!resolved || *resolved == path);
}

void resolveDamaged(const QByteArray& path, unsigned char where, unsigned char how) {
    auto bookmark = makeBookmark(path);
    require(bookmark.has_value() == (!path.isEmpty() && !path.contains('\0')));
    if (!bookmark)
        return;
    const QByteArray absolute = bookmark->sliced(13);
    require(absolute.startsWith('/') && absolute.endsWith(path));
    resolveWithFittingCheck(absolute);
    char& damaged = (*bookmark)[where % bookmark->size()];
    damaged = char(damaged ^ (how == 0 ? 1 : how));
    require(!resolveBookmark(*bookmark));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( // NOLINT(readability-identifier-naming)
    const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    resolveForeign(bytes);
    resolveWithFittingCheck(bytes);
    if (size >= 2)
        resolveDamaged(bytes.sliced(2), data[0], data[1]);
    return 0;
}
