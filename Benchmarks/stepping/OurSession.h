// Our own player, driven as the window drives it. Main thread.
#pragma once

#include "Stepper.h"

#include "Media/MediaAsset.h"
#include "Media/MediaPlayer.h"

#include <QString>

#include <memory>

namespace stillwick::benchmarks {

class OurSession final : public Stepper {
public:
    /// *Errors*: std::runtime_error.
    explicit OurSession(const QString& film);

    double seek(double seconds) override;
    double stepBack() override { return step(-1); }
    double stepOn() override { return step(1); }
    void rest(int milliseconds) override;

    [[nodiscard]] MediaPlayer& player() noexcept { return m_player; }
    [[nodiscard]] MediaPlayerItem& item() noexcept { return *m_item; }
    [[nodiscard]] const MediaAsset& asset() const noexcept { return *m_asset; }
    /// The longest that a call to the player has kept the main thread, in milliseconds.
    [[nodiscard]] double longestCall() const noexcept { return m_longestCall; }
    /// Runs the event loop until the newest seek or step is shown.
    void settle();

private:
    double step(int count);
    void noteCall(double milliseconds);

    std::shared_ptr<const MediaAsset> m_asset;
    std::shared_ptr<MediaPlayerItem> m_item;
    MediaPlayer m_player;
    double m_longestCall = 0;
};

} // namespace stillwick::benchmarks
