#include "Stillwick/CommandRunner.h"

#include "Media/MediaAsset.h"
#include "Media/MediaError.h"
#include "Stillwick/BatchExportService.h"
#include "Stillwick/ErrorDescription.h"
#include "Stillwick/ExportNaming.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QDir>

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

ExportGroup groupOf(const GroupRequest& request, ExportGroup::Placement placement) {
    QList<CapturedFrame> frames;
    for (const CaptureRequest& capture : request.captures)
        frames.append(CapturedFrame(capture.time, {}, {}, false, capture.note));
    return {request.name, request.note, frames, placement};
}

ExportJob jobOf(const CaptureCommand& command) {
    const auto placement = command.groups.size() > 1 ? ExportGroup::Placement::subfolder
                                                     : ExportGroup::Placement::outputFolder;
    ExportJob job;
    for (const GroupRequest& group : command.groups)
        job.groups.append(groupOf(group, placement));
    job.videoName = ExportNaming::videoName(command.video);
    job.outputFolder = command.folder;
    job.mode = command.mode;
    job.crop = command.crop;
    job.filter = command.style;
    job.edge = command.edge.params();
    return job;
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

} // namespace

QCoro::Task<ExitStatus> runStill(StillCommand command, CommandOutput output) {
    auto extractor = openFilm(command.video, output);
    if (!extractor)
        co_return ExitStatus::NothingDone;
    try {
        const QImage picture = co_await extractor->image(command.time);
        ImageExportService().writePNG(picture, command.file);
        output.result(command.file);
    } catch (const QException& error) {
        output.complaint(failureLine(command.time.displayString(), localizedDescription(error)));
        co_return ExitStatus::SomeFailed;
    }
    co_return ExitStatus::AllDone;
}

QCoro::Task<ExitStatus> runCapture(CaptureCommand command, CommandOutput output,
                                   std::stop_token stop) {
    const auto extractor = openFilm(command.video, output);
    if (!extractor)
        co_return ExitStatus::NothingDone;
    if (!QDir().mkpath(command.folder)) {
        output.complaint(
            QStringLiteral("Le dossier « %1 » ne peut pas être créé.").arg(command.folder));
        co_return ExitStatus::NothingDone;
    }
    ExportJob job = jobOf(command);
    ExportAccount account{output, captureCount(job)};
    account.showProgress();
    const BatchExportService service(*extractor, std::make_shared<SubjectExtractionService>(),
                                     ImageExportService(), ExtractRenderer::make());
    co_await service.run(std::move(job), account.events(), std::move(stop));
    co_return statusOf(account, command.folder);
}

} // namespace stillwick
