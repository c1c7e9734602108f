#include "Stillwick/ImageCrop.h"

#include <QRect>

#include <algorithm>

namespace stillwick::ImageCrop {
namespace {

// The box of the pixels above a threshold, null where there is none.
QRect visibleBox(const QImage& rgba, quint8 threshold) {
    int left = rgba.width();
    int top = rgba.height();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < rgba.height(); ++y) {
        const uchar* alpha = rgba.constScanLine(y) + 3;
        for (int x = 0; x < rgba.width(); ++x)
            if (alpha[4 * x] > threshold) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    }
    return right < left ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

} // namespace

QImage trimmedToContent(const QImage& image, quint8 threshold) {
    if (image.width() < 1 || image.height() < 1)
        return image;
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    if (rgba.isNull())
        return image;
    const QRect box = visibleBox(rgba, threshold);
    if (box.isNull())
        return image;
    const QImage trimmed = image.copy(box);
    return trimmed.isNull() ? image : trimmed;
}

} // namespace stillwick::ImageCrop
