// Plays films. Belongs to the main thread, on which all its answers arrive.
#pragma once

#include "Media/CMTime.h"
#include "Media/FilmPresenter.h"

#include <QImage>
#include <QObject>
#include <QPointer>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

class QTimer;

namespace stillwick {

class MediaAsset;
class MediaPlayer;

/// A film as something that a player can have before it.
class MediaPlayerItem final {
public:
    explicit MediaPlayerItem(std::shared_ptr<const MediaAsset> asset);

    [[nodiscard]] const std::shared_ptr<const MediaAsset>& asset() const noexcept {
        return m_asset;
    }
    /// Moves by so many frames in presentation order from the frame shown, negative for back; stops
    /// at the film's first and last. Ends playing. Steps asked before earlier ones are shown are
    /// added up. Nothing while no player has the item.
    void step(int byCount);

private:
    friend class MediaPlayer;

    std::shared_ptr<const MediaAsset> m_asset;
    QPointer<MediaPlayer> m_player;
};

/// Shows one film at a time: playing with its sound, seeking and stepping to exact frames.
///
/// No call waits for a picture. The picture and the current time change together, when the picture
/// is ready: what is grabbed at `currentTime` is what is seen.
class MediaPlayer final : public QObject {
    Q_OBJECT

public:
    enum class TimeControlStatus {
        Paused,
        Waiting, ///< about to play, until there is enough to play
        Playing,
    };
    using TimeObserver = std::function<void(const CMTime& time)>;
    enum class ObserverToken : std::uint64_t {};

    explicit MediaPlayer(QObject* parent = nullptr);
    /// Joins its threads, within a packet's decoding.
    ~MediaPlayer() override;

    /// Shows another film, paused at its first picture; none for null.
    void replaceCurrentItem(std::shared_ptr<MediaPlayerItem> item);
    void play();
    void pause();
    /// Goes to the frame shown at `time`, brought inside the film; ignored where `time` is not a
    /// number. A newer seek replaces one under way. Where seeks follow each other fast, pictures
    /// within reach are shown until the exact one follows; it always satisfies the tolerances.
    void seek(const CMTime& time, const CMTime& toleranceBefore, const CMTime& toleranceAfter);
    /// Calls `observer` on the main thread every `interval` while playing, and at each jump: a seek
    /// or a step that finished, a play, a pause, an end. Never after its removal.
    [[nodiscard]] ObserverToken addPeriodicTimeObserver(const CMTime& interval,
                                                        TimeObserver observer);
    void removeTimeObserver(ObserverToken token);
    /// From 0, silence, to 1.
    void setVolume(double volume);
    void setMuted(bool isMuted);

    [[nodiscard]] const std::shared_ptr<MediaPlayerItem>& currentItem() const noexcept {
        return m_item;
    }
    [[nodiscard]] TimeControlStatus timeControlStatus() const noexcept { return m_status; }
    /// After a seek the time asked for, after a step the frame's exact time, while playing the time
    /// of the frame shown; at the end the film's end.
    [[nodiscard]] CMTime currentTime() const noexcept { return m_time; }
    /// The picture shown; null where there is none.
    [[nodiscard]] const QImage& picture() const noexcept { return m_picture; }
    [[nodiscard]] double volume() const noexcept { return m_volume; }
    [[nodiscard]] bool isMuted() const noexcept { return m_isMuted; }
    /// True while a seek or a step is not yet shown.
    [[nodiscard]] bool isSeeking() const noexcept { return m_settled < m_lastJump; }
    /// Pictures of the current film that were left out because their moment had passed.
    [[nodiscard]] std::int64_t droppedPictures() const;

signals:
    void pictureChanged();
    void timeControlStatusChanged();
    /// `description` is a French sentence for people.
    void failed(const QString& description);

private:
    friend class MediaPlayerItem;

    struct Observer {
        TimeObserver call;
        std::unique_ptr<QTimer> timer;
    };

    void step(int byCount);
    void takePresentation();
    void show(const FilmPresenter::Presentation& presentation);
    void setStatus(TimeControlStatus status);
    void notifySoon();
    void notifyObservers();
    void notifyObserver(std::uint64_t token);

    std::shared_ptr<MediaPlayerItem> m_item;
    std::unique_ptr<FilmPresenter> m_presenter;
    std::uint64_t m_generation = 0; ///< of the presenter
    std::uint64_t m_serial = 0;     ///< of the last command
    std::uint64_t m_lastJump = 0;   ///< the last seek or step asked
    std::uint64_t m_settled = 0;    ///< the last seek or step shown
    std::uint64_t m_paused = 0;     ///< the last pause: what played before it is not shown after it
    TimeControlStatus m_status = TimeControlStatus::Paused;
    CMTime m_time = CMTime::zero();
    SharedFrame m_frame;
    QImage m_picture;
    double m_volume = 1;
    bool m_isMuted = false;
    bool m_isNotifying = false;
    std::uint64_t m_lastToken = 0;
    std::map<std::uint64_t, Observer> m_observers;
};

} // namespace stillwick
