// A sound server of the test's own, and a recorder of what it plays.
#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace stillwick::testing {

using SteadyTime = std::chrono::steady_clock::time_point;

/// A PulseAudio server with one device, which plays to nowhere. It ends with the test, also where
/// that crashes. *Lifetime*: made before Qt Multimedia is first used, for Qt looks for the server
/// once; one per process.
class SoundServer final {
public:
    SoundServer();
    ~SoundServer();

    /// Starts the server and waits until it answers; at the same address each time.
    void start();
    /// Ends it as a crash would.
    void kill();
    /// Makes it answer no one, and answer again.
    void freeze();
    void thaw();

private:
    QTemporaryDir m_folder;
    QProcess m_server;
};

/// Records what the server's device plays, from when it is made until it is destroyed.
/// The moment of a sample is told from when it was delivered. The device hands over its sound in
/// portions of 5 ms, when they begin to be heard; so what the recording says lies at most 5 ms
/// before what would be heard, and after it by as much as the fastest delivery within a second
/// takes, which is well under a millisecond unless the machine is at a standstill.
class SoundRecorder final {
public:
    static constexpr int rate = 48000;

    /// Returns once sound is being delivered steadily.
    SoundRecorder();
    ~SoundRecorder();
    SoundRecorder(const SoundRecorder&) = delete;
    SoundRecorder& operator=(const SoundRecorder&) = delete;

    /// Waits until more was delivered; the test fails where nothing comes for long.
    void waitForMore();
    /// Waits until all that was played before `time` has been delivered.
    void waitUntil(SteadyTime time);

    /// The moments at which sound set in after at least `silence`.
    [[nodiscard]] std::vector<SteadyTime> onsets(std::chrono::milliseconds silence);
    /// The last moment at which there was sound before `until`; the epoch if there was none.
    [[nodiscard]] SteadyTime lastSound(SteadyTime until);
    /// The largest sample between two moments.
    [[nodiscard]] float peak(SteadyTime from, SteadyTime to);

private:
    struct Delivery {
        SteadyTime time;
        std::int64_t end = 0; ///< samples until then
    };

    void read();
    void waitUntilSteady();
    [[nodiscard]] SteadyTime momentOf(std::int64_t sample) const;

    QProcess m_process; ///< of which only the standard output is read, elsewhere
    int m_pipe = -1;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<float> m_samples;
    std::vector<Delivery> m_deliveries;
    std::jthread m_reader;
};

} // namespace stillwick::testing
