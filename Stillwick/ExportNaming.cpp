#include "Stillwick/ExportNaming.h"

#include <QFileInfo>

namespace stillwick {

QString ExportNaming::videoName(const QString& path) {
    const QFileInfo file(path);
    return file.completeBaseName().isEmpty() ? file.fileName() : file.completeBaseName();
}

QString ExportNaming::fileName(const QString& videoName, const CMTime& time,
                               std::optional<int> subjectIndex) {
    const QString subject =
        subjectIndex ? QStringLiteral("_s") + QString::number(*subjectIndex) : QString();
    return videoName + u'_' + time.fileNameString() + subject + QStringLiteral(".png");
}

QString ExportNaming::folderName(const QString& name) {
    QString cleaned = name;
    for (const QChar separator : {u'/', u'\\', u':'})
        cleaned.replace(separator, u'-');
    cleaned = cleaned.trimmed();
    return cleaned.isEmpty() ? QStringLiteral("Sans-nom") : cleaned;
}

} // namespace stillwick
