// A message bus of a test's own.
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace stillwick::testing {

/// A session bus that lasts as long as this object. Made before anything asks for the session bus,
/// which from then on is this one.
class SessionBus final {
public:
    SessionBus() {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"),
                        QStringLiteral("--print-address")});
        if (m_daemon.waitForReadyRead(5000))
            m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toUtf8());
    }
    ~SessionBus() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(SessionBus)

    [[nodiscard]] bool isRunning() const { return !m_address.isEmpty(); }
    /// A connection as another program would have it.
    [[nodiscard]] QDBusConnection connection(const QString& name) const {
        return QDBusConnection::connectToBus(m_address, name);
    }

private:
    QProcess m_daemon;
    QString m_address;
};

} // namespace stillwick::testing
