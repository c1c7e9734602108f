// A cut-out on its way to another program. Main thread.
#pragma once

#include <QByteArray>
#include <QFuture>
#include <QMimeData>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

namespace stillwick {

/// A cut-out as a PNG and as a file, for the clipboard and for a drag. The picture may still be in
/// the making: whoever asks for it first waits. The file is written when it is asked for, under
/// the name given, into a folder that goes with the program. Where either fails the data is empty.
class CutoutMimeData final : public QMimeData {
    Q_OBJECT

public:
    CutoutMimeData(QFuture<QByteArray> png, QString fileName);

    static const QString pngType;

    [[nodiscard]] QStringList formats() const override;

protected:
    [[nodiscard]] QVariant retrieveData(const QString& mimeType,
                                        QMetaType preferredType) const override;

private:
    [[nodiscard]] QByteArray png() const;
    [[nodiscard]] QUrl writtenFile() const;

    QFuture<QByteArray> m_png;
    QString m_fileName;
};

} // namespace stillwick
