// The main function of tests of widgets: an application with our look, without a display.
#include "Interface/Look.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8"); // French must not come from the locale
    QApplication application(argc, argv);
    stillwick::installLook(application, stillwick::ColorScheme::light);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
