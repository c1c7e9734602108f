#include "LoopWatch.h"

#include "../ProcessorTime.h"
#include "../Timings.h"

#include <QEvent>
#include <QMetaEnum>
#include <QThread>

#include <algorithm>
#include <array>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace stillwick::benchmarks {

namespace {

constexpr std::chrono::milliseconds betweenQuestions(5);
constexpr auto question = QEvent::Type(QEvent::User + 77);

std::int64_t nanoseconds() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

QString nameOf(const QObject* receiver, const QEvent& event) {
    const char* const type = QMetaEnum::fromType<QEvent::Type>().valueToKey(event.type());
    return QString::fromUtf8(receiver->metaObject()->className()) + u' ' +
           QString::fromUtf8(type != nullptr ? type : "?");
}

} // namespace

LoopWatch::LoopWatch(int& argc, char** argv)
    : QApplication(argc, argv), m_schedule(::open("/proc/thread-self/schedstat", O_RDONLY)),
      m_asking([this] { ask(); }) {}

LoopWatch::~LoopWatch() {
    m_isEnding = true;
    m_asking.join();
    ::close(m_schedule);
}

/// How long this thread has been ready to run, and others ran.
double LoopWatch::queuedMilliseconds() const {
    std::array<char, 96> text{};
    if (::pread(m_schedule, text.data(), text.size() - 1, 0) <= 0)
        return 0;
    const QList<QByteArray> fields = QByteArray(text.data()).split(' ');
    return fields.size() < 2 ? 0 : fields[1].toDouble() / 1e6;
}

void LoopWatch::ask() {
    while (!m_isEnding) {
        std::int64_t none = 0;
        if (m_asked.compare_exchange_strong(none, nanoseconds()))
            QCoreApplication::postEvent(this, new QEvent(question));
        std::this_thread::sleep_for(betweenQuestions);
    }
}

bool LoopWatch::event(QEvent* event) {
    if (event->type() != question)
        return QApplication::event(event);
    m_waits.push_back(double(nanoseconds() - m_asked.exchange(0)) / 1e6);
    return true;
}

bool LoopWatch::notify(QObject* receiver, QEvent* event) {
    if (QThread::currentThread() != thread() || event->type() == question)
        return QApplication::notify(receiver, event);
    const bool isOutermost = m_underWay.empty();
    const double queued = isOutermost ? queuedMilliseconds() : 0;
    const std::int64_t begun = nanoseconds();
    m_underWay.push_back({nameOf(receiver, *event), processorMilliseconds(), 0});
    const bool isDone = QApplication::notify(receiver, event);
    const Handler handler = std::move(m_underWay.back());
    m_underWay.pop_back();
    const double effort = processorMilliseconds() - handler.begun;
    if (isOutermost) {
        const double span = double(nanoseconds() - begun) / 1e6;
        m_stalls.longestHandler = std::max(m_stalls.longestHandler, span);
        m_stalls.longestOwn = std::max(m_stalls.longestOwn, span - (queuedMilliseconds() - queued));
    }
    noteEnd(handler, effort);
    return isDone;
}

void LoopWatch::noteEnd(const Handler& handler, double effort) {
    const double own = effort - handler.within;
    if (own > m_greatestOwn) {
        m_greatestOwn = own;
        m_greatestOwnName = handler.name;
    }
    if (!m_underWay.empty()) {
        m_underWay.back().within += effort;
        return;
    }
    if (effort > m_stalls.greatestEffort) {
        m_stalls.greatestEffort = effort;
        m_stalls.doing = QStringLiteral("%1; of that %2 ms in %3")
                             .arg(handler.name)
                             .arg(m_greatestOwn, 0, 'f', 1)
                             .arg(m_greatestOwnName);
    }
    m_greatestOwn = 0;
}

Stalls LoopWatch::takeStalls() {
    Stalls taken = std::exchange(m_stalls, {});
    const std::vector<double> waits = std::exchange(m_waits, {});
    taken.longestWait = quantile(waits, 1);
    taken.wait99 = quantile(waits, 0.99);
    return taken;
}

} // namespace stillwick::benchmarks
