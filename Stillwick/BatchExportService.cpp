#include "Stillwick/BatchExportService.h"

#include "Desktop/AtomicFile.h"
#include "Stillwick/AppError.h"
#include "Stillwick/ErrorDescription.h"
#include "Stillwick/ExportNaming.h"
#include "Stillwick/MarkdownIndex.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QCoroFuture>
#include <QDir>
#include <QThreadPool>
#include <QtConcurrentRun>

#include <algorithm>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace stillwick {

struct BatchExportService::Services {
    Services(VideoFrameExtractorService theExtractor,
             std::shared_ptr<SubjectExtractionService> theSubjectExtractor,
             ImageExportService theImageExporter, ExtractRenderer theRenderer)
        : extractor(std::move(theExtractor)), subjectExtractor(std::move(theSubjectExtractor)),
          imageExporter(theImageExporter), renderer(std::move(theRenderer)) {
        pool.setObjectName(QStringLiteral("BatchExport"));
        pool.setMaxThreadCount(1); // captures go one after the other
    }

    VideoFrameExtractorService extractor;
    std::shared_ptr<SubjectExtractionService> subjectExtractor;
    ImageExportService imageExporter;
    ExtractRenderer renderer;
    mutable QThreadPool pool; ///< for rendering and for the disk
};

namespace {

/// The path of an entry in a folder. Refuses names that are no name of one entry: they come from
/// projects, and would lead elsewhere.
QString pathIn(const QString& folder, const QString& name) {
    const bool leadsElsewhere = name == QStringLiteral(".") || name == QStringLiteral("..") ||
                                name.contains(u'/') || name.contains(QChar(u'\0'));
    if (name.isEmpty() || leadsElsewhere)
        throw AppError::exportFailed(
            QStringLiteral("« %1 » ne peut pas être le nom d'un fichier ou d'un dossier.")
                .arg(QString(name).replace(QChar(u'\0'), QChar::ReplacementCharacter)));
    return QDir(folder).filePath(name);
}

/// Where a group's files go.
/// *Errors*: AppError exportFailed for a name that no folder can have.
QString targetFolderOf(const ExportGroup& group, const QString& outputFolder) {
    return group.useSubfolder() ? pathIn(outputFolder, ExportNaming::folderName(group.name()))
                                : outputFolder;
}

bool wantsIndex(const ExportGroup& group) {
    return group.useSubfolder() || !group.notes().isEmpty() ||
           std::any_of(group.frames().begin(), group.frames().end(),
                       [](const CapturedFrame& frame) { return !frame.notes.isEmpty(); });
}

/// One run of an export.
class Run {
public:
    Run(std::shared_ptr<const BatchExportService::Services> services, ExportJob job,
        ExportEvents events, std::stop_token stop)
        : m_services(std::move(services)), m_job(std::move(job)), m_events(std::move(events)),
          m_stop(std::move(stop)) {}

    QCoro::Task<> exportGroups() {
        for (const ExportGroup& group : std::as_const(m_job.groups)) {
            if (m_stop.stop_requested())
                co_return;
            co_await exportGroup(group);
        }
    }

private:
    QCoro::Task<> exportGroup(const ExportGroup& group) {
        co_await makeFolder(group);
        m_imageLines.clear();
        for (const CapturedFrame& frame : group.frames()) {
            if (m_stop.stop_requested())
                break;
            const std::optional<QString> message = co_await exportCapture(group, frame);
            if (message)
                m_events.onFailure({frame.time().displayString(), *message});
            m_events.onProgress(++m_finished);
        }
        if (wantsIndex(group))
            co_await writeIndex(group);
    }

    QCoro::Task<> makeFolder(const ExportGroup& group) {
        try {
            const QString folder = targetFolderOf(group, m_job.outputFolder);
            co_await onPool([&folder] {
                QDir().mkpath(folder);
                removeAbandonedWritesBeside(QDir(folder).filePath(QStringLiteral("index.md")));
            });
        } catch (const std::exception&) {
            // The pictures that cannot be written there are told.
        }
    }

    /// What went wrong, if anything did.
    QCoro::Task<std::optional<QString>> exportCapture(const ExportGroup& group,
                                                      const CapturedFrame& frame) {
        std::optional<QString> message;
        try {
            auto extractor = m_services->extractor;
            const QImage picture = co_await extractor.image(frame.time());
            if (m_job.mode == ExportMode::merged)
                co_await exportMerged(group, frame, picture);
            else
                co_await exportSubjects(group, frame, picture);
        } catch (const std::exception& error) {
            message = localizedDescription(error);
        }
        co_return message;
    }

    QCoro::Task<> exportMerged(const ExportGroup& group, const CapturedFrame& frame,
                               const QImage& picture) {
        const std::vector<QImage> cutOuts =
            co_await m_services->subjectExtractor->extract(picture, ExportMode::merged, false);
        const QImage finished = co_await onPool([this, &frame, &cutOuts] {
            return m_services->renderer.finish(cutOuts.front(), m_job.filter, m_job.edge,
                                               frame.annotations, m_job.crop);
        });
        co_await writePicture(group, frame, finished, std::nullopt);
    }

    QCoro::Task<> exportSubjects(const ExportGroup& group, const CapturedFrame& frame,
                                 const QImage& picture) {
        std::vector<QImage> subjects = co_await m_services->subjectExtractor->extract(
            picture, ExportMode::perSubject, m_job.crop);
        co_await onPool([this, &subjects] {
            for (QImage& subject : subjects)
                subject = render(subject);
        });
        for (std::size_t i = 0; i < subjects.size(); ++i)
            co_await writePicture(group, frame, subjects[i], int(i) + 1);
    }

    [[nodiscard]] QImage render(const QImage& cutOut) const {
        return m_services->renderer.render(cutOut, m_job.filter, m_job.edge);
    }

    QCoro::Task<> writePicture(const ExportGroup& group, const CapturedFrame& frame,
                               const QImage& picture, std::optional<int> subject) {
        const QString name = ExportNaming::fileName(m_job.videoName, frame.time(), subject);
        const QString path = pathIn(targetFolderOf(group, m_job.outputFolder), name);
        co_await onPool(
            [this, &picture, &path] { m_services->imageExporter.writePNG(picture, path); });
        m_imageLines.append(MarkdownIndex::imageLine(name, frame.time(), frame.notes));
        tellWritten(path);
    }

    QCoro::Task<> writeIndex(const ExportGroup& group) {
        const QString text = MarkdownIndex::markdown(group.name(), group.notes(), m_imageLines);
        try {
            const QString path =
                pathIn(targetFolderOf(group, m_job.outputFolder),
                       ExportNaming::folderName(group.name()) + QStringLiteral(".md"));
            co_await onPool(
                [this, &text, &path] { m_services->imageExporter.writeText(text, path); });
            tellWritten(path);
        } catch (const std::exception&) {
            // Best effort: the pictures are what the user asked for.
        }
    }

    void tellWritten(const QString& path) const {
        if (m_events.onWritten)
            m_events.onWritten(path);
    }

    /// The result of `work` from the pool. The closure may hold references and plain values only:
    /// GCC 12 copies one that is made within a `co_await` byte by byte.
    template <typename Work>
    QFuture<std::invoke_result_t<Work>> onPool(Work work) const {
        static_assert(std::is_trivially_copyable_v<Work>);
        return QtConcurrent::run(&m_services->pool, std::move(work));
    }

    std::shared_ptr<const BatchExportService::Services> m_services;
    ExportJob m_job;
    ExportEvents m_events;
    std::stop_token m_stop;
    int m_finished = 0;       ///< captures, over all groups
    QStringList m_imageLines; ///< of the group under way
};

// The run lives as long as this coroutine.
QCoro::Task<> runToEnd(Run run) {
    co_await run.exportGroups();
}

} // namespace

BatchExportService::BatchExportService(VideoFrameExtractorService extractor,
                                       std::shared_ptr<SubjectExtractionService> subjectExtractor,
                                       ImageExportService imageExporter, ExtractRenderer renderer)
    : m_services(std::make_shared<const Services>(std::move(extractor), std::move(subjectExtractor),
                                                  imageExporter, std::move(renderer))) {}

QCoro::Task<> BatchExportService::run(ExportJob job, ExportEvents events,
                                      std::stop_token stop) const {
    return runToEnd(Run(m_services, std::move(job), std::move(events), std::move(stop)));
}

} // namespace stillwick
