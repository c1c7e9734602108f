#include "MpvSession.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace stillwick::benchmarks {

namespace {

constexpr int patience = 60'000; // milliseconds

class MpvSession final : public Stepper {
public:
    explicit MpvSession(const QString& film) {
        const QString socket = m_folder.filePath(QStringLiteral("socket"));
        m_process.start(QStringLiteral("mpv"),
                        {QStringLiteral("--no-config"), QStringLiteral("--vo=null"),
                         QStringLiteral("--ao=null"), QStringLiteral("--pause"),
                         QStringLiteral("--hwdec=no"), QStringLiteral("--keep-open=yes"),
                         QStringLiteral("--really-quiet"),
                         QStringLiteral("--input-ipc-server=") + socket, film});
        connectTo(socket.toLocal8Bit());
        send("{\"command\":[\"observe_property\",1,\"time-pos\"]}");
        (void)waitForNewTime(-1);
        rest(500);
    }

    ~MpvSession() override {
        send("{\"command\":[\"quit\"]}");
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished();
        }
        close(m_socket);
    }
    MpvSession(const MpvSession&) = delete;
    MpvSession& operator=(const MpvSession&) = delete;

    double seek(double seconds) override {
        drain();
        QElapsedTimer timer;
        timer.start();
        send("{\"command\":[\"seek\"," + QByteArray::number(seconds, 'f', 6) +
             ",\"absolute+exact\"]}");
        while (nextMessage().value(QStringLiteral("event")) != QStringLiteral("playback-restart")) {
        }
        const double took = double(timer.nsecsElapsed()) / 1e6;
        // Its time may be told a little later: a step after it must not take that for its own.
        constexpr double nearby = 0.2;
        while (std::abs(m_time - seconds) > nearby)
            (void)nextMessage();
        rest(40);
        return took;
    }

    double stepBack() override { return step("frame-back-step"); }
    double stepOn() override { return step("frame-step"); }

    void rest(int milliseconds) override {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < milliseconds) {
            QThread::msleep(20);
            drain();
        }
    }

private:
    double step(const char* command) {
        drain();
        const double before = m_time;
        QElapsedTimer timer;
        timer.start();
        send(QByteArray("{\"command\":[\"") + command + "\"]}");
        return waitForNewTime(before), double(timer.nsecsElapsed()) / 1e6;
    }

    void connectTo(const QByteArray& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.constData(), sizeof address.sun_path - 1);
        m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        for (int i = 0; i < 200; ++i) {
            if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
                0)
                return;
            QThread::msleep(25);
        }
        throw std::runtime_error("mpv does not answer");
    }

    void send(const QByteArray& line) const {
        const QByteArray bytes = line + '\n';
        if (write(m_socket, bytes.constData(), size_t(bytes.size())) != bytes.size())
            throw std::runtime_error("mpv went away");
    }

    /// Reads what has come within so long; false where nothing has.
    bool receive(int milliseconds) {
        pollfd wanted{m_socket, POLLIN, 0};
        if (poll(&wanted, 1, milliseconds) <= 0)
            return false;
        char bytes[4096];
        const ssize_t count = read(m_socket, bytes, sizeof bytes);
        if (count <= 0)
            throw std::runtime_error("mpv went away");
        m_received.append(bytes, count);
        return true;
    }

    QJsonObject nextMessage() {
        for (;;) {
            const qsizetype end = m_received.indexOf('\n');
            if (end >= 0) {
                const QByteArray line = m_received.left(end);
                m_received.remove(0, end + 1);
                QJsonObject message = QJsonDocument::fromJson(line).object();
                note(message);
                return message;
            }
            if (!receive(patience))
                throw std::runtime_error("mpv shows no picture");
        }
    }

    void note(const QJsonObject& message) {
        if (message.value(QStringLiteral("name")) == QStringLiteral("time-pos") &&
            message.value(QStringLiteral("data")).isDouble())
            m_time = message.value(QStringLiteral("data")).toDouble();
    }

    /// The step is done when mpv's time is another.
    double waitForNewTime(double before) {
        while (std::abs(m_time - before) < 1e-6)
            (void)nextMessage();
        return m_time;
    }

    void drain() {
        while (receive(0)) {
        }
        while (m_received.contains('\n'))
            (void)nextMessage();
    }

    QTemporaryDir m_folder;
    QProcess m_process;
    int m_socket = -1;
    QByteArray m_received;
    double m_time = -1;
};

} // namespace

std::unique_ptr<Stepper> makeMpvSession(const QString& film) {
    return std::make_unique<MpvSession>(film);
}

} // namespace stillwick::benchmarks
