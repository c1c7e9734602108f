#include "SoundServer.h"

#include <gtest/gtest.h>

#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace stillwick::testing {

namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr auto patience = 60s;
constexpr float audible = 0.02F; // the clips are far louder, dither is far softer

/// Makes a child process end with the test, whatever becomes of that.
void tieToTest(QProcess& process, int standardOutput = -1) {
    process.setChildProcessModifier([standardOutput] {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (standardOutput >= 0)
            dup2(standardOutput, STDOUT_FILENO);
    });
}

bool isAnswering(const QByteArray& socketPath) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath.size() >= qsizetype(sizeof address.sun_path))
        return false;
    std::memcpy(address.sun_path, socketPath.constData(), std::size_t(socketPath.size()));
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool answers =
        connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(client);
    return answers;
}

} // namespace

SoundServer::SoundServer() {
    // For this process and its children: neither the user's server nor the user's files.
    qputenv("XDG_RUNTIME_DIR", m_folder.path().toUtf8());
    qputenv("HOME", m_folder.path().toUtf8());
    qputenv("PULSE_RUNTIME_PATH", m_folder.path().toUtf8());
    qputenv("PULSE_SERVER", "unix:" + m_folder.filePath(QStringLiteral("socket")).toUtf8());
    tieToTest(m_server);
    m_server.setStandardErrorFile(m_folder.filePath(QStringLiteral("errors")));
    start();
}

SoundServer::~SoundServer() {
    kill();
}

void SoundServer::start() {
    const QString socket = m_folder.filePath(QStringLiteral("socket"));
    m_server.start(
        QStringLiteral("pulseaudio"),
        {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
         QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--use-pid-file=no"),
         QStringLiteral("-L"), QStringLiteral("module-null-sink sink_name=nowhere rate=48000"),
         QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=") + socket});
    ASSERT_TRUE(m_server.waitForStarted()) << m_server.errorString().toStdString();
    const bool answers = QTest::qWaitFor([&] { return isAnswering(socket.toUtf8()); },
                                         int(std::chrono::milliseconds(patience).count()));
    ASSERT_TRUE(answers);
}

void SoundServer::kill() {
    m_server.kill();
    m_server.waitForFinished();
    QFile::remove(m_folder.filePath(QStringLiteral("socket")));
}

void SoundServer::freeze() {
    ASSERT_EQ(::kill(pid_t(m_server.processId()), SIGSTOP), 0);
}

void SoundServer::thaw() {
    ASSERT_EQ(::kill(pid_t(m_server.processId()), SIGCONT), 0);
}

SoundRecorder::SoundRecorder() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    m_pipe = ends[0];
    tieToTest(m_process, ends[1]);
    m_process.start(QStringLiteral("parec"),
                    {QStringLiteral("--raw"), QStringLiteral("--format=float32le"),
                     QStringLiteral("--channels=1"), QStringLiteral("--rate=48000"),
                     QStringLiteral("--latency-msec=5"),
                     QStringLiteral("--device=nowhere.monitor")});
    EXPECT_TRUE(m_process.waitForStarted()) << m_process.errorString().toStdString();
    close(ends[1]);
    m_reader = std::jthread([this] { read(); });
    waitUntilSteady();
}

/// A device that nobody listened to is up to two seconds ahead, and delivers nothing until then.
void SoundRecorder::waitUntilSteady() {
    SteadyTime last = SteadyClock::now();
    SteadyTime since = last;
    while (last - since < 500ms) {
        ASSERT_NO_FATAL_FAILURE(waitForMore());
        const SteadyTime now = SteadyClock::now();
        if (now - last > 200ms)
            since = now;
        last = now;
    }
}

SoundRecorder::~SoundRecorder() {
    m_process.kill();
    m_process.waitForFinished();
    m_reader.join();
    close(m_pipe);
}

void SoundRecorder::read() {
    std::array<char, 65536> bytes{};
    std::size_t held = 0;
    for (;;) {
        const ssize_t count = ::read(m_pipe, bytes.data() + held, bytes.size() - held);
        const SteadyTime now = SteadyClock::now();
        if (count <= 0)
            return;
        held += std::size_t(count);
        const std::size_t whole = held / sizeof(float);
        const std::lock_guard lock(m_mutex);
        m_samples.resize(m_samples.size() + whole);
        std::memcpy(&*m_samples.end() - whole, bytes.data(), whole * sizeof(float));
        held -= whole * sizeof(float);
        std::memmove(bytes.data(), bytes.data() + whole * sizeof(float), held);
        m_deliveries.push_back({now, std::int64_t(m_samples.size())});
        m_changed.notify_all();
    }
}

void SoundRecorder::waitForMore() {
    std::unique_lock lock(m_mutex);
    const std::size_t before = m_deliveries.size();
    const bool came =
        m_changed.wait_for(lock, patience, [&] { return m_deliveries.size() > before; });
    ASSERT_TRUE(came) << "the recorder delivers nothing";
}

void SoundRecorder::waitUntil(SteadyTime time) {
    for (;;) {
        {
            const std::lock_guard lock(m_mutex);
            if (!m_deliveries.empty() && momentOf(std::int64_t(m_samples.size())) >= time)
                return;
        }
        ASSERT_NO_FATAL_FAILURE(waitForMore());
    }
}

/// By the fastest delivery within half a second around it.
SteadyTime SoundRecorder::momentOf(std::int64_t sample) const {
    const auto lengthOf = [](std::int64_t samples) {
        return std::chrono::nanoseconds(samples * 1'000'000'000 / rate);
    };
    SteadyTime moment = SteadyTime::max();
    const auto from = std::lower_bound(
        m_deliveries.begin(), m_deliveries.end(), sample - rate / 2,
        [](const Delivery& delivery, std::int64_t place) { return delivery.end < place; });
    for (auto it = from; it != m_deliveries.end() && it->end < sample + rate / 2; ++it)
        moment = std::min(moment, it->time - lengthOf(it->end - sample));
    return moment;
}

std::vector<SteadyTime> SoundRecorder::onsets(std::chrono::milliseconds silence) {
    const std::lock_guard lock(m_mutex);
    std::vector<SteadyTime> found;
    const std::int64_t needed = silence.count() * rate / 1000;
    std::int64_t silent = 0;
    for (std::size_t i = 0; i < m_samples.size(); ++i) {
        if (std::abs(m_samples[i]) < audible) {
            ++silent;
            continue;
        }
        if (silent >= needed)
            found.push_back(momentOf(std::int64_t(i)));
        silent = 0;
    }
    return found;
}

SteadyTime SoundRecorder::lastSound(SteadyTime until) {
    const std::lock_guard lock(m_mutex);
    for (std::size_t i = m_samples.size(); i-- > 0;) {
        if (std::abs(m_samples[i]) < audible)
            continue;
        if (const SteadyTime moment = momentOf(std::int64_t(i)); moment < until)
            return moment;
    }
    return {};
}

float SoundRecorder::peak(SteadyTime from, SteadyTime to) {
    const std::lock_guard lock(m_mutex);
    float largest = 0;
    for (const Delivery& delivery : m_deliveries) { // to within one of them
        if (delivery.time < from || delivery.time > to)
            continue;
        const std::int64_t first = (&delivery == m_deliveries.data()) ? 0 : (&delivery - 1)->end;
        for (std::int64_t i = first; i < delivery.end; ++i)
            largest = std::max(largest, std::abs(m_samples[std::size_t(i)]));
    }
    return largest;
}

} // namespace stillwick::testing
