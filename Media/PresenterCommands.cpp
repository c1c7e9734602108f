#include "Media/PresenterCommands.h"

#include <utility>

namespace stillwick {

namespace {

using SteadyClock = std::chrono::steady_clock;
using Verb = PresenterCommands::Command::Verb;
using namespace std::chrono_literals;

// Seeks that follow each other faster are one drag.
constexpr auto dragInterval = 250ms;

} // namespace

PresenterCommands::PresenterCommands(Command first) {
    m_commands.push_back(std::move(first));
}

void PresenterCommands::noteSeek() {
    const auto now = SteadyClock::now();
    m_isDragging = m_isSeeking || now - m_lastSeek < dragInterval;
    m_lastSeek = now;
    m_withdrawal.request_stop();
    std::erase_if(m_commands, [](const Command& waiting) {
        return waiting.verb == Verb::Seek || waiting.verb == Verb::Step;
    });
}

void PresenterCommands::push(Command command) {
    const std::lock_guard lock(m_mutex);
    if (command.verb == Verb::Seek)
        noteSeek();
    const bool addsUp = command.verb == Verb::Step && !m_commands.empty() &&
                        m_commands.back().verb == Verb::Step &&
                        (m_commands.back().count > 0) == (command.count > 0);
    if (addsUp) {
        command.count += m_commands.back().count;
        m_commands.pop_back();
    }
    m_commands.push_back(std::move(command));
    m_changed.notify_all();
}

void PresenterCommands::withdraw() {
    const std::lock_guard lock(m_mutex);
    m_withdrawal.request_stop();
}

std::optional<PresenterCommands::Command> PresenterCommands::take(const std::stop_token& stop) {
    const std::lock_guard lock(m_mutex);
    m_isSeeking = false;
    if (m_commands.empty())
        return std::nullopt;
    Command command = std::move(m_commands.front());
    m_commands.pop_front();
    m_withdrawal = std::stop_source();
    if (stop.stop_requested())
        m_withdrawal.request_stop();
    m_isSeeking = command.verb == Verb::Seek;
    return command;
}

std::stop_token PresenterCommands::withdrawal() const {
    const std::lock_guard lock(m_mutex);
    return m_withdrawal.get_token();
}

bool PresenterCommands::isAnyWaiting() const {
    const std::lock_guard lock(m_mutex);
    return !m_commands.empty();
}

bool PresenterCommands::isDragging() const {
    const std::lock_guard lock(m_mutex);
    return m_isDragging;
}

void PresenterCommands::waitForOne(SteadyClock::time_point deadline, const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_until(lock, stop, deadline, [this] { return !m_commands.empty(); });
}

void PresenterCommands::waitForOne(const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, stop, [this] { return !m_commands.empty(); });
}

} // namespace stillwick
