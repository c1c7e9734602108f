#include "Stillwick/CommandRunner.h"

#include "Media/MediaAsset.h"
#include "Media/MediaError.h"
#include "Stillwick/AppError.h"
#include "Stillwick/AppState.h"
#include "Stillwick/BatchExportService.h"
#include "Stillwick/ErrorDescription.h"
#include "Stillwick/ExportNaming.h"
#include "Stillwick/ProjectContent.h"
#include "Stillwick/ProjectStore.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QDir>
#include <QFileInfo>

#include <memory>
#include <optional>
#include <utility>

namespace stillwick {

namespace {

/// An extractor ready for the film; none, with a complaint, where it cannot be opened.
std::optional<VideoFrameExtractorService> openFilm(const QString& video,
                                                   const CommandOutput& output) {
    auto asset = std::make_shared<const MediaAsset>(video);
    try {
        asset->open();
    } catch (const MediaError& error) {
        output.complaint(QStringLiteral("%1 — %2").arg(video, error.description()));
        return std::nullopt;
    }
    VideoFrameExtractorService extractor;
    extractor.prepare(std::move(asset));
    return extractor;
}

QString failureLine(const QString& timestamp, const QString& message) {
    return timestamp + QStringLiteral(" — ") + message;
}

QString absolute(const QString& path) {
    return QFileInfo(path).absoluteFilePath();
}

QList<CaptureGroup> groupsOf(const std::vector<GroupRequest>& requests) {
    QList<CaptureGroup> groups;
    for (const GroupRequest& request : requests) {
        CaptureGroup group(request.name, request.note);
        for (const CaptureRequest& capture : request.captures)
            group.frames.append(CapturedFrame(capture.time, {}, {}, false, capture.note));
        groups.append(group);
    }
    return groups;
}

ExportJob jobOf(const CaptureCommand& command) {
    ExportJob job;
    job.groups = exportGroupsOf(groupsOf(command.groups));
    job.videoName = ExportNaming::videoName(command.video);
    job.outputFolder = command.folder;
    job.mode = command.mode;
    job.crop = command.crop;
    job.filter = command.style;
    job.edge = command.edge.params();
    return job;
}

ExportJob jobOf(const ProjectFile& project, const QString& video, const QString& folder,
                ExportMode mode) {
    ExportJob job;
    job.groups = exportGroupsOf(captureGroupsOf(project.groups));
    job.videoName = ExportNaming::videoName(video);
    job.outputFolder = folder;
    job.mode = mode;
    job.crop = project.cropToSubject;
    job.filter = filterOf(project);
    job.edge = edgeOptionsOf(project.edge).params();
    return job;
}

ProjectFile projectOf(const CaptureCommand& command) {
    ProjectFile project;
    project.videoBookmark =
        ProjectStore::makeBookmark(QUrl::fromLocalFile(absolute(command.video)));
    project.videoName = ExportNaming::videoName(command.video);
    project.outputFolderBookmark =
        ProjectStore::makeBookmark(QUrl::fromLocalFile(absolute(command.folder)));
    project.cropToSubject = command.crop;
    project.filter = rawValue(command.style);
    project.edge = edgeDTO(command.edge);
    project.groups = groupDTOs(groupsOf(command.groups));
    return project;
}

/// Whether the project of what is captured is saved, if that is asked for.
bool saveProjectOf(const CaptureCommand& command, const CommandOutput& output) {
    if (command.project.isEmpty())
        return true;
    try {
        ProjectStore::save(projectOf(command), QUrl::fromLocalFile(absolute(command.project)));
    } catch (const std::exception& error) {
        output.complaint(savingFailed(error));
        return false;
    }
    output.result(command.project);
    return true;
}

QString pathOf(const std::optional<QByteArray>& bookmark) {
    const auto url = bookmark ? ProjectStore::resolveBookmark(*bookmark) : std::nullopt;
    return url ? url->toLocalFile() : QString();
}

bool makeFolder(const QString& folder, const CommandOutput& output) {
    if (QDir().mkpath(folder))
        return true;
    output.complaint(QStringLiteral("Le dossier « %1 » ne peut pas être créé.").arg(folder));
    return false;
}

qsizetype captureCount(const ExportJob& job) {
    qsizetype count = 0;
    for (const ExportGroup& group : job.groups)
        count += group.frames().size();
    return count;
}

/// What an export tells, as lines; and what came of it.
struct ExportAccount {
    CommandOutput output;
    qsizetype total = 0;
    qsizetype finished = 0;
    qsizetype failed = 0;
    qsizetype files = 0;

    void showProgress() const {
        output.progress(finished < total ? QStringLiteral("%1 / %2").arg(finished).arg(total)
                                         : QString());
    }

    /// Events that this account must outlive.
    ExportEvents events() {
        return {[this](int count) {
                    finished = count;
                    showProgress();
                },
                [this](const ExportFailure& failure) {
                    ++failed;
                    output.progress({});
                    output.complaint(failureLine(failure.timestamp, failure.message));
                },
                [this](const QString& path) {
                    ++files;
                    output.progress({});
                    output.result(path);
                }};
    }
};

ExitStatus statusOf(const ExportAccount& account, const QString& folder) {
    account.output.progress({});
    if (account.finished < account.total) {
        account.output.complaint(
            QStringLiteral("Interrompu après %1 instant(s) sur %2 : %3 fichier(s) écrit(s) dans "
                           "« %4 ».")
                .arg(account.finished)
                .arg(account.total)
                .arg(account.files)
                .arg(folder));
        return ExitStatus::Interrupted;
    }
    return account.failed > 0 ? ExitStatus::SomeFailed : ExitStatus::AllDone;
}

QCoro::Task<ExitStatus> runJob(VideoFrameExtractorService extractor, ExportJob job,
                               CommandOutput output, std::stop_token stop) {
    ExportAccount account{std::move(output), captureCount(job)};
    account.showProgress();
    const QString folder = job.outputFolder;
    const BatchExportService service(std::move(extractor),
                                     std::make_shared<SubjectExtractionService>(),
                                     ImageExportService(), ExtractRenderer::make());
    co_await service.run(std::move(job), account.events(), std::move(stop));
    co_return statusOf(account, folder);
}

} // namespace

QCoro::Task<ExitStatus> runStill(StillCommand command, CommandOutput output) {
    auto extractor = openFilm(command.video, output);
    if (!extractor)
        co_return ExitStatus::NothingDone;
    try {
        const QImage picture = co_await extractor->image(command.time);
        ImageExportService().writePNG(picture, command.file);
        output.result(command.file);
    } catch (const std::exception& error) {
        output.complaint(failureLine(command.time.displayString(), localizedDescription(error)));
        co_return ExitStatus::SomeFailed;
    }
    co_return ExitStatus::AllDone;
}

QCoro::Task<ExitStatus> runCapture(CaptureCommand command, CommandOutput output,
                                   std::stop_token stop) {
    const auto extractor = openFilm(command.video, output);
    if (!extractor || !makeFolder(command.folder, output))
        co_return ExitStatus::NothingDone;
    ExportJob job = jobOf(command);
    const ExitStatus status = co_await runJob(*extractor, std::move(job), output, std::move(stop));
    const bool isSaved = saveProjectOf(command, output);
    co_return isSaved || status != ExitStatus::AllDone ? status : ExitStatus::SomeFailed;
}

QCoro::Task<ExitStatus> runExport(ExportCommand command, CommandOutput output,
                                  std::stop_token stop) {
    ProjectFile project;
    try {
        project = ProjectStore::load(QUrl::fromLocalFile(absolute(command.project)));
    } catch (const std::exception& error) {
        output.complaint(openingFailed(error));
        co_return ExitStatus::NothingDone;
    }
    const QString video = pathOf(project.videoBookmark);
    if (video.isEmpty()) {
        output.complaint(AppState::videoMissingMessage);
        co_return ExitStatus::NothingDone;
    }
    const QString folder =
        command.folder.isEmpty() ? pathOf(project.outputFolderBookmark) : command.folder;
    if (folder.isEmpty()) {
        output.complaint(AppError::noOutputFolder().description());
        co_return ExitStatus::NothingDone;
    }
    const auto extractor = openFilm(video, output);
    if (!extractor || !makeFolder(folder, output))
        co_return ExitStatus::NothingDone;
    ExportJob job = jobOf(project, video, folder, command.mode);
    co_return co_await runJob(*extractor, std::move(job), output, std::move(stop));
}

} // namespace stillwick
