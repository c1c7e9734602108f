#include "Stillwick/CommandRunner.h"

#include "Media/MediaAsset.h"
#include "Media/MediaError.h"
#include "Stillwick/AppError.h"
#include "Stillwick/ExportNaming.h"
#include "Stillwick/ImageCrop.h"
#include "Stillwick/ImageExportService.h"
#include "Stillwick/SubjectExtractionService.h"
#include "Stillwick/VideoFrameExtractorService.h"
#include "Vision/VisionError.h"

#include <QDir>
#include <QFileInfo>

#include <memory>
#include <utility>

namespace stillwick {

namespace {

/// The services that a command uses, ready for its film; none, with a complaint, where it cannot be
/// opened.
struct Workshop {
    VideoFrameExtractorService extractor;
    SubjectExtractionService subjects;
    ImageExportService exporter;
};

std::unique_ptr<Workshop> openWorkshop(const QString& video, const CommandOutput& output) {
    auto asset = std::make_shared<const MediaAsset>(video);
    try {
        asset->open();
    } catch (const MediaError& error) {
        output.complaint(QStringLiteral("%1 — %2").arg(video, error.description()));
        return nullptr;
    }
    auto workshop = std::make_unique<Workshop>();
    workshop->extractor.prepare(std::move(asset));
    return workshop;
}

QString failureLine(const CMTime& time, const QString& message) {
    return QStringLiteral("%1 — %2").arg(time.displayString(), message);
}

QString errorMessage(const QException& error) {
    if (const auto* own = dynamic_cast<const AppError*>(&error))
        return own->description();
    if (const auto* vision = dynamic_cast<const VisionError*>(&error))
        return vision->description();
    return QString::fromUtf8(error.what());
}

QString progressLine(std::size_t done, std::size_t total) {
    return QStringLiteral("%1 / %2").arg(done).arg(total);
}

/// The cut-outs of one time, as they are to be written.
QCoro::Task<std::vector<QImage>> cutOut(Workshop& workshop, const CaptureCommand& command,
                                        CMTime time) {
    const QImage picture = co_await workshop.extractor.image(time);
    const bool isMerged = command.mode == ExportMode::merged;
    // The merged cut-out is trimmed to what is visible, each subject alone to its own extent.
    std::vector<QImage> images =
        co_await workshop.subjects.extract(picture, command.mode, !isMerged && command.crop);
    if (isMerged && command.crop)
        images.front() = ImageCrop::trimmedToContent(images.front());
    co_return images;
}

void write(Workshop& workshop, const CaptureCommand& command, CMTime time,
           const std::vector<QImage>& images, const CommandOutput& output) {
    const QString name = QFileInfo(command.video).completeBaseName();
    for (std::size_t i = 0; i < images.size(); ++i) {
        const auto number =
            command.mode == ExportMode::perSubject ? std::optional(int(i) + 1) : std::nullopt;
        const QString path =
            QDir(command.folder).filePath(ExportNaming::fileName(name, time, number));
        workshop.exporter.writePNG(images[i], path);
        output.progress({});
        output.result(path);
    }
}

} // namespace

QCoro::Task<ExitStatus> runStill(StillCommand command, CommandOutput output) {
    const std::unique_ptr<Workshop> workshop = openWorkshop(command.video, output);
    if (!workshop)
        co_return ExitStatus::NothingDone;
    try {
        const QImage picture = co_await workshop->extractor.image(command.time);
        workshop->exporter.writePNG(picture, command.file);
        output.result(command.file);
    } catch (const QException& error) {
        output.complaint(failureLine(command.time, errorMessage(error)));
        co_return ExitStatus::SomeFailed;
    }
    co_return ExitStatus::AllDone;
}

QCoro::Task<ExitStatus> runCapture(CaptureCommand command, CommandOutput output) {
    const std::unique_ptr<Workshop> workshop = openWorkshop(command.video, output);
    if (!workshop)
        co_return ExitStatus::NothingDone;
    if (!QDir().mkpath(command.folder)) {
        output.complaint(
            QStringLiteral("Le dossier « %1 » ne peut pas être créé.").arg(command.folder));
        co_return ExitStatus::NothingDone;
    }
    ExitStatus status = ExitStatus::AllDone;
    for (std::size_t done = 0; done < command.times.size(); ++done) {
        const CMTime time = command.times[done];
        output.progress(progressLine(done, command.times.size()));
        try {
            const std::vector<QImage> images = co_await cutOut(*workshop, command, time);
            write(*workshop, command, time, images, output);
        } catch (const QException& error) {
            status = ExitStatus::SomeFailed;
            output.progress({});
            output.complaint(failureLine(time, errorMessage(error)));
        }
    }
    output.progress({});
    co_return status;
}

} // namespace stillwick
