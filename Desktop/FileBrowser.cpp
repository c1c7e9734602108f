#include "Desktop/FileBrowser.h"

#include <QCoroDBusPendingCall>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QUrl>

namespace stillwick {

namespace {

constexpr int patience = 10'000; // milliseconds; a file browser may have to start first

QCoro::Task<bool> shownByFileManager(QUrl folder) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        co_return false;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowFolders"));
    call.setArguments({QStringList{folder.toString(QUrl::FullyEncoded)}, QString()});
    const QDBusPendingCall pending = bus.asyncCall(call, patience);
    const QDBusMessage answer = co_await pending;
    co_return answer.type() == QDBusMessage::ReplyMessage;
}

} // namespace

QCoro::Task<bool> showFolder(QString path) {
    if (!QFileInfo(path).isDir())
        co_return false;
    const QUrl folder = QUrl::fromLocalFile(path);
    if (co_await shownByFileManager(folder))
        co_return true;
    co_return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) !=
        nullptr&& QDesktopServices::openUrl(folder);
}

} // namespace stillwick
