#pragma once
#include "Media/PlaybackClock.h"
#include <QString>
#include <memory>
namespace stillwick {
class SoundPlayer final {
public:
    SoundPlayer(const QString&, std::shared_ptr<PlaybackClock> c) : clock(std::move(c)) {}
    void play(std::chrono::nanoseconds from, std::chrono::nanoseconds) {
        clock->run(from, std::chrono::steady_clock::now());
    }
    void stop() { clock->hold(clock->at(std::chrono::steady_clock::now())); }
    void setVolume(double) {}
    void setMuted(bool) {}

private:
    std::shared_ptr<PlaybackClock> clock;
};
} // namespace stillwick
