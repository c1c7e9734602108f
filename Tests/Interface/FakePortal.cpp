// A desktop portal with one setting, on the bus whose address is given:
//     FakePortal ADDRESS PREFERENCE [DELAY_MS]
// A number on standard input becomes the new preference. It says "ready" once its name is taken.
#include "PortalSettings.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QDBusConnection bus =
        QDBusConnection::connectToBus(arguments.value(1), QStringLiteral("portal"));
    stillwick::testing::PortalSettings settings(bus, arguments.value(2).toUInt(),
                                                arguments.value(3).toInt());
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
