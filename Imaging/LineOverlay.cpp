#include "Imaging/LineOverlay.h"

#include "Imaging/InkContour.h"
#include "Imaging/MatrixView.h"
#include "Imaging/VisibleSubject.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <vector>

namespace stillwick {

namespace {

constexpr double contourPixels = 3.3;
/// Makes the slope of a sharp step twice its height: in films an edge is spread over some pixels.
constexpr double sobelScale = 0.5;
/// How much of the mean slope around a pixel is taken off its own.
constexpr double textureShare = 0.7;
/// A line begins above the threshold and is followed down to this share of it.
constexpr float footShare = 0.55F;
/// Less than that is no line.
constexpr int speckPixels = 16;

struct Line {
    float peak = 0;
    int pixels = 0;
};

/// Brightness from 0 to 1 at the size of the drawing.
cv::Mat1f brightness(const VisibleSubject& subject) {
    cv::Mat gray;
    cv::cvtColor(matrixView(subject.colors), gray, cv::COLOR_RGB2GRAY);
    cv::resize(gray, gray, matrixSize(subject.drawingSize()), 0, 0, cv::INTER_AREA);
    cv::Mat1f light;
    gray.convertTo(light, CV_32F, 1 / 255.0);
    return light;
}

/// Where the local spread is below the level the local mean remains; where it is above, the
/// difference from the mean is kept and increased.
cv::Mat1f withoutNoise(const cv::Mat1f& light, const LineOverlay& parameters) {
    const cv::Size window(5, 5);
    cv::Mat1f mean;
    cv::Mat1f square;
    cv::blur(light, mean, window);
    cv::blur(light.mul(light), square, window);
    const float level = parameters.noiseReductionLevel * parameters.noiseReductionLevel;
    cv::Mat1f clean(light.size());
    for (int y = 0; y < light.rows; ++y)
        for (int x = 0; x < light.cols; ++x) {
            const float m = mean(y, x);
            const float spread = std::max(0.0F, square(y, x) - m * m);
            const float keep = spread / std::max(spread + level, 1e-6F);
            clean(y, x) =
                m + keep * (1 + keep * parameters.noiseReductionSharpness) * (light(y, x) - m);
        }
    cv::GaussianBlur(clean, clean, {5, 5}, 1.0);
    return clean;
}

/// The slope less what the surroundings are full of: a line stands out, texture does not.
cv::Mat1f edgeStrength(const cv::Mat1f& light, float intensity) {
    const double scale = intensity * sobelScale;
    cv::Mat1f dx;
    cv::Mat1f dy;
    cv::Sobel(light, dx, CV_32F, 1, 0, 3, scale);
    cv::Sobel(light, dy, CV_32F, 0, 1, 3, scale);
    cv::Mat1f slope;
    cv::magnitude(dx, dy, slope);
    cv::Mat1f surroundings;
    cv::blur(slope, surroundings, {15, 15});
    cv::addWeighted(slope, 1, surroundings, -textureShare, 0, slope);
    return slope;
}

/// Takes away the lines that are nowhere as strong as `peak`, and the specks.
void keepLines(cv::Mat1f strength, float foot, float peak) {
    cv::Mat1b lines;
    cv::compare(strength, foot, lines, cv::CMP_GT);
    cv::Mat1i labels;
    const int count = cv::connectedComponents(lines, labels, 8, CV_32S);
    std::vector<Line> found(std::size_t(count), Line{});
    for (int y = 0; y < labels.rows; ++y)
        for (int x = 0; x < labels.cols; ++x) {
            Line& line = found[std::size_t(labels(y, x))];
            line.peak = std::max(line.peak, strength(y, x));
            ++line.pixels;
        }
    found[0] = {std::numeric_limits<float>::max(), std::numeric_limits<int>::max()};
    for (int y = 0; y < labels.rows; ++y)
        for (int x = 0; x < labels.cols; ++x) {
            const Line& line = found[std::size_t(labels(y, x))];
            if (line.peak < peak || line.pixels < speckPixels)
                strength(y, x) = 0;
        }
}

/// Ink of 0 to 255 at the size of the picture.
cv::Mat1b inkOf(const cv::Mat1f& strength, cv::Size size, float foot, float contrast) {
    cv::Mat1f full;
    cv::resize(strength, full, size, 0, 0, cv::INTER_LINEAR);
    const double gain = 255.0 * contrast;
    cv::Mat1b ink;
    full.convertTo(ink, CV_8U, gain, -gain * foot);
    // The contrast leaves steps of whole pixels; lines want soft edges.
    cv::GaussianBlur(ink, ink, {3, 3}, 0.8);
    return ink;
}

QImage drawLines(const VisibleSubject& subject, const LineOverlay& parameters) {
    const cv::Mat1f light = withoutNoise(brightness(subject), parameters);
    QImage drawing(subject.colors.size(), QImage::Format_RGB888);
    if (drawing.isNull())
        throw std::bad_alloc();
    cv::Mat paper = matrixView(drawing);
    const cv::Mat1f strength = edgeStrength(light, parameters.edgeIntensity);
    const float foot = footShare * parameters.threshold;
    keepLines(strength, foot, parameters.threshold);
    cv::Mat ink = inkOf(strength, paper.size(), foot, parameters.contrast);
    cv::max(ink, inkContour(subject, contourPixels), ink);
    cv::bitwise_not(ink, ink);
    cv::cvtColor(ink, paper, cv::COLOR_GRAY2RGB);
    return drawing;
}

} // namespace

QImage lineOverlay(const QImage& image, const LineOverlay& parameters) {
    return colorLayer(image, [&parameters](const VisibleSubject& subject) {
        return drawLines(subject, parameters);
    });
}

} // namespace stillwick
