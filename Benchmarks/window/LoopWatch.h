// What the main thread's event loop is held up by. Made on the main thread.
#pragma once

#include <QApplication>
#include <QString>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace stillwick::benchmarks {

/// How the event loop fared for a while. *Units*: milliseconds.
struct Stalls {
    /// Between sending something to the loop and its being handled, as a key press would be: the
    /// longest wait, and the one that 99 of 100 stay below.
    double longestWait = 0;
    double wait99 = 0;
    /// The handler that took longest by the clock; the one that took longest without the time in
    /// which it was ready and other threads had the processors; and of the processor's time most.
    double longestHandler = 0;
    double longestOwn = 0;
    double greatestEffort = 0;
    /// What that handler of the greatest effort did: who was told of what, and of all that this
    /// led to what took longest itself.
    QString doing;
};

/// An application that notes what its handlers take, and asks its own loop from another thread, two
/// hundred times a second, whether it is there.
class LoopWatch final : public QApplication {
public:
    LoopWatch(int& argc, char** argv);
    ~LoopWatch() override;
    Q_DISABLE_COPY_MOVE(LoopWatch)

    bool notify(QObject* receiver, QEvent* event) override;
    bool event(QEvent* event) override;

    /// Since this was asked last.
    [[nodiscard]] Stalls takeStalls();

private:
    struct Handler {
        QString name;
        double begun = 0;
        double within = 0; ///< the effort of the handlers that it led to
    };

    void ask();
    void noteEnd(const Handler& handler, double effort);

    [[nodiscard]] double queuedMilliseconds() const;

    std::vector<Handler> m_underWay;
    int m_schedule = -1; ///< the kernel's account of the main thread
    Stalls m_stalls;
    double m_greatestOwn = 0;
    QString m_greatestOwnName;
    std::vector<double> m_waits;
    std::atomic<std::int64_t> m_asked = 0; ///< nanoseconds; 0 while no question waits
    std::atomic<bool> m_isEnding = false;
    std::thread m_asking;
};

} // namespace stillwick::benchmarks
