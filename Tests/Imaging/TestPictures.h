// Small pictures for the tests of filters, and what to measure in their results.
#pragma once

#include <QImage>

#include <cstdint>

namespace stillwick {

/// Numbers that are the same on every machine.
class Noise final {
public:
    /// From -amplitude to +amplitude.
    [[nodiscard]] int next(int amplitude) {
        m_state = m_state * 1664525U + 1013904223U;
        return int((m_state >> 16) % std::uint32_t(2 * amplitude + 1)) - amplitude;
    }

private:
    std::uint32_t m_state = 1;
};

/// An opaque grey picture; `value(x, y)` is the grey of a pixel.
template <typename Value>
[[nodiscard]] QImage grayPicture(QSize size, const Value& value) {
    QImage image(size, QImage::Format_RGBA8888);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            const int gray = value(x, y);
            image.setPixel(x, y, qRgb(gray, gray, gray));
        }
    return image;
}

[[nodiscard]] inline QImage flatGray(QSize size, int gray) {
    return grayPicture(size, [gray](int, int) { return gray; });
}

/// The picture less its outer `margin` pixels, where the silhouette is inked.
[[nodiscard]] inline QImage inside(const QImage& image, int margin = 12) {
    return image.copy(image.rect().adjusted(margin, margin, -margin, -margin));
}

struct GrayRange {
    int darkest = 255;
    int lightest = 0;
    double mean = 0;
};

[[nodiscard]] inline GrayRange grayRange(const QImage& image) {
    GrayRange range;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int gray = qGray(image.pixel(x, y));
            range.darkest = qMin(range.darkest, gray);
            range.lightest = qMax(range.lightest, gray);
            range.mean += gray;
        }
    range.mean /= image.width() * image.height();
    return range;
}

} // namespace stillwick
