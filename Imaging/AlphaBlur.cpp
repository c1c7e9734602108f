#include "Imaging/AlphaBlur.h"

#include "Imaging/MatrixView.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <new>

namespace stillwick {

namespace {

/// From this deviation on a plane is blurred at reduced size: what is lost is finer than the blur.
constexpr double leastReduced = 8;
/// A pixel of the reduced plane stands for a quarter of the deviation: interpolation between two is
/// then off by half a step of 255 at most.
constexpr double reducedPerSigma = 4;

void blur(const cv::Mat& from, cv::Mat& to, double sigma) {
    cv::GaussianBlur(from, to, {}, sigma, sigma, cv::BORDER_REPLICATE);
}

/// The deviation at reduced size. Averaging and interpolating blur too: together as much as a box
/// and a triangle, a quarter of a squared pixel.
double reducedSigma(double sigma, int length, int reducedLength) {
    const double reduced = sigma * reducedLength / length;
    constexpr double byReduction = 0.25;
    return std::sqrt(std::max(reduced * reduced - byReduction, 0.01));
}

void blurReduced(const cv::Mat& from, cv::Mat& to, double sigma) {
    const auto reducedTo = [factor = std::floor(sigma / reducedPerSigma)](int length) {
        return std::max(int(std::lround(length / factor)), 1);
    };
    cv::Mat reduced;
    cv::resize(from, reduced, {reducedTo(from.cols), reducedTo(from.rows)}, 0, 0, cv::INTER_AREA);
    // Each direction by its own factor: the sizes are whole numbers.
    cv::GaussianBlur(reduced, reduced, {}, reducedSigma(sigma, from.cols, reduced.cols),
                     reducedSigma(sigma, from.rows, reduced.rows), cv::BORDER_REPLICATE);
    cv::resize(reduced, to, from.size(), 0, 0, cv::INTER_LINEAR);
}

} // namespace

int gaussianReach(double sigmaPixels) {
    constexpr double farthest = 1 << 20;
    return int(std::ceil(std::min(3 * sigmaPixels, farthest))) + 1;
}

QImage gaussianBlurred(const QImage& plane, double sigmaPixels) {
    Q_ASSERT(plane.format() == QImage::Format_Alpha8 && sigmaPixels > 0);
    QImage result(plane.size(), QImage::Format_Alpha8);
    if (result.isNull())
        throw std::bad_alloc();
    // A deviation of four times the plane's length makes it even already.
    const double sigma = std::min(sigmaPixels, 4.0 * std::max(plane.width(), plane.height()));
    cv::Mat to = matrixView(result);
    try {
        (sigma >= leastReduced ? blurReduced : blur)(matrixView(plane), to, sigma);
    } catch (const cv::Exception&) {
        throw std::bad_alloc(); // the only thing that sizes checked as these leave to fail
    }
    return result;
}

} // namespace stillwick
