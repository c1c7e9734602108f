// The thread that decodes a film's sound for the session that is played.
#pragma once

#include "Media/SoundSession.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace stillwick {

class SoundTrack;
class SoundWindow;

/// Sees to it that a session is heard where that can be: asks for the device, decodes what it is to
/// play, and tries again while there is none. Its destructor ends the thread.
class SoundFeeder final {
public:
    SoundFeeder(QString path, std::shared_ptr<SoundControl> control);
    ~SoundFeeder();

    /// Serves `session` from now on, and none before it. Any thread; returns at once.
    void serve(std::shared_ptr<SoundSession> session);

private:
    enum class Stage {
        AskForDevice,
        AwaitDevice, ///< asked, not answered
        Feed,
        Pause, ///< until there may be a device again
        Done,  ///< there is nothing to hear
    };

    void run(const std::stop_token& stop);
    void adopt();
    [[nodiscard]] SteadyTime step(const std::stop_token& stop);
    void askForDevice();
    void awaitDevice(const std::stop_token& stop);
    [[nodiscard]] bool openTrack(SoundFormat format, const std::stop_token& stop);
    void feed(const std::stop_token& stop);
    void fill(const std::stop_token& stop);
    void pause();

    const QString m_path;
    const std::shared_ptr<SoundControl> m_control;

    std::mutex m_mutex;
    std::shared_ptr<SoundSession> m_next; ///< not yet adopted

    // What follows belongs to the thread.
    std::shared_ptr<SoundSession> m_session;
    Stage m_stage = Stage::Done;
    SteadyTime m_resume; ///< the end of a pause
    std::unique_ptr<SoundTrack> m_track;
    bool m_hasNoSound = false;
    SoundFormat m_format;
    std::chrono::nanoseconds m_zero{0};
    std::optional<std::int64_t> m_position; ///< of the track
    std::shared_ptr<SoundWindow> m_window;
    std::vector<float> m_block;

    std::jthread m_thread; // last: it uses all of the above
};

} // namespace stillwick
