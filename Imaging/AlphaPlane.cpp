#include "Imaging/AlphaPlane.h"

#include <QColorSpace>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>

namespace stillwick {

namespace {

constexpr int bytesPerPixel = 4;
constexpr unsigned opaque = 255;

QImage made(const QSize& size, QImage::Format format) {
    QImage image(size, format);
    if (image.isNull())
        throw std::bad_alloc();
    return image;
}

/// A pixel over a colour of that opacity, both with straight alpha.
void layOnColor(uchar* pixel, const uchar* color, unsigned colorAlpha) {
    const unsigned alpha = pixel[3];
    if (alpha == opaque)
        return;
    if (alpha == 0) {
        std::copy_n(color, colorAlpha > 0 ? 3 : 0, pixel);
        pixel[3] = uchar(colorAlpha);
        return;
    }
    // In parts of 255 * 255.
    const unsigned own = alpha * opaque;
    const unsigned below = (opaque - alpha) * colorAlpha;
    const unsigned sum = own + below;
    for (int i = 0; i < 3; ++i)
        pixel[i] = uchar((pixel[i] * own + color[i] * below + sum / 2) / sum);
    pixel[3] = uchar((sum + opaque / 2) / opaque);
}

uchar eightBits(double component) {
    return uchar(std::lround(std::clamp(component, 0.0, 1.0) * opaque));
}

} // namespace

QImage alphaPlaneOf(const QImage& picture) {
    Q_ASSERT(picture.format() == QImage::Format_RGBA8888);
    QImage plane = made(picture.size(), QImage::Format_Alpha8);
    for (int y = 0; y < picture.height(); ++y) {
        const uchar* from = picture.constScanLine(y) + 3;
        uchar* to = plane.scanLine(y);
        for (int x = 0; x < picture.width(); ++x)
            to[x] = from[bytesPerPixel * x];
    }
    return plane;
}

QRect boxOfAlphaAbove(const QImage& picture, uchar threshold) {
    int left = picture.width();
    int top = picture.height();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < picture.height(); ++y) {
        const uchar* alpha = picture.constScanLine(y) + 3;
        for (int x = 0; x < picture.width(); ++x)
            if (alpha[bytesPerPixel * x] > threshold) {
                left = std::min(left, x);
                top = std::min(top, y);
                right = std::max(right, x);
                bottom = y;
            }
    }
    return right < left ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

QImage limitedToAlpha(const QImage& picture, const QImage& plane) {
    Q_ASSERT(picture.size() == plane.size());
    QImage result = picture.copy();
    if (result.isNull())
        throw std::bad_alloc();
    for (int y = 0; y < result.height(); ++y) {
        uchar* pixel = result.scanLine(y);
        const uchar* most = plane.constScanLine(y);
        for (int x = 0; x < result.width(); ++x, pixel += bytesPerPixel) {
            pixel[3] = std::min(pixel[3], most[x]);
            if (pixel[3] == 0)
                std::fill_n(pixel, 3, uchar{0});
        }
    }
    return result;
}

QImage laidOnColor(const QImage& picture, const QColor& color, const QImage& plane) {
    Q_ASSERT(picture.size() == plane.size());
    const std::array rgb{eightBits(color.redF()), eightBits(color.greenF()),
                         eightBits(color.blueF())};
    const unsigned colorAlpha = eightBits(color.alphaF());
    QImage result = picture.copy();
    if (result.isNull())
        throw std::bad_alloc();
    for (int y = 0; y < result.height(); ++y) {
        uchar* pixel = result.scanLine(y);
        const uchar* cover = plane.constScanLine(y);
        for (int x = 0; x < result.width(); ++x, pixel += bytesPerPixel)
            layOnColor(pixel, rgb.data(), (cover[x] * colorAlpha + opaque / 2) / opaque);
    }
    return result;
}

QImage withBorder(const QImage& picture, int widthPixels) {
    return placedIn(picture.size() + 2 * QSize(widthPixels, widthPixels), picture,
                    {widthPixels, widthPixels});
}

QImage placedIn(const QSize& size, const QImage& part, QPoint corner) {
    Q_ASSERT(part.format() == QImage::Format_RGBA8888);
    Q_ASSERT(QRect({}, size).contains(QRect(corner, part.size())) || part.isNull());
    QImage result = made(size, QImage::Format_RGBA8888);
    result.setColorSpace(part.colorSpace());
    result.fill(Qt::transparent);
    for (int y = 0; y < part.height(); ++y)
        std::memcpy(result.scanLine(corner.y() + y) + std::ptrdiff_t(corner.x()) * bytesPerPixel,
                    part.constScanLine(y), std::size_t(part.width()) * bytesPerPixel);
    return result;
}

} // namespace stillwick
