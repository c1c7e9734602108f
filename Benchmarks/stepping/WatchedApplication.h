// What the handlers of the main thread's events take. Main thread.
#pragma once

#include "../ProcessorTime.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <utility>

namespace stillwick::benchmarks {

/// An application that notes its longest handler, by the clock on the wall and by the processor's
/// time: the first also holds the time in which other threads had the processor.
class WatchedApplication final : public QCoreApplication {
public:
    using QCoreApplication::QCoreApplication;

    struct Longest {
        double wallMilliseconds = 0;
        double processorMilliseconds = 0;
    };

    bool notify(QObject* receiver, QEvent* event) override {
        if (QThread::currentThread() != thread())
            return QCoreApplication::notify(receiver, event);
        QElapsedTimer timer;
        timer.start();
        const double before = processorMilliseconds();
        const bool isDone = QCoreApplication::notify(receiver, event);
        m_longest.wallMilliseconds =
            std::max(m_longest.wallMilliseconds, double(timer.nsecsElapsed()) / 1e6);
        m_longest.processorMilliseconds =
            std::max(m_longest.processorMilliseconds, processorMilliseconds() - before);
        return isDone;
    }

    /// The longest since this was asked last.
    Longest takeLongest() { return std::exchange(m_longest, {}); }

private:
    Longest m_longest;
};

} // namespace stillwick::benchmarks
