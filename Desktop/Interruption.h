// The user's wish to stop the program from its terminal. Main thread; one at a time.
#pragma once

#include <QObject>

#include <csignal>

namespace stillwick {

/// Tells when the program is asked to end (Ctrl-C, SIGTERM), so that it can end in good order;
/// asked a second time, it ends at once. Make it before any thread: threads made later leave the
/// signals to it.
class Interruption final : public QObject {
    Q_OBJECT

public:
    explicit Interruption(QObject* parent = nullptr);
    ~Interruption() override;
    Q_DISABLE_COPY_MOVE(Interruption)

signals:
    void requested();

private:
    void tell();

    sigset_t m_signals{};
    sigset_t m_signalsBefore{};
    int m_descriptor = -1;
};

} // namespace stillwick
