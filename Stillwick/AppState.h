// What one window works on. Main thread; the window owns it.
#pragma once

#include "Media/CMTime.h"
#include "Media/MediaPlayer.h"
#include "Stillwick/CaptureGroup.h"
#include "Stillwick/ExportFailure.h"
#include "Stillwick/VideoFrameExtractorService.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <memory>
#include <optional>

namespace stillwick {

class MediaAsset;

/// The film that is open and where it is watched, the captures made of it, and what the user has
/// chosen for them.
class AppState final : public QObject {
    Q_OBJECT

public:
    /// The name of the group that every fresh set of captures has.
    static const QString defaultGroupName;
    /// Seconds moved by one interval step.
    static constexpr double smallInterval = 1.0;

    explicit AppState(QObject* parent = nullptr);
    ~AppState() override;

    /// Opens a film and starts a fresh set of captures; folder, style and edge settings stay.
    void loadVideo(const QUrl& url);
    /// Opens a film and leaves the captures alone. `duration` and `frameDuration` follow when they
    /// have been read.
    void prepareVideo(const QUrl& url);
    void togglePlayPause();
    void pause();
    /// Pauses, and moves by so many frames, negative for back.
    void stepFrame(int count);
    /// Pauses, and moves by `smallInterval`, inside the film.
    void stepInterval(bool forward);
    /// Goes to exactly that time.
    void seek(const CMTime& time);
    void setOutputFolder(const QUrl& folder);
    void setCropToSubject(bool crop);
    void setSelection(const QSet<QUuid>& ids);
    void setErrorMessage(std::optional<QString> message);

    /// The film that is open; empty while none is.
    [[nodiscard]] const QUrl& videoURL() const noexcept { return m_videoURL; }
    [[nodiscard]] bool hasVideo() const noexcept { return !m_videoURL.isEmpty(); }
    /// The file's name without its extension; "video" while no film is open.
    [[nodiscard]] QString videoName() const;
    /// One for the state's whole life.
    [[nodiscard]] const std::shared_ptr<MediaPlayer>& player() const noexcept { return m_player; }
    /// As the player last reported it.
    [[nodiscard]] CMTime currentTime() const noexcept { return m_currentTime; }
    [[nodiscard]] CMTime duration() const noexcept { return m_duration; }
    [[nodiscard]] bool isPlaying() const noexcept { return m_isPlaying; }
    /// Of one frame by the film's nominal rate, rounded to whole frames per second: for the
    /// timeline, not for stepping. Of timescale 0, not a time, where the rate rounds to 0.
    [[nodiscard]] CMTime frameDuration() const noexcept { return m_frameDuration; }
    [[nodiscard]] const QList<CaptureGroup>& groups() const noexcept { return m_groups; }
    [[nodiscard]] const QUuid& activeGroupID() const noexcept { return m_activeGroupID; }
    [[nodiscard]] const QSet<QUuid>& selection() const noexcept { return m_selection; }
    [[nodiscard]] const QList<ExportFailure>& failures() const noexcept { return m_failures; }
    [[nodiscard]] const QUrl& outputFolder() const noexcept { return m_outputFolder; }
    [[nodiscard]] bool cropToSubject() const noexcept { return m_cropToSubject; }
    /// The project file that the state was last saved to or opened from; empty where none.
    [[nodiscard]] const QUrl& projectURL() const noexcept { return m_projectURL; }
    /// The one message that waits to be shown.
    [[nodiscard]] const std::optional<QString>& errorMessage() const noexcept {
        return m_errorMessage;
    }

    /// `time` brought between zero and `duration`; only above zero where that is invalid.
    [[nodiscard]] static CMTime clamp(const CMTime& time, const CMTime& duration);

signals:
    void videoURLChanged();
    void currentTimeChanged();
    void durationChanged();
    void isPlayingChanged();
    void frameDurationChanged();
    void groupsChanged();
    void activeGroupIDChanged();
    void selectionChanged();
    void failuresChanged();
    void outputFolderChanged();
    void cropToSubjectChanged();
    void projectURLChanged();
    void errorMessageChanged();

private:
    void observePlayer();
    QCoro::Task<> loadAssetMetadata(std::shared_ptr<const MediaAsset> asset);
    template <typename Value>
    void set(Value& field, Value value, void (AppState::*changed)());

    QUrl m_videoURL;
    std::shared_ptr<MediaPlayer> m_player;
    MediaPlayer::ObserverToken m_timeObserver{};
    CMTime m_currentTime = CMTime::zero();
    CMTime m_duration = CMTime::zero();
    bool m_isPlaying = false;
    CMTime m_frameDuration = CMTime::make(1, 30);
    QList<CaptureGroup> m_groups;
    QUuid m_activeGroupID;
    QSet<QUuid> m_selection;
    QList<ExportFailure> m_failures;
    QUrl m_outputFolder;
    bool m_cropToSubject = false;
    QUrl m_projectURL;
    std::optional<QString> m_errorMessage;
    VideoFrameExtractorService m_extractor;
};

} // namespace stillwick
