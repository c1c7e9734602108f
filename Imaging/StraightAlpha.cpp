#include "Imaging/StraightAlpha.h"

#include <algorithm>

namespace stillwick {

namespace {

constexpr int bytesPerPixel = 4;

/// Divides colours by alpha, halves up. Qt's own conversion is one step off for one colour in 90.
void unpremultiplyRow(uchar* row, int pixels) {
    for (uchar* const end = row + pixels * bytesPerPixel; row != end; row += bytesPerPixel) {
        const unsigned alpha = row[3];
        if (alpha == 255 || alpha == 0)
            continue;
        for (int channel = 0; channel < 3; ++channel)
            row[channel] = uchar(std::min((row[channel] * 255U + alpha / 2) / alpha, 255U));
    }
}

} // namespace

QImage withStraightAlpha(const QImage& image) {
    const bool isPremultiplied = image.format() == QImage::Format_ARGB32_Premultiplied ||
                                 image.format() == QImage::Format_RGBA8888_Premultiplied;
    if (!isPremultiplied)
        return image.convertToFormat(QImage::Format_RGBA8888);
    QImage straight = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    if (straight.isNull() || straight.bits() == nullptr) // bits() detaches, and may find no memory
        return {};
    for (int y = 0; y < straight.height(); ++y)
        unpremultiplyRow(straight.scanLine(y), straight.width());
    return straight.reinterpretAsFormat(QImage::Format_RGBA8888) ? straight : QImage();
}

} // namespace stillwick
