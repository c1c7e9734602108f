#include "Stillwick/StillwickApp.h"

#include "Interface/Look.h"
#include "Stillwick/AppStateFocus.h"
#include "Stillwick/StillwickWindow.h"

#include <QApplication>

#include <cstdio>

namespace stillwick {

namespace {

/// Whether there is something that windows can be shown on; the toolkit ends the program where not.
bool hasScreen() {
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

} // namespace

int runWindows(int& argc, char** argv, const WindowCommand& command) {
    if (!hasScreen()) {
        std::fputs("Aucun écran : la fenêtre ne peut pas s'ouvrir. « stillwick --help » montre les "
                   "commandes.\n",
                   stderr);
        return 2;
    }
    QApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("stillwick"));
    installLook(application);
    (void)KeyboardCoordinator::shared(); // watches the keys from launch on
    if (command.files.isEmpty())
        StillwickWindow::openNew();
    for (const QString& file : command.files)
        StillwickWindow::openNew()->openFile(file);
    return QApplication::exec();
}

} // namespace stillwick
