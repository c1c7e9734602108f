#include "Imaging/ColorPosterize.h"

#include "Imaging/MatrixView.h"
#include "Imaging/VisibleSubject.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>

namespace stillwick {

namespace {

constexpr int smoothingDiameter = 5;
/// Sum of the differences of the three channels at which a neighbour counts for 0.6.
constexpr double smoothedDifference = 24;
constexpr double smoothedDistancePixels = 2;

std::array<uchar, 256> nearestLevels(int levels) {
    const int steps = std::clamp(levels, 2, 256) - 1;
    std::array<uchar, 256> table{};
    for (int value = 0; value < 256; ++value) {
        const int nearest = (2 * value * steps + 255) / (2 * 255);
        table[std::size_t(value)] = uchar((2 * nearest * 255 + steps) / (2 * steps));
    }
    return table;
}

QImage drawInLevels(const VisibleSubject& subject, const ColorPosterize& parameters) {
    QImage drawing(subject.colors.size(), QImage::Format_RGB888);
    if (drawing.isNull())
        throw std::bad_alloc();
    cv::Mat colors = matrixView(drawing);
    cv::bilateralFilter(matrixView(subject.colors), colors, smoothingDiameter, smoothedDifference,
                        smoothedDistancePixels);
    auto table = nearestLevels(parameters.levels);
    cv::LUT(colors, cv::Mat1b(1, 256, table.data()), colors);
    return drawing;
}

} // namespace

QImage colorPosterize(const QImage& image, const ColorPosterize& parameters) {
    return colorLayer(image, [&parameters](const VisibleSubject& subject) {
        return drawInLevels(subject, parameters);
    });
}

} // namespace stillwick
