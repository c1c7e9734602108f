#include "Vision/CutOut.h"

#include "Vision/EdgeBand.h"
#include "Vision/EdgeColours.h"
#include "Vision/InstanceLabels.h"
#include "Vision/PictureMatrix.h"
#include "Vision/VisionError.h"

#include <algorithm>
#include <new>
#include <vector>

namespace stillwick {
namespace {

// Length in pixels of the longer side at which subjects are sought.
constexpr int workingSide = 320;
// Pictures with a shorter side than this, or reduced to one, hold too little to tell a subject
// from its background.
constexpr int leastSide = 8;

// Clears what is transparent, or so faint that no instance keeps a firm pixel; renumbers the rest.
int settle(const cv::Mat4b& pixels, cv::Mat1b& alpha, cv::Mat1b& labels, int count) {
    std::vector<uchar> number(static_cast<std::size_t>(count) + 1, 0);
    for (int y = 0; y < alpha.rows; ++y)
        for (int x = 0; x < alpha.cols; ++x) {
            if (pixels(y, x)[3] == 0)
                alpha(y, x) = 0;
            if (alpha(y, x) >= 128)
                number[labels(y, x)] = 1;
        }
    number[0] = 0;
    uchar next = 0;
    for (uchar& entry : number)
        entry = entry != 0 ? ++next : uchar{0};
    for (int y = 0; y < alpha.rows; ++y)
        for (int x = 0; x < alpha.cols; ++x) {
            labels(y, x) = alpha(y, x) > 0 ? number[labels(y, x)] : uchar{0};
            if (labels(y, x) == 0)
                alpha(y, x) = 0;
        }
    return next;
}

Foreground nothing(const QImage& picture) {
    const cv::Mat1b empty(picture.height(), picture.width(), uchar{0});
    return {greyImage(empty), greyImage(empty), 0};
}

Foreground found(const QImage& picture, const SubjectSearch& search, const std::stop_token& stop) {
    const cv::Mat4b pixels = pixelsOf(picture);
    const cv::Mat4b small = reducedTo(pixels, workingSide);
    if (std::min(small.cols, small.rows) < leastSide)
        return nothing(picture);
    stopIfAsked(stop);
    const cv::Mat1b mask = search({pixels, workingPicture(small), stop});
    stopIfAsked(stop);
    if (cv::countNonZero(mask) == 0)
        return nothing(picture);
    const InstanceLabels instances = instancesOf(mask, ForegroundSegmenter::mostInstances);
    cv::Mat1b alpha = edgeRefined(pixels, cv::Mat1b(instances.labels > 0));
    stopIfAsked(stop);
    cv::Mat1b labels = spreadLabels(instances, pixels.size());
    const int count = settle(pixels, alpha, labels, instances.count);
    stopIfAsked(stop);
    return {greyImage(alpha), greyImage(labels), count,
            edgeColours(pixels, alpha, edgeRadius(pixels.size(), mask.size()))};
}

} // namespace

void stopIfAsked(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw VisionError(VisionError::Category::Cancelled);
}

Foreground cutOut(const QImage& picture, const SubjectSearch& search, const std::stop_token& stop) {
    Q_ASSERT(picture.format() == QImage::Format_RGBA8888_Premultiplied);
    try {
        return found(picture, search, stop);
    } catch (const cv::Exception& error) {
        throw VisionError(error.code == cv::Error::StsNoMem
                              ? VisionError::Category::OutOfMemory
                              : VisionError::Category::SegmentationFailed,
                          QString::fromStdString(error.msg));
    } catch (const std::bad_alloc& error) {
        throw VisionError(VisionError::Category::OutOfMemory, QString::fromUtf8(error.what()));
    }
}

} // namespace stillwick
