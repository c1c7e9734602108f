// The event loop that a player needs, in a test.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

namespace stillwick::testing {

/// The application object: the program's, else one made by the first test that asks for it.
inline QCoreApplication& application() {
    if (QCoreApplication::instance() != nullptr)
        return *QCoreApplication::instance();
    static int count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication instance(count, arguments);
    return instance;
}

/// Runs the event loop until `condition` holds; false after `patience`.
template <typename Condition>
bool runUntil(Condition condition, std::chrono::milliseconds patience = std::chrono::seconds(100)) {
    const QDeadlineTimer deadline(patience);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 5);
        QTimer::singleShot(std::chrono::milliseconds(2), [] {}); // so that waiting ends
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// Runs the event loop for so long.
inline void runFor(std::chrono::milliseconds span) {
    const QDeadlineTimer deadline(span);
    (void)runUntil([&deadline] { return deadline.hasExpired(); }, span * 2);
}

} // namespace stillwick::testing
