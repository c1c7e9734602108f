#include "Desktop/Interruption.h"

#include <QSocketNotifier>

#include <sys/signalfd.h>
#include <unistd.h>

namespace stillwick {

Interruption::Interruption(QObject* parent) : QObject(parent) {
    sigemptyset(&m_signals);
    for (const int number : {SIGINT, SIGTERM})
        sigaddset(&m_signals, number);
    m_descriptor = signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_descriptor < 0)
        return; // then the signals do what they always do
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_signalsBefore);
    auto* notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &Interruption::tell);
}

Interruption::~Interruption() {
    if (m_descriptor < 0)
        return;
    pthread_sigmask(SIG_SETMASK, &m_signalsBefore, nullptr);
    close(m_descriptor);
}

void Interruption::tell() {
    signalfd_siginfo info{};
    if (read(m_descriptor, &info, sizeof info) != sizeof info)
        return;
    // The second time is the system's.
    pthread_sigmask(SIG_SETMASK, &m_signalsBefore, nullptr);
    emit requested();
}

} // namespace stillwick
