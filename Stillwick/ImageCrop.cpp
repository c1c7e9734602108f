#include "Stillwick/ImageCrop.h"

#include "Imaging/AlphaPlane.h"

namespace stillwick::ImageCrop {

QImage trimmedToContent(const QImage& image, quint8 threshold) {
    if (image.width() < 1 || image.height() < 1)
        return image;
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    if (rgba.isNull())
        return image;
    const QRect box = boxOfAlphaAbove(rgba, threshold);
    if (box.isNull())
        return image;
    const QImage trimmed = image.copy(box);
    return trimmed.isNull() ? image : trimmed;
}

} // namespace stillwick::ImageCrop
