// A sound device that plays a session. Lives in the sound thread, and deletes itself there.
#pragma once

#include "Media/SoundSession.h"

#include <QAudioSink>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace stillwick {

class SoundWindow;

/// Plays what a window holds on the default device for as long as the session lasts, tells the
/// session what is being heard, and keeps the sound with the clock where that goes on without it.
class SoundOutput final : public QObject {
public:
    /// The form in which the default device is best given sound; none where there is no device.
    [[nodiscard]] static std::optional<SoundFormat> deviceFormat();
    /// Begins to play, as a child of `home`. A session whose clock still waits is heard from the
    /// window's first sample on; in one that runs, sound sets in where the film stands by then.
    /// The session is told when the device does not play, or no longer.
    static void begin(QObject& home, std::shared_ptr<SoundSession> session,
                      std::shared_ptr<SoundWindow> window, SoundFormat format, std::int64_t start);
    ~SoundOutput() override;

private:
    class Source;

    /// From which sample given to the device on which sample of the film follows.
    struct Alignment {
        std::int64_t given = 0;
        std::int64_t film = 0;
    };

    SoundOutput(QObject& home, std::shared_ptr<SoundSession> session,
                std::shared_ptr<SoundWindow> window, SoundFormat format, std::int64_t start);
    [[nodiscard]] bool open();
    void close();
    void check();
    void compare(SteadyTime now);
    void align(SteadyTime now);
    void provide(float* samples, int frames);
    void applyGain(float* samples, int frames);
    [[nodiscard]] std::chrono::nanoseconds heard() const;

    const std::shared_ptr<SoundSession> m_session;
    const std::shared_ptr<SoundWindow> m_window;
    const SoundFormat m_format;
    const std::int64_t m_start;       ///< the window's first sample
    std::unique_ptr<Source> m_source; // outlives the sink, which reads from it
    std::unique_ptr<QAudioSink> m_sink;
    QTimer m_timer;

    std::int64_t m_given = 0; ///< samples of each channel given to the device
    std::optional<Alignment> m_alignment;
    std::chrono::nanoseconds m_played{0}; ///< as the device last told
    SteadyTime m_lastAdvance;
    SteadyTime m_lastReport;
    int m_advances = 0;
    int m_misses = 0; ///< comparisons in a row that found the sound elsewhere than the clock
    float m_gain;
};

} // namespace stillwick
