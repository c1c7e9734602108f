#include "Vision/PictureMatrix.h"

#include "Vision/VisionError.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace stillwick {

cv::Mat4b pixelsOf(const QImage& picture) {
    return {picture.height(), picture.width(),
            reinterpret_cast<cv::Vec4b*>(const_cast<uchar*>(picture.constBits())),
            static_cast<std::size_t>(picture.bytesPerLine())};
}

cv::Mat4b reducedTo(const cv::Mat4b& pixels, int side) {
    const int longSide = std::max(pixels.cols, pixels.rows);
    if (longSide <= side)
        return pixels;
    const double scale = static_cast<double>(side) / longSide;
    const cv::Size size(std::max(1, cvRound(pixels.cols * scale)),
                        std::max(1, cvRound(pixels.rows * scale)));
    cv::Mat4b result;
    cv::resize(pixels, result, size, 0, 0, cv::INTER_AREA);
    return result;
}

cv::Mat3f coloursOf(const cv::Mat4b& pixels) {
    cv::Mat3f colours(pixels.size());
    for (int y = 0; y < pixels.rows; ++y)
        for (int x = 0; x < pixels.cols; ++x) {
            const cv::Vec4b& p = pixels(y, x);
            // Premultiplied, over mid-grey.
            const float grey = .5F * static_cast<float>(255 - p[3]);
            for (int c = 0; c < 3; ++c)
                colours(y, x)[c] = (static_cast<float>(p[c]) + grey) / 255;
        }
    return colours;
}

WorkingPicture workingPicture(const cv::Mat4b& pixels) {
    WorkingPicture picture{{}, cv::Mat1b(pixels.size())};
    cv::cvtColor(coloursOf(pixels), picture.lab, cv::COLOR_RGB2Lab);
    std::transform(pixels.begin(), pixels.end(), picture.visible.begin(),
                   [](const cv::Vec4b& p) { return p[3] >= 128 ? uchar{255} : uchar{0}; });
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

} // namespace stillwick
