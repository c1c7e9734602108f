#pragma once

#include <QDBusContext>
#include <QDBusError>
#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace stillwick::testing {

/// Stands for the desktop's file manager.
class FileManager final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;
    bool isRefusing = false;

    /// The name is the interface's.
    Q_SLOT void ShowFolders(const QStringList& uris, // NOLINT(readability-identifier-naming)
                            const QString& /*startupId*/) {
        if (isRefusing) {
            sendErrorReply(QDBusError::Failed, QStringLiteral("no"));
            return;
        }
        shown += uris;
    }
};

/// Takes the place of what the desktop opens folders with.
class Opener final : public QObject {
    Q_OBJECT

public:
    Opener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~Opener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    Q_DISABLE_COPY_MOVE(Opener)

    QList<QUrl> opened;

    Q_SLOT void open(const QUrl& url) { opened.append(url); }
};

} // namespace stillwick::testing
