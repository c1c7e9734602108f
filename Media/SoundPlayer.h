// Plays the sound of a film, and keeps the clock by which its pictures go. Any thread.
#pragma once

#include "Media/PlaybackClock.h"

#include <QString>

#include <chrono>
#include <memory>
#include <mutex>

namespace stillwick {

class SoundFeeder;
class SoundSession;
struct SoundControl;

/// Makes a film heard on the default device, and the clock go by what is heard. Where there is no
/// device, no sound, or no longer a device, the clock goes by the steady clock instead, without a
/// jump; sound sets in again when a device does.
/// *Thread*: no call waits for a device or a file. *Lifetime*: needs a QCoreApplication to be
/// heard.
class SoundPlayer final {
public:
    /// Opens nothing before the first `play`.
    SoundPlayer(QString path, std::shared_ptr<PlaybackClock> clock);
    /// As `stop`; ends what is under way.
    ~SoundPlayer();
    SoundPlayer(const SoundPlayer&) = delete;
    SoundPlayer& operator=(const SoundPlayer&) = delete;

    /// Plays from the film time `from` on. The clock stands there until the device truly plays, for
    /// half a second at most; where there is nothing to play, until that is known. Replaces what is
    /// being played. `zero` is the time in the container that is the film's zero.
    void play(std::chrono::nanoseconds from, std::chrono::nanoseconds zero);
    /// Holds the clock where it stands, before this returns; silence follows.
    void stop();

    /// *Units*: of the amplitude, from 0 to 1. At first 1.
    void setVolume(double volume);
    void setMuted(bool isMuted);

private:
    void updateGain();

    const std::shared_ptr<PlaybackClock> m_clock;
    const std::shared_ptr<SoundControl> m_control;
    std::mutex m_mutex;
    std::shared_ptr<SoundSession> m_session;
    double m_volume = 1;
    bool m_isMuted = false;
    std::unique_ptr<SoundFeeder> m_feeder;
};

} // namespace stillwick
