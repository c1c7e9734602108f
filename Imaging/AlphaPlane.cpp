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

const uchar* pixelAt(const QImage& picture, int x, int y) {
    return picture.constScanLine(y) + std::ptrdiff_t(x) * bytesPerPixel;
}

/// A pixel over a colour of that opacity, both with straight alpha.
void layPixel(uchar* pixel, const uchar* color, unsigned colorAlpha) {
    const unsigned alpha = pixel[3];
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

QImage alphaPlaneOf(const QImage& picture, const QRect& area) {
    Q_ASSERT(picture.format() == QImage::Format_RGBA8888 && picture.rect().contains(area));
    QImage plane(area.size(), QImage::Format_Alpha8);
    if (plane.isNull())
        throw std::bad_alloc();
    const int width = area.width();
    for (int y = 0; y < area.height(); ++y) {
        const uchar* from = pixelAt(picture, area.x(), area.y() + y) + 3;
        uchar* to = plane.scanLine(y);
        for (int x = 0; x < width; ++x)
            to[x] = from[bytesPerPixel * x];
    }
    return plane;
}

QRect boxOfAlphaAbove(const QImage& picture, uchar threshold) {
    const int width = picture.width(); // QImage's own is a call
    int left = width;
    int top = picture.height();
    int right = -1;
    int bottom = -1;
    for (int y = 0; y < picture.height(); ++y) {
        const auto isVisible = [alpha = picture.constScanLine(y) + 3, threshold](int x) {
            return alpha[bytesPerPixel * x] > threshold;
        };
        int first = 0;
        while (first < width && !isVisible(first))
            ++first;
        if (first == width)
            continue;
        int last = width - 1;
        while (last > right && !isVisible(last)) // what lies within the box so far is no news
            --last;
        left = std::min(left, first);
        right = std::max(right, last);
        top = std::min(top, y);
        bottom = y;
    }
    return right < left ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

void limitAlpha(QImage& picture, const QImage& plane, QPoint corner) {
    Q_ASSERT(picture.rect().contains(QRect(corner, plane.size())));
    static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN); // alpha, the last byte, is a word's highest
    constexpr quint32 color = 0xffffff;
    constexpr int alphaShift = 24;
    const int width = plane.width();
    for (int y = 0; y < plane.height(); ++y) {
        auto* pixels = reinterpret_cast<quint32*>(picture.scanLine(corner.y() + y)) + corner.x();
        const uchar* most = plane.constScanLine(y);
        // One word and no branch for each pixel: the compiler takes several at once.
        for (int x = 0; x < width; ++x) {
            const quint32 alpha = std::min(pixels[x] >> alphaShift, quint32(most[x]));
            const quint32 kept = alpha == 0 ? 0 : color;
            pixels[x] = (pixels[x] & kept) | (alpha << alphaShift);
        }
    }
}

void layOnColor(QImage& picture, const QColor& color, const QImage& plane, QPoint corner) {
    Q_ASSERT(picture.rect().contains(QRect(corner, plane.size())));
    const std::array rgb{eightBits(color.redF()), eightBits(color.greenF()),
                         eightBits(color.blueF())};
    const unsigned colorAlpha = eightBits(color.alphaF());
    const int width = plane.width();
    for (int y = 0; y < plane.height(); ++y) {
        uchar* pixel =
            picture.scanLine(corner.y() + y) + std::ptrdiff_t(corner.x()) * bytesPerPixel;
        const uchar* cover = plane.constScanLine(y);
        for (int x = 0; x < width; ++x, pixel += bytesPerPixel)
            if (pixel[3] != opaque && cover[x] != 0)
                layPixel(pixel, rgb.data(), (cover[x] * colorAlpha + opaque / 2) / opaque);
    }
}

QImage withBorder(const QImage& picture, int widthPixels) {
    Q_ASSERT(picture.format() == QImage::Format_RGBA8888);
    QImage result(picture.size() + 2 * QSize(widthPixels, widthPixels), picture.format());
    if (result.isNull())
        throw std::bad_alloc();
    result.setColorSpace(picture.colorSpace());
    const auto border = std::size_t(widthPixels) * bytesPerPixel;
    const auto middle = std::size_t(picture.width()) * bytesPerPixel;
    for (int y = 0; y < result.height(); ++y) {
        uchar* row = result.scanLine(y);
        const int from = y - widthPixels;
        if (from < 0 || from >= picture.height()) {
            std::memset(row, 0, 2 * border + middle);
            continue;
        }
        std::memset(row, 0, border);
        std::memcpy(row + border, picture.constScanLine(from), middle);
        std::memset(row + border + middle, 0, border);
    }
    return result;
}

} // namespace stillwick
