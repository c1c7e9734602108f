#include "Stillwick/CutoutMimeData.h"

#include "Desktop/AtomicFile.h"
#include "Desktop/DesktopError.h"

#include <QDir>
#include <QTemporaryDir>

#include <exception>
#include <utility>

namespace stillwick {

namespace {

const QString urisType = QStringLiteral("text/uri-list");

/// A new folder for one file, in one that is removed when the program ends.
QString freshFolder() {
    static const QTemporaryDir all;
    static int count = 0;
    const QString name = QString::number(++count);
    return all.isValid() && QDir(all.path()).mkdir(name) ? all.filePath(name) : QString();
}

} // namespace

const QString CutoutMimeData::pngType = QStringLiteral("image/png");

CutoutMimeData::CutoutMimeData(QFuture<QByteArray> png, QString fileName)
    : m_png(std::move(png)), m_fileName(std::move(fileName)) {}

QStringList CutoutMimeData::formats() const {
    return {pngType, urisType};
}

QVariant CutoutMimeData::retrieveData(const QString& mimeType, QMetaType /*preferredType*/) const {
    if (mimeType == pngType)
        return png();
    if (mimeType != urisType)
        return {};
    const QUrl file = writtenFile();
    return file.isEmpty() ? QVariant() : QVariant(file.toEncoded() + "\r\n");
}

QByteArray CutoutMimeData::png() const {
    try {
        return m_png.result();
    } catch (const std::exception&) {
        return {};
    }
}

QUrl CutoutMimeData::writtenFile() const {
    const QByteArray content = png();
    const QString folder = content.isEmpty() ? QString() : freshFolder();
    if (folder.isEmpty())
        return {};
    const QString path = QDir(folder).filePath(m_fileName);
    try {
        writeFileAtomically(path, content);
    } catch (const DesktopError&) {
        return {};
    }
    return QUrl::fromLocalFile(path);
}

} // namespace stillwick
