// A desktop portal with one setting, on the bus whose address is given:
//     FakePortal ADDRESS PREFERENCE [DELAY_MS]
// A number on standard input becomes the new preference. It says "ready" once its name is taken.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QSocketNotifier>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

namespace {

class Settings final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    Settings(QDBusConnection bus, uint preference, int delayMilliseconds)
        : m_bus(std::move(bus)), m_preference(preference), m_delay(delayMilliseconds) {}

    void setPreference(uint preference) {
        m_preference = preference;
        emit SettingChanged(QStringLiteral("org.freedesktop.appearance"),
                            QStringLiteral("color-scheme"), QDBusVariant(preference));
    }

public slots:
    /// As the portal does: a variant within a variant.
    QDBusVariant Read(const QString& group, const QString& key, const QDBusMessage& message) {
        if (group != u"org.freedesktop.appearance" || key != u"color-scheme")
            return {};
        const QDBusVariant answer(QVariant::fromValue(QDBusVariant(m_preference)));
        if (m_delay == 0)
            return answer;
        message.setDelayedReply(true);
        QTimer::singleShot(m_delay, this, [this, message, answer] {
            m_bus.send(message.createReply(QVariant::fromValue(answer)));
        });
        return {};
    }

signals:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    QDBusConnection m_bus;
    uint m_preference;
    int m_delay;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QDBusConnection bus =
        QDBusConnection::connectToBus(arguments.value(1), QStringLiteral("portal"));
    Settings settings(bus, arguments.value(2).toUInt(), arguments.value(3).toInt());
    if (!bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &settings,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) ||
        !bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")))
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &settings, [&settings] {
        char digit = 0;
        const auto count = read(STDIN_FILENO, &digit, 1);
        if (count <= 0)
            QCoreApplication::quit();
        else if (digit >= '0' && digit <= '9')
            settings.setPreference(uint(digit - '0'));
    });
    return QCoreApplication::exec();
}

#include "FakePortal.moc"
