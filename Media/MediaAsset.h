// A film as a thing that can be opened. Any thread.
#pragma once

#include "Media/CMTime.h"

#include <QFuture>
#include <QList>
#include <QString>

#include <memory>
#include <mutex>
#include <stop_token>

namespace stillwick {

class FrameCache;
class FrameSource;

/// What is told of a track without decoding it.
struct MediaTrack {
    float nominalFrameRate = 0; ///< frames per second; 0 where the container does not say
};

enum class MediaType { Video };

/// The film in one file. Making one reads nothing; what is wrong with the file shows when it is
/// opened.
class MediaAsset final {
public:
    explicit MediaAsset(QString path);
    ~MediaAsset();

    [[nodiscard]] const QString& path() const noexcept { return m_path; }

    /// Opens the file and finds its picture track, ready for the first picture asked for. A second
    /// call does nothing while that has not been used. *Errors*: MediaError. *Thread*: blocks while
    /// the head of the file is read.
    void open(const std::stop_token& stop = {}) const;

    /// Access to the frames for one user alone: what `open` made, or newly opened.
    /// *Errors*: MediaError.
    [[nodiscard]] std::unique_ptr<FrameSource> takeFrameSource(const std::stop_token& stop) const;

    /// How long the film is: to the end of its last picture; where it has no pictures, as long as
    /// its container says. *Errors*: MediaError, through the future. *Thread*: reads on a pool.
    [[nodiscard]] QFuture<CMTime> loadDuration() const;
    /// The tracks of a type: for video none or one, the track whose pictures are shown.
    /// *Errors*, *Thread*: as `loadDuration`.
    [[nodiscard]] QFuture<QList<MediaTrack>> loadTracks(MediaType type) const;

    /// The frames that whoever plays this film has decoded. What is asked for at a time that is
    /// shown is the very frame shown.
    [[nodiscard]] const std::shared_ptr<FrameCache>& frameCache() const noexcept { return m_cache; }

private:
    QString m_path;
    std::shared_ptr<FrameCache> m_cache;
    mutable std::mutex m_mutex;
    mutable std::unique_ptr<FrameSource> m_opened; // guarded by m_mutex
};

} // namespace stillwick
