// The film in the window. Main thread.
#pragma once

#include "Media/CMTime.h"
#include "Media/MediaPlayer.h"

#include <QWidget>

#include <memory>

namespace stillwick {

class PlayerControls;

/// Shows a player's picture, fitted on black, with controls over it. Scales what is shown; the
/// picture itself is the one that is grabbed.
class VideoPlayerView final : public QWidget {
    Q_OBJECT

public:
    explicit VideoPlayerView(QWidget* parent = nullptr);
    ~VideoPlayerView() override;

    /// Shows this player from now on.
    void setPlayer(const std::shared_ptr<MediaPlayer>& player);
    [[nodiscard]] const std::shared_ptr<MediaPlayer>& player() const noexcept { return m_player; }
    /// Of the film, for the controls.
    void setDuration(const CMTime& duration);

    /// Where in the view the picture is; empty without one.
    [[nodiscard]] QRect pictureRect() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void detach();
    void showStatus();

    std::shared_ptr<MediaPlayer> m_player;
    MediaPlayer::ObserverToken m_timeObserver{};
    PlayerControls* m_controls;
};

} // namespace stillwick
