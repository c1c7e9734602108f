#include "Interface/PlayerControls.h"

#include "Interface/Buttons.h"
#include "Interface/ContinuousSlider.h"
#include "Interface/Labels.h"
#include "Interface/StylePainting.h"
#include "Interface/Symbol.h"

#include <QApplication>
#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace stillwick {

namespace {

constexpr int margin = 12;
constexpr int greatestWidth = 720;
constexpr int widthForVolume = 380;
constexpr double cornerRadius = 12;
constexpr std::chrono::milliseconds restTime(2500);
constexpr int fadeMilliseconds = 160;
constexpr QColor symbolColor(0xf2, 0xf2, 0xf6);

QString minutesText(double seconds) {
    const qint64 milliseconds = std::llround(std::max(0.0, seconds) * 1000);
    return QStringLiteral("%1:%2.%3")
        .arg(milliseconds / 60'000, 2, 10, QLatin1Char('0'))
        .arg(milliseconds / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(milliseconds % 1000, 3, 10, QLatin1Char('0'));
}

SymbolButton* makeButton() {
    auto* button = new SymbolButton(u"play.fill", QString(), SymbolButton::Border::none);
    button->setFocusPolicy(Qt::TabFocus); // a click leaves the focus where it is
    return button;
}

ContinuousSlider* makeSlider(const QString& name) {
    auto* slider = new ContinuousSlider;
    slider->setFocusPolicy(Qt::TabFocus);
    slider->setAccessibleName(name);
    return slider;
}

FixedDigitLabel* makeTimeLabel() {
    auto* label = new FixedDigitLabel;
    setTextStyle(label, TextStyle::caption);
    return label;
}

} // namespace

PlayerControls::PlayerControls(QWidget* view)
    : QWidget(view), m_view(view), m_timeText(minutesText), m_fade(this, "presence"),
      m_opacity(new QGraphicsOpacityEffect(this)) {
    setPalette(themePalette(ColorScheme::dark)); // it lies over a picture, whatever the theme
    setAccessibleName(QStringLiteral("Commandes de lecture"));
    setGraphicsEffect(m_opacity);
    m_fade.setDuration(fadeMilliseconds);
    m_rest.setSingleShot(true);
    m_rest.setInterval(restTime);
    connect(&m_rest, &QTimer::timeout, this, &PlayerControls::onRestEnded);
    build();
    setPlaying(false);
    setMuted(false);
    setVolume(1);
    setDuration(0);
    setPresence(0);

    view->setMouseTracking(true);
    view->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
        const bool hadFocus = before != nullptr && isAncestorOf(before);
        if (now != nullptr && isAncestorOf(now))
            fadeTo(1);
        else if (hadFocus)
            stayAWhile();
    });
    place();
    show(); // the view may be shown already
}

void PlayerControls::build() {
    m_playButton = makeButton();
    m_position = makeSlider(QStringLiteral("Position"));
    m_muteButton = makeButton();
    m_volume = makeSlider(QStringLiteral("Volume"));
    m_time = makeTimeLabel();
    m_durationTime = makeTimeLabel();
    m_volume->setFixedWidth(84);
    m_volume->setStep(0.05);
    m_volume->setValueText(
        [](double volume) { return QStringLiteral("%1 %").arg(std::lround(volume * 100)); });
    m_position->setValueText([this](double seconds) { return m_timeText(seconds); });

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 6, 12, 6);
    layout->setSpacing(8);
    layout->addWidget(m_playButton);
    layout->addWidget(m_time);
    layout->addWidget(m_position, 1);
    layout->addWidget(m_durationTime);
    layout->addWidget(m_muteButton);
    layout->addWidget(m_volume);

    connect(m_playButton, &QAbstractButton::clicked, this, &PlayerControls::playPauseRequested);
    connect(m_muteButton, &QAbstractButton::clicked, this,
            [this] { emit muteRequested(!m_isMuted); });
    connect(m_volume, &ContinuousSlider::valueChosen, this, &PlayerControls::volumeRequested);
    connect(m_position, &ContinuousSlider::valueChosen, this, [this](double seconds) {
        showTimes();
        emit seekRequested(seconds);
    });
}

void PlayerControls::setPlaying(bool isPlaying) {
    m_isPlaying = isPlaying;
    m_playButton->setIcon(symbolIcon(isPlaying ? u"pause.fill" : u"play.fill", symbolColor));
    const QString name = isPlaying ? QStringLiteral("Pause") : QStringLiteral("Lecture");
    m_playButton->setToolTip(name);
    m_playButton->setAccessibleName(name);
}

void PlayerControls::setMuted(bool isMuted) {
    m_isMuted = isMuted;
    m_muteButton->setIcon(
        symbolIcon(isMuted ? u"speaker.slash.fill" : u"speaker.wave.2.fill", symbolColor));
    const QString name =
        isMuted ? QStringLiteral("Rétablir le son") : QStringLiteral("Couper le son");
    m_muteButton->setToolTip(name);
    m_muteButton->setAccessibleName(name);
    m_volume->setEnabled(!isMuted);
}

void PlayerControls::setVolume(double volume) {
    m_volume->setRealValue(volume);
}

void PlayerControls::setDuration(double seconds) {
    constexpr double shortest = 0.01; // so that the slider has a range
    m_duration = std::max(0.0, seconds);
    m_position->setBounds(0, std::max(shortest, m_duration));
    showTimes();
}

void PlayerControls::setPosition(double seconds) {
    m_position->setRealValue(seconds);
    showTimes();
}

void PlayerControls::setTimeText(std::function<QString(double)> timeText) {
    m_timeText = std::move(timeText);
    showTimes();
}

void PlayerControls::showTimes() {
    m_time->setText(m_timeText(m_position->realValue()));
    m_durationTime->setText(m_timeText(m_duration));
}

void PlayerControls::place() {
    const int width = std::min(greatestWidth, m_view->width() - 2 * margin);
    const bool hasRoom = width >= widthForVolume;
    m_volume->setVisible(hasRoom);
    const int height = sizeHint().height();
    setGeometry((m_view->width() - width) / 2, m_view->height() - height - margin, width, height);
    raise();
}

void PlayerControls::setPresence(double presence) {
    m_presence = presence;
    m_opacity->setOpacity(presence);
    m_opacity->setEnabled(presence < 1); // painting through an effect costs
}

void PlayerControls::fadeTo(double presence) {
    m_fade.stop();
    m_fade.setStartValue(m_presence);
    m_fade.setEndValue(presence);
    m_fade.start();
}

void PlayerControls::stayAWhile() {
    fadeTo(1);
    m_rest.start();
}

bool PlayerControls::holdsFocus() const {
    return QApplication::focusWidget() != nullptr && isAncestorOf(QApplication::focusWidget());
}

bool PlayerControls::holdsPointer() const {
    return underMouse() || m_position->isSliderDown() || m_volume->isSliderDown();
}

void PlayerControls::onRestEnded() {
    if (!holdsFocus() && !holdsPointer())
        fadeTo(0);
    else if (!holdsFocus())
        m_rest.start();
}

bool PlayerControls::eventFilter(QObject* /*watched*/, QEvent* event) {
    switch (event->type()) {
    case QEvent::Resize:
        place();
        break;
    case QEvent::Enter:
    case QEvent::MouseMove:
        stayAWhile();
        break;
    case QEvent::Leave:
        if (!holdsFocus()) {
            m_rest.stop();
            fadeTo(0);
        }
        break;
    default:
        break;
    }
    return false;
}

void PlayerControls::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRectF bar(rect());
    fillRounded(painter, bar, cornerRadius, QColor(22, 22, 27, 222));
    strokeRounded(painter, bar, cornerRadius, QColor(255, 255, 255, 30));
}

void PlayerControls::mousePressEvent(QMouseEvent* event) {
    event->accept(); // between two controls, nothing is meant
}

} // namespace stillwick
