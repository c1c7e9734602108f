#include "Media/SoundThread.h"

#include <QCoreApplication>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>

namespace stillwick {

namespace {

class SoundThread final : public QThread {
public:
    SoundThread() {
        setObjectName(QStringLiteral("sound"));
        m_home->moveToThread(this);
        start();
    }
    [[nodiscard]] QObject* home() const { return m_home; }

protected:
    void run() override {
        // Until the event loop has ended: a sink lets events through while it is destroyed.
        const std::unique_ptr<QObject> home(m_home);
        exec();
    }

private:
    QObject* m_home = new QObject;
};

struct Process {
    std::mutex mutex;
    std::unique_ptr<SoundThread> thread;
};

/// Never destroyed: the application object may outlive whatever is, and the thread ends with it.
Process& process() {
    static auto& process = *new Process;
    return process;
}

void endSoundThread() {
    std::unique_ptr<SoundThread> ended;
    {
        const std::lock_guard lock(process().mutex);
        ended = std::move(process().thread);
    }
    constexpr unsigned long patienceMilliseconds = 500;
    ended->quit();
    if (ended->wait(patienceMilliseconds))
        return;
    // Blocked by the sound server. What Qt and libpulse would tidy up when the process ends is in
    // use by that thread, so they are kept from it: the process ends before them.
    (void)ended.release();
    on_exit(
        [](int status, void*) {
            std::fflush(nullptr);
            std::_Exit(status);
        },
        nullptr);
}

} // namespace

void postToSoundThread(std::function<void(QObject& home)> work) {
    const std::lock_guard lock(process().mutex);
    if (!QCoreApplication::instance() || QCoreApplication::closingDown())
        return;
    std::unique_ptr<SoundThread>& thread = process().thread;
    if (!thread) {
        thread = std::make_unique<SoundThread>();
        qAddPostRoutine(endSoundThread);
    }
    QObject* home = thread->home();
    QMetaObject::invokeMethod(
        home, [home, work = std::move(work)] { work(*home); }, Qt::QueuedConnection);
}

} // namespace stillwick
