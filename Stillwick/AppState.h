// What one window works on. Main thread; the window owns it.
#pragma once

#include "Media/CMTime.h"
#include "Media/MediaPlayer.h"
#include "Stillwick/CaptureGroup.h"
#include "Stillwick/EdgeOptions.h"
#include "Stillwick/ExportFailure.h"
#include "Stillwick/ExportMode.h"
#include "Stillwick/ExportProgress.h"
#include "Stillwick/ExtractRenderer.h"
#include "Stillwick/FilterStyle.h"
#include "Stillwick/ImageExportService.h"
#include "Stillwick/StillRegenerator.h"
#include "Stillwick/VideoFrameExtractorService.h"

#include <QByteArray>
#include <QCoroTask>
#include <QFuture>
#include <QImage>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QThreadPool>
#include <QUrl>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace stillwick {

class MediaAsset;
class SubjectExtractionService;
struct ExportJob;
struct ProjectFile;

/// The film that is open and where it is watched, the captures made of it, and what the user has
/// chosen for them.
class AppState final : public QObject {
    Q_OBJECT

public:
    /// What a state works with. Each field that is left empty stands for the program's own.
    struct Services {
        std::shared_ptr<SubjectExtractionService> subjectExtractor;
        std::shared_ptr<PictureStore> pictures;
    };

    /// The name of the group that every fresh set of captures has.
    static const QString defaultGroupName;
    /// What is said of a project whose film is gone.
    static const QString videoMissingMessage;
    /// Seconds moved by one interval step.
    static constexpr double smallInterval = 1.0;

    explicit AppState(QObject* parent = nullptr);
    explicit AppState(Services services, QObject* parent = nullptr);
    ~AppState() override;

    // The film, and where it is watched.

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
    /// `time` brought between zero and `duration`; only above zero where that is invalid.
    [[nodiscard]] static CMTime clamp(const CMTime& time, const CMTime& duration);

    // Captures and groups.

    /// Captures the picture that the player shows into the active group, and selects the capture.
    /// Its picture and its subject follow.
    void captureCurrentFrame();
    void setNote(const QString& text, const QUuid& id);
    void setAnnotations(const QList<Annotation>& annotations, const QUuid& id);
    void deleteFrame(const QUuid& id);
    /// Moves captures inside a group in front of the one at `to`; offsets are those before the
    /// move, and `to` may be the group's length.
    void moveFrames(const QUuid& groupID, const QSet<int>& from, int to);
    /// Moves a capture to the end of a group, its own included.
    void moveFrame(const QUuid& id, const QUuid& groupID);
    /// Adds a group behind the others and makes it active.
    void addGroup();
    void setActiveGroup(const QUuid& id);
    /// Deletes a group and its captures; the last group stays.
    void deleteGroup(const QUuid& id);
    void setGroupName(const QString& name, const QUuid& id);
    void setGroupNotes(const QString& notes, const QUuid& id);
    void setSelection(const QSet<QUuid>& ids);
    void setSelectedFilter(FilterStyle style);
    void setEdgeOptions(const EdgeOptions& options);
    /// The capture's subject in that style, with the edge settings of this moment; null where there
    /// is no subject, and after `stop`. *Thread*: renders on the state's own pool; resumes here.
    /// *Lifetime*: the state may go while the rendering is under way.
    [[nodiscard]] QCoro::Task<QImage> rendered(const CapturedFrame& frame, FilterStyle style,
                                               std::stop_token stop = {}) const;

    /// Never empty.
    [[nodiscard]] const QList<CaptureGroup>& groups() const noexcept { return m_groups; }
    /// The group that takes new captures; where no group has that id, the first one does.
    [[nodiscard]] const QUuid& activeGroupID() const noexcept { return m_activeGroupID; }
    [[nodiscard]] qsizetype activeGroupIndex() const;
    [[nodiscard]] const QSet<QUuid>& selection() const noexcept { return m_selection; }
    /// The captures of all groups, in their order.
    [[nodiscard]] QList<CapturedFrame> allFrames() const;
    [[nodiscard]] int frameCount() const;
    /// The capture that is looked at: a selected one, else the last of all; none where there is no
    /// capture.
    [[nodiscard]] std::optional<CapturedFrame> previewFrame() const;
    [[nodiscard]] FilterStyle selectedFilter() const noexcept { return m_selectedFilter; }
    [[nodiscard]] const EdgeOptions& edgeOptions() const noexcept { return m_edgeOptions; }
    [[nodiscard]] ExtractRenderer renderer() const { return m_renderer; }
    /// Captures whose picture or subject is still being made.
    [[nodiscard]] int unfinishedFrames() const noexcept { return m_regenerator.remaining(); }

    // Export and projects.

    void setOutputFolder(const QUrl& folder);
    void setCropToSubject(bool crop);
    /// Exports all captures as they are now. `progress` and `failures` tell what becomes of it. The
    /// export goes on where the state goes, and the program stays until it is done.
    void runExport(ExportMode mode);
    /// The file that a merged export would write of the capture now, under `exportedName`; empty
    /// where it has no subject. *Thread*: made on the state's own pool.
    [[nodiscard]] QFuture<QByteArray> exportedPNG(const CapturedFrame& frame) const;
    [[nodiscard]] QString exportedName(const CapturedFrame& frame) const;
    /// Shows the folder of the last export in the file browser.
    void openExportFolder();
    /// Writes the project file and remembers where. A failure is told, and changes nothing.
    void saveProject(const QUrl& url);
    /// Replaces everything but the player by what the project file holds; the pictures follow.
    /// Where its film is not found the one that is open stays. A file that cannot be read changes
    /// nothing.
    void openProject(const QUrl& url);
    void setErrorMessage(std::optional<QString> message);

    [[nodiscard]] const QUrl& outputFolder() const noexcept { return m_outputFolder; }
    [[nodiscard]] bool cropToSubject() const noexcept { return m_cropToSubject; }
    [[nodiscard]] const ExportProgress& progress() const noexcept { return m_progress; }
    /// Of the last export, in the order in which they happened.
    [[nodiscard]] const QList<ExportFailure>& failures() const noexcept { return m_failures; }
    /// Where the last export went, until its folder is opened; empty where none ended.
    [[nodiscard]] const QUrl& exportFinishedFolder() const noexcept {
        return m_exportFinishedFolder;
    }
    /// The project file that the state was last saved to or opened from; empty where none.
    [[nodiscard]] const QUrl& projectURL() const noexcept { return m_projectURL; }
    /// The one message that waits to be shown.
    [[nodiscard]] const std::optional<QString>& errorMessage() const noexcept {
        return m_errorMessage;
    }

signals:
    void videoURLChanged();
    void currentTimeChanged();
    void durationChanged();
    void isPlayingChanged();
    void frameDurationChanged();
    /// Groups or captures came, went or moved.
    void groupsChanged();
    /// A group's name or notes changed.
    void groupChanged(const QUuid& id);
    /// A capture's pictures, notes or annotations changed.
    void frameChanged(const QUuid& id);
    void activeGroupIDChanged();
    void selectionChanged();
    void selectedFilterChanged();
    void edgeOptionsChanged();
    void outputFolderChanged();
    void cropToSubjectChanged();
    void progressChanged();
    void failuresChanged();
    void exportFinishedFolderChanged();
    void projectURLChanged();
    void errorMessageChanged();

private:
    void observePlayer();
    QCoro::Task<> loadAssetMetadata(std::shared_ptr<const MediaAsset> asset);
    void observeRegenerator();
    void regenerateFrame(const QUuid& id, const CMTime& time);
    void updateFrame(const QUuid& id, const std::function<void(CapturedFrame&)>& change);
    void replaceGroups(QList<CaptureGroup> groups);
    void preferPreview();
    [[nodiscard]] ProjectFile makeProjectFile() const;
    void apply(const ProjectFile& file);
    QCoro::Task<> exportToEnd(ExportJob job, QUrl folder);
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
    FilterStyle m_selectedFilter = FilterStyle::none;
    EdgeOptions m_edgeOptions;

    QUrl m_outputFolder;
    bool m_cropToSubject = false;
    ExportProgress m_progress;
    QList<ExportFailure> m_failures;
    QUrl m_exportFinishedFolder;
    QUrl m_projectURL;
    std::optional<QString> m_errorMessage;

    VideoFrameExtractorService m_extractor;
    std::shared_ptr<SubjectExtractionService> m_subjectExtractor;
    ImageExportService m_imageExporter;
    ExtractRenderer m_renderer;
    std::shared_ptr<QThreadPool> m_renderPool;
    StillRegenerator m_regenerator;
};

template <typename Value>
void AppState::set(Value& field, Value value, void (AppState::*changed)()) {
    if (field == value)
        return;
    field = std::move(value);
    emit(this->*changed)();
}

} // namespace stillwick
