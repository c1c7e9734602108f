#include "Imaging/ComicEffect.h"

#include "Imaging/InkContour.h"
#include "Imaging/MatrixView.h"
#include "Imaging/VisibleSubject.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>
#include <numbers>
#include <vector>

namespace stillwick {

namespace {

constexpr double contourPixels = 3.3;
constexpr double dotSpacingPixels = 5.0;
/// Brightness at which dots begin, and at which they have grown together to full ink.
constexpr double screenStart = 0.55;
constexpr double screenEnd = 0.0;
/// How much of the light a dot takes away.
constexpr int dotInk = 150;
/// How fast a dot's edge goes from paper to ink where the drawing is not coarser than the picture.
constexpr double dotSharpness = 2.2;
/// How much darker than around a pixel is that is half ink, and how fast ink grows beyond.
constexpr double inkEdge = 0.022;
constexpr double inkGain = 90;
constexpr double saturation = 1.35;
constexpr int tones = 6;

using Table = std::array<uchar, 256>;

template <typename Function>
Table tableOf(const Function& function) {
    Table table{};
    for (int i = 0; i < 256; ++i)
        table[std::size_t(i)] = cv::saturate_cast<uchar>(255 * function(i / 255.0));
    return table;
}

cv::Mat1b row(Table& table) {
    return {1, 256, table.data()};
}

double smoothStep(double from, double to, double value) {
    const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

/// Steps with soft flanks: brightness gathers around a few tones.
double toned(double light) {
    const double place = light * tones;
    const double nearest = std::floor(place);
    return (nearest + smoothStep(0.3, 0.7, place - nearest)) / tones;
}

/// Colours freed of small differences, at half the size of the drawing.
cv::Mat flattened(const VisibleSubject& subject) {
    cv::Mat small;
    cv::resize(matrixView(subject.colors), small, matrixSize(subject.drawingSize(2)), 0, 0,
               cv::INTER_AREA);
    cv::Mat smooth;
    cv::bilateralFilter(small, smooth, 7, 40, 3);
    cv::bilateralFilter(smooth, small, 7, 30, 3);
    return small;
}

/// Ink along edges, on their dark side: where it is darker than around.
cv::Mat1b outlines(const cv::Mat1b& light, cv::Size size) {
    cv::Mat1f value;
    light.convertTo(value, CV_32F, 1 / 255.0);
    cv::Mat1f narrow;
    cv::Mat1f wide;
    cv::GaussianBlur(value, narrow, {}, 0.8);
    cv::GaussianBlur(value, wide, {}, 1.6);
    cv::Mat1f full;
    cv::resize(wide - narrow, full, size, 0, 0, cv::INTER_CUBIC);
    cv::Mat1b ink;
    full.convertTo(ink, CV_8U, 255 * inkGain, 127.5 - 255 * inkGain * inkEdge);
    return ink;
}

/// How far the screen lets ink through along one axis; the sum of two axes is a screen at 45
/// degrees.
std::vector<float> screenWave(int length, double period) {
    std::vector<float> wave(std::size_t(length), 0);
    for (int i = 0; i < length; ++i)
        wave[std::size_t(i)] = float(0.25 * std::cos(2 * std::numbers::pi * i / period));
    return wave;
}

/// Lays dots over the brightness: the darker, the larger.
void screen(cv::Mat1b light, double scale) {
    const double period = dotSpacingPixels * scale * std::numbers::sqrt2;
    const std::vector<float> across = screenWave(light.cols, period);
    const std::vector<float> down = screenWave(light.rows, period);
    const auto sharpness = float(dotSharpness * scale);
    std::array<float, 256> threshold{};
    for (int i = 0; i < 256; ++i)
        threshold[std::size_t(i)] =
            1 + 0.5F / sharpness -
            (1 + 1 / sharpness) * float(smoothStep(screenStart, screenEnd, i / 255.0));
    for (int y = 0; y < light.rows; ++y)
        for (int x = 0; x < light.cols; ++x) {
            const uchar tone = light(y, x);
            const float height = 0.5F + across[std::size_t(x)] + down[std::size_t(y)];
            const float dot = std::clamp((height - threshold[tone]) * sharpness + 0.5F, 0.0F, 1.0F);
            light(y, x) = uchar(float(tone) * (1 - dot * float(dotInk) / 255));
        }
}

/// The planes of brightness and colour as they are printed, at the size of the picture.
void print(std::array<cv::Mat1b, 3>& planes, cv::Size size, double scale) {
    Table light = tableOf(toned);
    Table chroma = tableOf([](double c) { return (c - 128 / 255.0) * saturation + 128 / 255.0; });
    for (cv::Mat1b& plane : planes) {
        cv::resize(plane, plane, size, 0, 0, cv::INTER_LINEAR);
        cv::LUT(plane, row(&plane == planes.data() ? light : chroma), plane);
    }
    screen(planes[0], scale);
}

void lay(const cv::Mat1b& ink, cv::Mat3b colors) {
    for (int y = 0; y < colors.rows; ++y)
        for (int x = 0; x < colors.cols; ++x)
            for (int c = 0; c < 3; ++c)
                colors(y, x)[c] = uchar(colors(y, x)[c] * (255 - ink(y, x)) / 255);
}

QImage drawComic(const VisibleSubject& subject) {
    QImage drawing(subject.colors.size(), QImage::Format_RGB888);
    if (drawing.isNull())
        throw std::bad_alloc();
    cv::Mat paper = matrixView(drawing);
    cv::Mat colors;
    cv::cvtColor(flattened(subject), colors, cv::COLOR_RGB2YCrCb);
    std::array<cv::Mat1b, 3> planes;
    cv::split(colors, planes.data());
    cv::Mat1b ink = outlines(planes[0], paper.size());
    cv::max(ink, inkContour(subject, contourPixels), ink);
    print(planes, paper.size(), subject.scale);
    cv::merge(planes.data(), planes.size(), colors);
    cv::cvtColor(colors, paper, cv::COLOR_YCrCb2RGB);
    lay(ink, paper);
    return drawing;
}

} // namespace

QImage comicEffect(const QImage& image) {
    return colorLayer(image, drawComic);
}

} // namespace stillwick
