// The controls that lie over a film. Main thread.
#pragma once

#include <QPropertyAnimation>
#include <QTimer>
#include <QWidget>

#include <functional>

class QAbstractButton;
class QGraphicsOpacityEffect;

namespace stillwick {

class ContinuousSlider;
class FixedDigitLabel;

/// Play and pause, the position, the times, the volume and mute, in a bar near the lower edge of
/// the view it lies over. Appears when the pointer moves over the view or one of its controls has
/// the focus; goes a while after, at once when the pointer leaves. Knows no player: it shows what
/// it is told, and tells what is asked for. *Units*: seconds; volume 0 to 1.
class PlayerControls final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double presence READ presence WRITE setPresence)

public:
    /// `view` is what it lies over; its size is followed.
    explicit PlayerControls(QWidget* view);

    void setPlaying(bool isPlaying);
    void setDuration(double seconds);
    void setPosition(double seconds);
    void setVolume(double volume);
    void setMuted(bool isMuted);
    /// How times are written; minutes, seconds and thousandths unless told otherwise.
    void setTimeText(std::function<QString(double)> timeText);

    /// 0 where it is not to be seen, 1 where it is there whole.
    [[nodiscard]] double presence() const { return m_presence; }

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void playPauseRequested();
    void seekRequested(double seconds);
    void volumeRequested(double volume);
    void muteRequested(bool isMuted);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void build();
    void place();
    void setPresence(double presence);
    void fadeTo(double presence);
    void stayAWhile();
    void onRestEnded();
    void showTimes();
    [[nodiscard]] bool holdsFocus() const;
    [[nodiscard]] bool holdsPointer() const;

    QWidget* m_view;
    QAbstractButton* m_playButton = nullptr;
    QAbstractButton* m_muteButton = nullptr;
    ContinuousSlider* m_position = nullptr;
    ContinuousSlider* m_volume = nullptr;
    FixedDigitLabel* m_time = nullptr;
    FixedDigitLabel* m_durationTime = nullptr;
    std::function<QString(double)> m_timeText;
    QTimer m_rest;
    QPropertyAnimation m_fade;
    QGraphicsOpacityEffect* m_opacity;
    double m_presence = 0;
    double m_duration = 0;
    bool m_isPlaying = false;
    bool m_isMuted = false;
};

} // namespace stillwick
