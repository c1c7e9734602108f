#include "Media/MediaAsset.h"

#include "Media/FileOpening.h"
#include "Media/FrameCache.h"
#include "Media/FrameSource.h"
#include "Media/MediaError.h"

#include <QPromise>
#include <QThreadPool>

#include <optional>
#include <utility>

namespace stillwick {

namespace {

QThreadPool& loadingPool() {
    static QThreadPool pool;
    static const bool isNamed = [] {
        pool.setObjectName(QStringLiteral("loading"));
        pool.setMaxThreadCount(2);
        return true;
    }();
    Q_UNUSED(isNamed)
    return pool;
}

/// What `load` returns or throws, through a future.
template <typename Value>
QFuture<Value> loaded(Value (*load)(const QString& path), const QString& path) {
    auto promise = std::make_shared<QPromise<Value>>();
    promise->start();
    loadingPool().start([promise, load, path] {
        try {
            promise->addResult(load(path));
        } catch (const MediaError& error) {
            promise->setException(error);
        } catch (const std::bad_alloc&) {
            promise->setException(MediaError::make(MediaError::Category::OutOfMemory));
        }
        promise->finish();
    });
    return promise->future();
}

CMTime durationOf(const QString& path) {
    const std::stop_token never;
    try {
        return FrameSource(path, never).endTime(never);
    } catch (const MediaError& error) {
        if (error.category() != MediaError::Category::NoVideo)
            throw;
    }
    const std::int64_t duration = openContainer(path, never)->duration;
    return CMTime::make(duration == AV_NOPTS_VALUE ? 0 : duration, AV_TIME_BASE);
}

QList<MediaTrack> videoTracksOf(const QString& path) {
    const std::stop_token never;
    const libav::FormatContext container = openContainer(path, never);
    const AVStream* stream = nullptr;
    try {
        stream = &chooseVideoTrack(*container);
    } catch (const MediaError& error) {
        if (error.category() != MediaError::Category::NoVideo)
            throw;
        return {};
    }
    const AVRational average = stream->avg_frame_rate;
    const AVRational rate = average.num > 0 && average.den > 0 ? average : stream->r_frame_rate;
    return {MediaTrack{rate.num > 0 && rate.den > 0 ? float(av_q2d(rate)) : 0.0F}};
}

} // namespace

MediaAsset::MediaAsset(QString path)
    : m_path(std::move(path)), m_cache(std::make_shared<FrameCache>()) {}
MediaAsset::~MediaAsset() = default;

QFuture<CMTime> MediaAsset::loadDuration() const {
    return loaded(&durationOf, m_path);
}

QFuture<QList<MediaTrack>> MediaAsset::loadTracks(MediaType type) const {
    Q_ASSERT(type == MediaType::Video);
    return loaded(&videoTracksOf, m_path);
}

void MediaAsset::open(const std::stop_token& stop) const {
    const std::lock_guard lock(m_mutex);
    if (!m_opened)
        m_opened = std::make_unique<FrameSource>(m_path, stop);
}

std::unique_ptr<FrameSource> MediaAsset::takeFrameSource(const std::stop_token& stop) const {
    {
        const std::lock_guard lock(m_mutex);
        if (m_opened)
            return std::move(m_opened);
    }
    return std::make_unique<FrameSource>(m_path, stop);
}

} // namespace stillwick
