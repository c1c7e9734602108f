#include "Imaging/MatrixView.h"

#include <QImage>

#include <opencv2/core.hpp>

#include <cstddef>

namespace stillwick {

namespace {

cv::Mat matrix(const QImage& image, uchar* bytes) {
    return {image.height(), image.width(), CV_8UC(image.depth() / 8), bytes,
            static_cast<std::size_t>(image.bytesPerLine())};
}

} // namespace

cv::Mat matrixView(QImage& image) {
    return matrix(image, image.bits());
}

cv::Mat matrixView(const QImage& image) {
    return matrix(image, const_cast<uchar*>(image.constBits())); // a matrix has no constant form
}

cv::Size matrixSize(const QSize& size) {
    return {size.width(), size.height()};
}

} // namespace stillwick
