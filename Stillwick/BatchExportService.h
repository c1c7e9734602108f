// The export of captures into files. Main thread; the work itself is done on bounded pools.
#pragma once

#include "Stillwick/EdgeOptions.h"
#include "Stillwick/ExportFailure.h"
#include "Stillwick/ExportGroup.h"
#include "Stillwick/ExportMode.h"
#include "Stillwick/ExtractRenderer.h"
#include "Stillwick/FilterStyle.h"
#include "Stillwick/ImageExportService.h"
#include "Stillwick/VideoFrameExtractorService.h"

#include <QCoroTask>
#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <stop_token>

namespace stillwick {

class SubjectExtractionService;

/// What is to be exported, and how: a snapshot.
struct ExportJob {
    QList<ExportGroup> groups;
    QString videoName; ///< the beginning of every file's name
    QString outputFolder;
    ExportMode mode = ExportMode::merged;
    bool crop = false; ///< whether pictures are cut to their subjects
    FilterStyle filter = FilterStyle::none;
    EdgeParams edge = EdgeParams::identity();
};

/// What happens in an export, told on the main thread before the export goes on.
struct ExportEvents {
    /// The captures finished so far, failed ones included: 1, 2, 3 and so on.
    std::function<void(int)> onProgress;
    /// A capture failed; `onProgress` counts it next.
    std::function<void(const ExportFailure&)> onFailure;
    /// A file is written, whole. May be empty.
    std::function<void(const QString& path)> onWritten = {};
};

/// Exports captures one after the other: each is grabbed from the film again at its exact time, its
/// subjects are lifted and rendered and written as PNG files, and each group gets an index of them.
class BatchExportService final {
public:
    /// The extractor is kept as it is: a film opened in it later does not change this export.
    BatchExportService(VideoFrameExtractorService extractor,
                       std::shared_ptr<SubjectExtractionService> subjectExtractor,
                       ImageExportService imageExporter, ExtractRenderer renderer);

    /// Exports the job. What fails is told and the next capture follows; folders that cannot be
    /// made and indexes that cannot be written are not told, for the pictures in them fail too.
    /// After `stop` the capture under way is finished and indexed, and no other is begun.
    /// *Errors*: none. *Thread*: one with an event loop; resumes there. *Lifetime*: the service may
    /// go while the export is under way.
    [[nodiscard]] QCoro::Task<> run(ExportJob job, ExportEvents events,
                                    std::stop_token stop = {}) const;

    struct Services;

private:
    std::shared_ptr<const Services> m_services;
};

} // namespace stillwick
