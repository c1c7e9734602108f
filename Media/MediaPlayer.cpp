#include "Media/MediaPlayer.h"

#include "Media/MediaAsset.h"

#include <QMetaObject>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace stillwick {

MediaPlayerItem::MediaPlayerItem(std::shared_ptr<const MediaAsset> asset)
    : m_asset(std::move(asset)) {}

void MediaPlayerItem::step(int byCount) {
    if (m_player)
        m_player->step(byCount);
}

MediaPlayer::MediaPlayer(QObject* parent) : QObject(parent) {}

MediaPlayer::~MediaPlayer() {
    m_observers.clear();
    m_presenter.reset();
}

void MediaPlayer::replaceCurrentItem(std::shared_ptr<MediaPlayerItem> item) {
    if (m_item)
        m_item->m_player = nullptr;
    if (m_presenter)
        m_presenter->dismiss();
    m_item = std::move(item);
    m_serial = m_lastJump = m_settled = m_paused = 0;
    m_frame = nullptr;
    m_time = CMTime::zero();
    m_picture = QImage();
    const std::uint64_t generation = ++m_generation;
    const auto wake = [this, generation] {
        QMetaObject::invokeMethod(
            this,
            [this, generation] {
                if (generation == m_generation)
                    takePresentation();
            },
            Qt::QueuedConnection);
    };
    if (m_item) {
        m_item->m_player = this;
        m_presenter =
            std::make_unique<FilmPresenter>(m_item->asset(), wake, std::move(m_presenter));
        m_presenter->setVolume(m_volume, m_isMuted);
    } else {
        m_presenter.reset();
    }
    setStatus(TimeControlStatus::Paused);
    emit pictureChanged();
    notifySoon();
}

void MediaPlayer::play() {
    if (!m_presenter || m_status != TimeControlStatus::Paused)
        return;
    m_presenter->play(++m_serial);
    setStatus(TimeControlStatus::Waiting);
    notifySoon();
}

void MediaPlayer::pause() {
    if (!m_presenter || m_status == TimeControlStatus::Paused)
        return;
    m_paused = ++m_serial;
    m_presenter->rest(isSeeking() ? nullptr : m_frame, m_paused);
    setStatus(TimeControlStatus::Paused);
    notifySoon();
}

void MediaPlayer::seek(const CMTime& time, const CMTime& /*toleranceBefore*/,
                       const CMTime& /*toleranceAfter*/) {
    if (!m_presenter || !time.isNumeric() || time.timescale <= 0)
        return;
    m_lastJump = ++m_serial;
    m_presenter->seek(std::max(time, CMTime::zero()), m_lastJump);
}

void MediaPlayer::step(int byCount) {
    if (!m_presenter || byCount == 0)
        return;
    pause();
    m_lastJump = ++m_serial;
    m_presenter->step(byCount, m_lastJump);
}

void MediaPlayer::setVolume(double volume) {
    m_volume = std::clamp(volume, 0.0, 1.0);
    if (m_presenter)
        m_presenter->setVolume(m_volume, m_isMuted);
}

void MediaPlayer::setMuted(bool isMuted) {
    m_isMuted = isMuted;
    if (m_presenter)
        m_presenter->setVolume(m_volume, m_isMuted);
}

std::int64_t MediaPlayer::droppedPictures() const {
    return m_presenter ? m_presenter->droppedPictures() : 0;
}

void MediaPlayer::takePresentation() {
    if (const auto presentation = m_presenter->take())
        show(*presentation);
}

void MediaPlayer::show(const FilmPresenter::Presentation& presentation) {
    using Kind = FilmPresenter::Presentation::Kind;
    const bool isOfPlaying = presentation.kind == Kind::Playing || presentation.kind == Kind::Ended;
    if (isOfPlaying && presentation.serial < m_paused)
        return;
    m_frame = presentation.frame;
    m_time = presentation.time;
    m_picture = presentation.picture;
    if (m_frame)
        m_item->asset()->frameCache()->setShown(m_frame, m_time);
    if (presentation.kind != Kind::Near)
        m_settled = std::max(m_settled, presentation.serial);
    emit pictureChanged();
    if (presentation.kind == Kind::Playing)
        setStatus(TimeControlStatus::Playing);
    else if (presentation.kind == Kind::Ended ||
             (presentation.kind == Kind::Failed && !isSeeking()))
        setStatus(TimeControlStatus::Paused);
    if (presentation.isJump)
        notifyObservers();
    if (presentation.error)
        emit failed(presentation.error->description());
}

void MediaPlayer::setStatus(TimeControlStatus status) {
    if (status == m_status)
        return;
    m_status = status;
    for (auto& [token, observer] : m_observers) {
        if (status == TimeControlStatus::Paused)
            observer.timer->stop();
        else if (!observer.timer->isActive())
            observer.timer->start();
    }
    emit timeControlStatusChanged();
}

MediaPlayer::ObserverToken MediaPlayer::addPeriodicTimeObserver(const CMTime& interval,
                                                                TimeObserver observer) {
    const std::uint64_t token = ++m_lastToken;
    // The player's, so that one left to the event loop when it was removed does not outlive it.
    auto timer = std::make_unique<QTimer>(this);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(std::max(1, int(std::lround(interval.safeSeconds() * 1000))));
    connect(timer.get(), &QTimer::timeout, this, [this, token] { notifyObserver(token); });
    if (m_status != TimeControlStatus::Paused)
        timer->start();
    m_observers.emplace(token, Observer{std::move(observer), std::move(timer)});
    return ObserverToken{token};
}

void MediaPlayer::removeTimeObserver(ObserverToken token) {
    const auto observer = m_observers.find(std::uint64_t(token));
    if (observer == m_observers.end())
        return;
    // It may be its own timer that is calling.
    observer->second.timer->stop();
    observer->second.timer.release()->deleteLater();
    m_observers.erase(observer);
}

void MediaPlayer::notifySoon() {
    if (std::exchange(m_isNotifying, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isNotifying = false;
            notifyObservers();
        },
        Qt::QueuedConnection);
}

void MediaPlayer::notifyObservers() {
    std::vector<std::uint64_t> tokens;
    for (const auto& [token, observer] : m_observers)
        tokens.push_back(token);
    for (const std::uint64_t token : tokens)
        notifyObserver(token);
}

void MediaPlayer::notifyObserver(std::uint64_t token) {
    const auto observer = m_observers.find(token);
    if (observer == m_observers.end())
        return;
    const TimeObserver call = observer->second.call; // it may remove itself
    call(m_time);
}

} // namespace stillwick
