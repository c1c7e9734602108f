// Exports and projects of the working state.
#include "Desktop/FileBrowser.h"
#include "Imaging/PngEncoder.h"
#include "Stillwick/AppError.h"
#include "Stillwick/AppState.h"
#include "Stillwick/BatchExportService.h"
#include "Stillwick/ExportNaming.h"

#include <QEventLoopLocker>
#include <QPointer>
#include <QtConcurrentRun>

#include <utility>

namespace stillwick {

namespace {

QCoro::Task<> showOrComplain(QPointer<AppState> state, QString folder) {
    const bool isShown = co_await showFolder(folder);
    if (!isShown && state)
        state->setErrorMessage(
            QStringLiteral("Le dossier « %1 » n'a pas pu être affiché.").arg(folder));
}

} // namespace

void AppState::setOutputFolder(const QUrl& folder) {
    set(m_outputFolder, folder, &AppState::outputFolderChanged);
}

void AppState::setCropToSubject(bool crop) {
    set(m_cropToSubject, crop, &AppState::cropToSubjectChanged);
}

void AppState::setErrorMessage(std::optional<QString> message) {
    m_errorMessage = std::move(message);
    emit errorMessageChanged();
}

void AppState::runExport(ExportMode mode) {
    if (!hasVideo()) {
        setErrorMessage(AppError::noVideoLoaded().description());
        return;
    }
    if (m_outputFolder.isEmpty()) {
        setErrorMessage(AppError::noOutputFolder().description());
        return;
    }
    const int total = frameCount();
    if (total == 0 || m_progress.isRunning)
        return;
    ExportJob job;
    job.groups = exportGroupsOf(m_groups);
    job.videoName = videoName();
    job.outputFolder = m_outputFolder.toLocalFile();
    job.mode = mode;
    job.crop = m_cropToSubject;
    job.filter = m_selectedFilter;
    job.edge = m_edgeOptions.params();
    m_failures.clear();
    emit failuresChanged();
    set(m_progress, {0, total, true}, &AppState::progressChanged);
    exportToEnd(std::move(job), m_outputFolder);
}

// After the wait the state may be gone; the service keeps all that the export needs.
QCoro::Task<> AppState::exportToEnd(ExportJob job, QUrl folder) {
    const QPointer<AppState> self(this);
    const QEventLoopLocker beforeTheProgramEnds;
    ExportEvents events;
    events.onProgress = [self](int completed) {
        if (self)
            self->set(self->m_progress, {completed, self->m_progress.total, true},
                      &AppState::progressChanged);
    };
    events.onFailure = [self](const ExportFailure& failure) {
        if (!self)
            return;
        self->m_failures.append(failure);
        emit self->failuresChanged();
    };
    const BatchExportService service(m_extractor, m_subjectExtractor, m_imageExporter,
                                     ExtractRenderer::make());
    co_await service.run(std::move(job), std::move(events));
    if (!self)
        co_return;
    set(m_progress, {m_progress.completed, m_progress.total, false}, &AppState::progressChanged);
    // Told again where the export before went to the same folder.
    m_exportFinishedFolder = folder;
    emit exportFinishedFolderChanged();
}

QFuture<QByteArray> AppState::exportedPNG(const CapturedFrame& frame) const {
    return QtConcurrent::run(
        m_renderPool.get(),
        [renderer = m_renderer, subject = frame.subjectPreview, annotations = frame.annotations,
         style = m_selectedFilter, edge = m_edgeOptions.params(), crop = m_cropToSubject] {
            const QImage cutOut = subject.image();
            return cutOut.isNull()
                       ? QByteArray()
                       : encodePng(renderer.finish(cutOut, style, edge, annotations, crop));
        });
}

QString AppState::exportedName(const CapturedFrame& frame) const {
    return ExportNaming::fileName(videoName(), frame.time(), std::nullopt);
}

void AppState::openExportFolder() {
    if (!m_exportFinishedFolder.isEmpty())
        showOrComplain(this, m_exportFinishedFolder.toLocalFile());
    set(m_exportFinishedFolder, {}, &AppState::exportFinishedFolderChanged);
}

} // namespace stillwick
