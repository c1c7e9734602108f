// Cuts the subjects out of a picture. Owned by the working state; created and destroyed on one
// thread, its operations run from any.
#pragma once

#include "Stillwick/ExportMode.h"
#include "Vision/ForegroundSegmenter.h"

#include <QCoroTask>
#include <QImage>
#include <QThreadPool>

#include <memory>
#include <stop_token>
#include <vector>

namespace stillwick {

/// Turns a picture into transparent cut-outs. Keeps nothing from one call to the next, so captures
/// and exports share one.
class SubjectExtractionService final {
public:
    /// `segmenter` finds the subjects; null stands for a system that has none.
    explicit SubjectExtractionService(
        std::shared_ptr<const ForegroundSegmenter> segmenter = standardSegmenter());
    Q_DISABLE_COPY_MOVE(SubjectExtractionService)
    /// Waits for the extractions under way.
    ~SubjectExtractionService() = default;

    /// Merged: one picture with all subjects. Per subject: one picture for each, in ascending
    /// instance order. With `crop` each picture is cut to its own subjects, else it has the frame's
    /// size. The work is done on the service's own bounded pool.
    /// *Shape*: Format_RGBA8888 (straight alpha) with a colour space.
    /// *Errors*: AppError (subjectLiftingUnavailable, noSubjectFound, exportFailed); VisionError,
    /// Cancelled soon after `stop` among them. Pictures already made are dropped.
    /// *Thread*: one with an event loop; resumes there.
    [[nodiscard]] QCoro::Task<std::vector<QImage>> extract(QImage image, ExportMode mode, bool crop,
                                                           std::stop_token stop = {});

    /// What finds the subjects.
    [[nodiscard]] const std::shared_ptr<const ForegroundSegmenter>& segmenter() const noexcept {
        return m_segmenter;
    }

    /// The same at once, on the calling thread.
    [[nodiscard]] std::vector<QImage> extractNow(const QImage& image, ExportMode mode, bool crop,
                                                 std::stop_token stop = {}) const;

private:
    std::shared_ptr<const ForegroundSegmenter> m_segmenter;
    QThreadPool m_pool;
};

/// A masked image as the bitmap that the application keeps: in sRGB where it says nothing else.
/// *Errors*: AppError exportFailed where there is no image.
[[nodiscard]] QImage bitmapFromMask(QImage masked);

} // namespace stillwick
