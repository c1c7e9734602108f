#include "Imaging/InkContour.h"

#include "Imaging/MatrixView.h"
#include "Imaging/VisibleSubject.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstddef>

namespace stillwick {

namespace {

/// Half of the subject's highest opacity counts as full, so that the stroke lies where the subject
/// is well visible, and a subject that is translucent all over is not filled with ink.
constexpr double fullShare = 0.5;
/// The blurred coverage at the inner end of the stroke, and the width of its soft edge.
constexpr double innerCoverage = 0.94;
constexpr double softness = 0.1;

std::array<uchar, 256> inkOfCoverage() {
    std::array<uchar, 256> table{};
    for (int i = 0; i < 256; ++i)
        table[std::size_t(i)] = cv::saturate_cast<uchar>(
            255 * std::clamp((innerCoverage - i / 255.0) / softness + 0.5, 0.0, 1.0));
    return table;
}

} // namespace

cv::Mat inkContour(const VisibleSubject& subject, double widthPixels) {
    const cv::Mat alpha = matrixView(subject.alpha);
    double highest = 0;
    cv::minMaxLoc(alpha, nullptr, &highest);
    cv::Mat coverage;
    alpha.convertTo(coverage, CV_8U, 255 / (fullShare * std::max(highest, 1.0)));
    cv::resize(coverage, coverage, matrixSize(subject.drawingSize()), 0, 0, cv::INTER_AREA);
    // Blurred coverage rises from one half at the silhouette to 0.94 at 1.55 standard deviations.
    const double sigma = widthPixels / 1.55;
    cv::GaussianBlur(coverage, coverage, {}, sigma, sigma, cv::BORDER_CONSTANT);
    cv::resize(coverage, coverage, alpha.size(), 0, 0, cv::INTER_LINEAR);
    auto table = inkOfCoverage();
    cv::Mat1b ink;
    cv::LUT(coverage, cv::Mat1b(1, 256, table.data()), ink);
    return ink;
}

} // namespace stillwick
