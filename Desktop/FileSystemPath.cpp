#include "Desktop/FileSystemPath.h"

#include "Desktop/DesktopError.h"

#include <QFile>

namespace stillwick {

std::filesystem::path fileSystemPath(const QString& path) {
    if (path.isEmpty() || path.contains(QChar(u'\0')) || !path.isValidUtf16())
        throw DesktopError(DesktopError::Category::NameInvalid);
    return {QFile::encodeName(path).toStdString()};
}

} // namespace stillwick
