#include "Stillwick/VideoPlayerView.h"

#include "Interface/Accessibility.h"
#include "Interface/PlayerControls.h"

#include <QPainter>
#include <QPointer>

namespace stillwick {

namespace {

constexpr int seekTimescale = 600;

} // namespace

VideoPlayerView::VideoPlayerView(QWidget* parent)
    : QWidget(parent), m_controls(new PlayerControls(this)) {
    setAccessibleRole(this, QAccessible::Animation);
    setAccessibleName(QStringLiteral("Vidéo"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    m_controls->setTimeText(
        [](double seconds) { return CMTime::fromSeconds(seconds, seekTimescale).displayString(); });
    connect(m_controls, &PlayerControls::playPauseRequested, this, [this] {
        if (m_player->timeControlStatus() == MediaPlayer::TimeControlStatus::Paused)
            m_player->play();
        else
            m_player->pause();
    });
    connect(m_controls, &PlayerControls::seekRequested, this, [this](double seconds) {
        m_player->seek(CMTime::fromSeconds(seconds, seekTimescale), CMTime::zero(), CMTime::zero());
    });
    connect(m_controls, &PlayerControls::volumeRequested, this, [this](double volume) {
        m_player->setVolume(volume);
        m_controls->setVolume(volume);
    });
    connect(m_controls, &PlayerControls::muteRequested, this, [this](bool isMuted) {
        m_player->setMuted(isMuted);
        m_controls->setMuted(isMuted);
    });
}

VideoPlayerView::~VideoPlayerView() {
    detach();
}

void VideoPlayerView::detach() {
    if (!m_player)
        return;
    m_player->removeTimeObserver(m_timeObserver);
    disconnect(m_player.get(), nullptr, this, nullptr);
}

void VideoPlayerView::setPlayer(const std::shared_ptr<MediaPlayer>& player) {
    if (player == m_player)
        return;
    detach();
    m_player = player;
    connect(m_player.get(), &MediaPlayer::pictureChanged, this, qOverload<>(&QWidget::update));
    connect(m_player.get(), &MediaPlayer::timeControlStatusChanged, this,
            &VideoPlayerView::showStatus);
    const QPointer<VideoPlayerView> self(this);
    m_timeObserver =
        m_player->addPeriodicTimeObserver(CMTime::make(1, 30), [self](const CMTime& time) {
            if (self)
                self->m_controls->setPosition(time.safeSeconds());
        });
    m_controls->setVolume(m_player->volume());
    m_controls->setMuted(m_player->isMuted());
    showStatus();
    update();
}

void VideoPlayerView::setDuration(const CMTime& duration) {
    m_controls->setDuration(duration.safeSeconds());
}

void VideoPlayerView::showStatus() {
    m_controls->setPlaying(m_player->timeControlStatus() != MediaPlayer::TimeControlStatus::Paused);
}

QRect VideoPlayerView::pictureRect() const {
    if (!m_player || m_player->picture().isNull())
        return {};
    const QSize fitted = m_player->picture().size().scaled(size(), Qt::KeepAspectRatio);
    return {QPoint((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted};
}

void VideoPlayerView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    const QRect target = pictureRect();
    if (target.isEmpty())
        return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, m_player->picture());
}

} // namespace stillwick
