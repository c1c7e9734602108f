// What a presenter is told to do, between the thread that tells it and its own. Any thread.
#pragma once

#include "Media/CMTime.h"
#include "Media/VideoFrame.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <stop_token>

namespace stillwick {

/// A queue in which a newer seek replaces older seeks and steps, and steps in one direction add up.
class PresenterCommands final {
public:
    struct Command {
        enum class Verb { Seek, Step, Play, Rest };
        Verb verb = Verb::Seek;
        std::uint64_t serial = 0;
        CMTime time;       ///< of a seek
        int count = 0;     ///< of steps
        SharedFrame frame; ///< at which to rest
    };

    explicit PresenterCommands(Command first);

    /// A seek withdraws the command under way.
    void push(Command command);
    /// Withdraws the command under way, whatever follows.
    void withdraw();

    /// The next command, which is then under way until this is called again; withdrawn already
    /// where `stop` is requested.
    [[nodiscard]] std::optional<Command> take(const std::stop_token& stop);
    /// Tells that the command under way is withdrawn.
    [[nodiscard]] std::stop_token withdrawal() const;
    [[nodiscard]] bool isAnyWaiting() const;
    /// True where the last seek followed another so fast that they are one drag of a slider.
    [[nodiscard]] bool isDragging() const;
    /// Returns when a command waits, at `deadline`, or when `stop` is requested.
    void waitForOne(std::chrono::steady_clock::time_point deadline, const std::stop_token& stop);
    void waitForOne(const std::stop_token& stop);

private:
    void noteSeek();

    mutable std::mutex m_mutex; // guards all below
    std::condition_variable_any m_changed;
    std::deque<Command> m_commands;
    std::stop_source m_withdrawal;
    bool m_isSeeking = false; ///< the command under way is a seek
    bool m_isDragging = false;
    std::chrono::steady_clock::time_point m_lastSeek;
};

} // namespace stillwick
