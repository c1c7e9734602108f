#include "Stillwick/TimelineControlsView.h"

#include "Interface/Buttons.h"
#include "Interface/ContinuousSlider.h"
#include "Interface/Labels.h"
#include "Interface/TextStyle.h"
#include "Stillwick/AppState.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace stillwick {

namespace {

constexpr double leastUpperBound = 0.01;
constexpr int sliderTimescale = 600;
constexpr int timelineSpacing = 12;
constexpr int buttonSpacing = 8;

} // namespace

TimelineControlsView::TimelineControlsView(AppState& state, QWidget* parent)
    : QWidget(parent), m_state(state) {
    constexpr int margin = 10;
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(buttonSpacing);
    column->addWidget(makeTimeline());
    column->addWidget(makeButtons());
    setFocusProxy(m_slider);
    connect(&state, &AppState::currentTimeChanged, this, &TimelineControlsView::showTime);
    connect(&state, &AppState::durationChanged, this, &TimelineControlsView::showDuration);
    connect(&state, &AppState::isPlayingChanged, this, &TimelineControlsView::showPlaying);
    showDuration();
    showTime();
    showPlaying();
}

QWidget* TimelineControlsView::makeTimeline() {
    auto* const row = new QWidget(this);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    layout->setSpacing(timelineSpacing);
    m_time = new FixedDigitLabel(row);
    m_time->setAccessibleName(QStringLiteral("Instant"));
    m_slider = new ContinuousSlider(row);
    m_slider->setAccessibleName(QStringLiteral("Position dans la vidéo"));
    m_slider->setValueText([](double seconds) {
        return CMTime::fromSeconds(seconds, sliderTimescale).displayString();
    });
    m_duration = new FixedDigitLabel(row);
    m_duration->setAccessibleName(QStringLiteral("Durée"));
    setTextStyle(m_time, TextStyle::caption);
    setTextStyle(m_duration, TextStyle::caption);
    layout->addWidget(m_time);
    layout->addWidget(m_slider, 1);
    layout->addWidget(m_duration);
    connect(m_slider, &ContinuousSlider::valueChosen, this, [this](double seconds) {
        m_state.seek(CMTime::fromSeconds(seconds, sliderTimescale));
    });
    return row;
}

QWidget* TimelineControlsView::makeButtons() {
    auto* const row = new QWidget(this);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins({});
    layout->setSpacing(buttonSpacing);
    const auto add = [&](QStringView symbol, const char* help, auto action) {
        auto* const button =
            new SymbolButton(symbol, QString::fromUtf8(help), SymbolButton::Border::thin, row);
        layout->addWidget(button);
        connect(button, &QAbstractButton::clicked, this, action);
        return button;
    };
    add(u"gobackward", "Reculer d'un intervalle (⇧←)", [this] { m_state.stepInterval(false); });
    add(u"backward.frame.fill", "Image précédente (←)", [this] { m_state.stepFrame(-1); });
    m_playButton =
        add(u"play.fill", "Lecture / Pause (Espace)", [this] { m_state.togglePlayPause(); });
    add(u"forward.frame.fill", "Image suivante (→)", [this] { m_state.stepFrame(1); });
    add(u"goforward", "Avancer d'un intervalle (⇧→)", [this] { m_state.stepInterval(true); });
    layout->addStretch();
    auto* const capture = new ProminentButton(u"camera.fill", QStringLiteral("Capturer"),
                                              ProminentButton::Size::regular, row);
    capture->setToolTip(QStringLiteral("Ajouter l'image courante à la liste (C)"));
    connect(capture, &QAbstractButton::clicked, this, [this] { m_state.captureCurrentFrame(); });
    layout->addWidget(capture);
    return row;
}

double TimelineControlsView::sliderUpperBound() const {
    return std::max(m_state.duration().safeSeconds(), leastUpperBound);
}

void TimelineControlsView::showTime() {
    m_time->setText(m_state.currentTime().displayString());
    m_slider->setRealValue(m_state.currentTime().safeSeconds());
}

void TimelineControlsView::showDuration() {
    m_duration->setText(m_state.duration().displayString());
    m_slider->setBounds(0, sliderUpperBound());
    m_slider->setRealValue(m_state.currentTime().safeSeconds());
}

void TimelineControlsView::showPlaying() {
    m_playButton->setSymbol(m_state.isPlaying() ? u"pause.fill" : u"play.fill");
}

} // namespace stillwick
