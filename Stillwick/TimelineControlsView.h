// Where in the film one is, and the way to elsewhere. Main thread.
#pragma once

#include <QWidget>

namespace stillwick {

class AppState;
class ContinuousSlider;
class FixedDigitLabel;
class SymbolButton;

/// The times, the slider between them, and the buttons for moving and capturing.
class TimelineControlsView final : public QWidget {
    Q_OBJECT

public:
    /// `state` outlives the view.
    explicit TimelineControlsView(AppState& state, QWidget* parent = nullptr);

    /// The slider's greatest value: the film's seconds, but never none.
    [[nodiscard]] double sliderUpperBound() const;

private:
    QWidget* makeTimeline();
    QWidget* makeButtons();
    void showTime();
    void showDuration();
    void showPlaying();

    AppState& m_state;
    FixedDigitLabel* m_time = nullptr;
    FixedDigitLabel* m_duration = nullptr;
    ContinuousSlider* m_slider = nullptr;
    SymbolButton* m_playButton = nullptr;
};

} // namespace stillwick
