#include "Stillwick/AppState.h"

#include "Media/MediaAsset.h"
#include "Media/MediaError.h"
#include "Stillwick/AppError.h"
#include "Stillwick/ExportNaming.h"
#include "Stillwick/PictureStore.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QCoroFuture>
#include <QPointer>

#include <cmath>
#include <utility>

namespace stillwick {

namespace {

// Fine enough for every film's frames, and what times that are not a frame's are given in.
constexpr int intervalTimescale = 600;
// Styles of one cut-out, one after the other in each of them.
constexpr int mostRenderedAtOnce = 2;

} // namespace

const QString AppState::defaultGroupName = QStringLiteral("Captures");
const QString AppState::videoMissingMessage =
    QStringLiteral("Vidéo introuvable. Rouvrez-la via « Ouvrir une vidéo ».");

AppState::AppState(QObject* parent) : AppState(Services(), parent) {}

AppState::AppState(Services services, QObject* parent)
    : QObject(parent),
      m_player(std::make_shared<MediaPlayer>()), m_groups{CaptureGroup(defaultGroupName)},
      m_activeGroupID(m_groups.front().id()),
      m_subjectExtractor(services.subjectExtractor ? std::move(services.subjectExtractor)
                                                   : std::make_shared<SubjectExtractionService>()),
      m_renderer(ExtractRenderer::make()), m_renderPool(std::make_shared<QThreadPool>()),
      m_regenerator(m_subjectExtractor,
                    services.pictures ? std::move(services.pictures) : PictureStore::shared()) {
    m_renderPool->setObjectName(QStringLiteral("Rendering"));
    m_renderPool->setMaxThreadCount(mostRenderedAtOnce);
    observePlayer();
    observeRegenerator();
}

AppState::~AppState() {
    m_player->removeTimeObserver(m_timeObserver);
}

void AppState::observePlayer() {
    const QPointer<AppState> self(this);
    m_timeObserver = m_player->addPeriodicTimeObserver(CMTime::make(1, 30), [self](CMTime time) {
        if (!self)
            return;
        self->set(self->m_currentTime, time, &AppState::currentTimeChanged);
        self->set(self->m_isPlaying,
                  self->m_player->timeControlStatus() != MediaPlayer::TimeControlStatus::Paused,
                  &AppState::isPlayingChanged);
    });
}

void AppState::loadVideo(const QUrl& url) {
    prepareVideo(url);
    replaceGroups({CaptureGroup(defaultGroupName)});
    m_failures.clear();
    emit failuresChanged();
    set(m_projectURL, {}, &AppState::projectURLChanged);
}

void AppState::prepareVideo(const QUrl& url) {
    set(m_videoURL, url, &AppState::videoURLChanged);
    const auto asset = std::make_shared<const MediaAsset>(url.toLocalFile());
    m_player->replaceCurrentItem(std::make_shared<MediaPlayerItem>(asset));
    m_extractor.prepare(asset);
    loadAssetMetadata(asset);
}

QCoro::Task<> AppState::loadAssetMetadata(std::shared_ptr<const MediaAsset> asset) {
    const QPointer<AppState> self(this);
    const auto isWanted = [&self, &asset] {
        return self && self->m_player->currentItem()->asset() == asset;
    };
    try {
        const CMTime duration = co_await asset->loadDuration();
        if (!isWanted())
            co_return;
        set(m_duration, duration, &AppState::durationChanged);
        const QList<MediaTrack> tracks = co_await asset->loadTracks(MediaType::Video);
        if (!isWanted() || tracks.isEmpty() || !(tracks.front().nominalFrameRate > 0))
            co_return;
        const auto framesPerSecond = std::lround(tracks.front().nominalFrameRate);
        set(m_frameDuration, CMTime::make(1, std::int32_t(framesPerSecond)),
            &AppState::frameDurationChanged);
    } catch (const MediaError& error) {
        if (isWanted())
            setErrorMessage(AppError::frameExtractionFailed(error.description()).description());
    }
}

void AppState::togglePlayPause() {
    if (!hasVideo())
        return;
    if (m_player->timeControlStatus() == MediaPlayer::TimeControlStatus::Paused)
        m_player->play();
    else
        m_player->pause();
}

void AppState::pause() {
    m_player->pause();
    set(m_isPlaying, false, &AppState::isPlayingChanged);
}

void AppState::stepFrame(int count) {
    if (!hasVideo())
        return;
    pause();
    if (const auto& item = m_player->currentItem())
        item->step(count);
}

void AppState::stepInterval(bool forward) {
    if (!hasVideo())
        return;
    pause();
    const CMTime delta =
        CMTime::fromSeconds(forward ? smallInterval : -smallInterval, intervalTimescale);
    seek(clamp(m_player->currentTime() + delta, m_duration));
}

CMTime AppState::clamp(const CMTime& time, const CMTime& duration) {
    if (time < CMTime::zero())
        return CMTime::zero();
    return duration.isValid() && time > duration ? duration : time;
}

void AppState::seek(const CMTime& time) {
    if (hasVideo())
        m_player->seek(time, CMTime::zero(), CMTime::zero());
}

QString AppState::videoName() const {
    return hasVideo() ? ExportNaming::videoName(m_videoURL.toLocalFile()) : QStringLiteral("video");
}

} // namespace stillwick
