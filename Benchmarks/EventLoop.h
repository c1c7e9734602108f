// Waiting with the event loop running. Main thread.
#pragma once

#include <QEventLoop>
#include <QTimer>

namespace stillwick::benchmarks {

/// Runs the event loop for so long. *Units*: milliseconds.
inline void rest(int span) {
    QEventLoop loop;
    QTimer::singleShot(span, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Runs the event loop until the condition holds. *Units*: milliseconds between two looks at it.
template <typename Condition>
void restUntil(Condition condition, int betweenLooks = 1) {
    while (!condition())
        rest(betweenLooks);
}

} // namespace stillwick::benchmarks
