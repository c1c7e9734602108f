#include "Stillwick/ProjectStore.h"

#include "Desktop/AtomicFile.h"
#include "Desktop/Bookmark.h"
#include "Desktop/BoundedFile.h"
#include "Stillwick/ProjectJson.h"

namespace stillwick {

namespace {

/// The bytes of a local file's path, none of which need be text; empty for other addresses.
QByteArray pathBytes(const QUrl& url) {
    const bool isLocal = url.isLocalFile() && url.host().isEmpty();
    return isLocal ? QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1())
                   : QByteArray();
}

} // namespace

void ProjectStore::save(const ProjectFile& project, const QUrl& url) {
    const QByteArray text = encodeProject(project);
    const QString path = url.toLocalFile();
    removeAbandonedWritesBeside(path); // first, for they may fill the disk
    writeFileAtomically(path, text);
}

ProjectFile ProjectStore::load(const QUrl& url) {
    return decodeProject(readFile(url.toLocalFile(), longestProject + 1));
}

std::optional<QByteArray> ProjectStore::makeBookmark(const QUrl& url) {
    return stillwick::makeBookmark(pathBytes(url));
}

std::optional<QUrl> ProjectStore::resolveBookmark(const QByteArray& bookmark) {
    const std::optional<QByteArray> path = stillwick::resolveBookmark(bookmark);
    if (!path)
        return std::nullopt;
    if (path->isValidUtf8())
        return QUrl::fromLocalFile(QString::fromUtf8(*path));
    return QUrl::fromEncoded("file://" + path->toPercentEncoding("/"), QUrl::StrictMode);
}

} // namespace stillwick
