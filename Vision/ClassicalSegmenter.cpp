#include "Vision/ClassicalSegmenter.h"

#include "Vision/EdgeBand.h"
#include "Vision/ForegroundOdds.h"
#include "Vision/InstanceLabels.h"
#include "Vision/SubjectCut.h"
#include "Vision/SubjectEvidence.h"
#include "Vision/VisionError.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <new>
#include <vector>

namespace stillwick {
namespace {

// Length in pixels of the longer side at which subjects are sought.
constexpr int workingSide = 320;
// Pictures with a shorter side than this, or reduced to one, hold too few regions to tell a subject
// from its background.
constexpr int leastSide = 8;

void stopIfAsked(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw VisionError(VisionError::Category::Cancelled);
}

// The picture's own bytes, borrowed.
cv::Mat4b pixelsOf(const QImage& picture) {
    return {picture.height(), picture.width(),
            reinterpret_cast<cv::Vec4b*>(const_cast<uchar*>(picture.constBits())),
            static_cast<std::size_t>(picture.bytesPerLine())};
}

cv::Mat4b reduced(const cv::Mat4b& pixels) {
    const int longSide = std::max(pixels.cols, pixels.rows);
    if (longSide <= workingSide)
        return pixels;
    const double scale = static_cast<double>(workingSide) / longSide;
    const cv::Size size(std::max(1, cvRound(pixels.cols * scale)),
                        std::max(1, cvRound(pixels.rows * scale)));
    cv::Mat4b result;
    cv::resize(pixels, result, size, 0, 0, cv::INTER_AREA);
    return result;
}

WorkingPicture workingPicture(const cv::Mat4b& pixels) {
    WorkingPicture picture{{}, cv::Mat1b(pixels.size())};
    cv::Mat3f colour(pixels.size());
    for (int y = 0; y < pixels.rows; ++y)
        for (int x = 0; x < pixels.cols; ++x) {
            const cv::Vec4b& p = pixels(y, x);
            // Premultiplied, over mid-grey.
            const float grey = .5F * static_cast<float>(255 - p[3]);
            for (int c = 0; c < 3; ++c)
                colour(y, x)[c] = (static_cast<float>(p[c]) + grey) / 255;
            picture.visible(y, x) = p[3] >= 128 ? 255 : 0;
        }
    cv::cvtColor(colour, picture.lab, cv::COLOR_RGB2Lab);
    return picture;
}

QImage greyImage(const cv::Mat1b& values) {
    QImage image(values.cols, values.rows, QImage::Format_Grayscale8);
    if (image.isNull())
        throw VisionError(VisionError::Category::OutOfMemory);
    for (int y = 0; y < values.rows; ++y)
        std::copy_n(values[y], values.cols, image.scanLine(y));
    return image;
}

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

Foreground segmented(const QImage& picture, const std::stop_token& stop) {
    const cv::Mat4b pixels = pixelsOf(picture);
    const cv::Mat4b small = reduced(pixels);
    if (std::min(small.cols, small.rows) < leastSide)
        return nothing(picture);
    const WorkingPicture working = workingPicture(small);
    stopIfAsked(stop);
    const cv::Mat1f odds = foregroundOdds(working);
    stopIfAsked(stop);
    const cv::Mat1b mask = withoutSpecks(subjectCut(working, odds));
    stopIfAsked(stop);
    if (!showsSubject(working, mask))
        return nothing(picture);
    const InstanceLabels instances = instancesOf(mask, ForegroundSegmenter::mostInstances);
    cv::Mat1b alpha = edgeRefined(pixels, cv::Mat1b(instances.labels > 0));
    stopIfAsked(stop);
    cv::Mat1b labels = spreadLabels(instances, pixels.size());
    const int count = settle(pixels, alpha, labels, instances.count);
    return {greyImage(alpha), greyImage(labels), count};
}

} // namespace

Foreground ClassicalSegmenter::segment(const QImage& picture, std::stop_token stop) const {
    Q_ASSERT(picture.format() == QImage::Format_RGBA8888_Premultiplied);
    try {
        return segmented(picture, stop);
    } catch (const cv::Exception& error) {
        throw VisionError(error.code == cv::Error::StsNoMem
                              ? VisionError::Category::OutOfMemory
                              : VisionError::Category::SegmentationFailed,
                          QString::fromStdString(error.msg));
    } catch (const std::bad_alloc& error) {
        throw VisionError(VisionError::Category::OutOfMemory, QString::fromUtf8(error.what()));
    }
}

std::shared_ptr<const ForegroundSegmenter> standardSegmenter() {
    static const auto segmenter = std::make_shared<const ClassicalSegmenter>();
    return segmenter;
}

} // namespace stillwick
