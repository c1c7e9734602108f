// Whether the event loop still turns. Made on the main thread, watches from one of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace stillwick::monkey {

/// Ends the program, loudly, where nobody calls `beat` for as long as its patience lasts.
class Watch final {
public:
    explicit Watch(std::chrono::seconds patience);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// *Thread*: any.
    void beat() noexcept { ++m_beats; }

private:
    void watch();

    const std::chrono::seconds m_patience;
    std::atomic<unsigned> m_beats = 0;
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace stillwick::monkey
