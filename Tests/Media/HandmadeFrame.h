// Frames drawn sample by sample, for tests that know beforehand what a picture holds.
#pragma once

#include "Media/VideoFrame.h"

#include <QColor>
#include <QImage>

namespace stillwick::testing {

/// A frame in any format of whole bytes, its samples written through the format's description.
class HandmadeFrame final {
public:
    HandmadeFrame(AVPixelFormat format, int width, int height);

    /// For the tags: colour, aspect ratio, fields.
    [[nodiscard]] AVFrame& tags() noexcept { return *m_frame; }
    [[nodiscard]] int depth() const;

    /// A sample of a component (Y, Cb, Cr, A or R, G, B, A) at a place of its own plane.
    void set(int component, int x, int y, int value);
    void fill(int component, int value);
    /// Fills a rectangle of a component.
    void fill(int component, const QRect& rectangle, int value);

    [[nodiscard]] VideoFrame video(const TrackDescription& track = {}) const;

private:
    libav::Frame m_frame;
};

/// The colour of a pixel as the bitmap stores it, premultiplied, R, G, B, A.
struct Stored {
    int r = 0;
    int g = 0;
    int b = 0;
    int a = 255;
    bool operator==(const Stored&) const = default;
};

[[nodiscard]] Stored storedAt(const QImage& image, int x, int y);
/// The largest difference of a channel between two colours.
[[nodiscard]] int distance(const Stored& a, const Stored& b);
/// The same over all pixels; 255 where the sizes differ.
[[nodiscard]] int distance(const QImage& a, const QImage& b);
/// The mean difference of a channel over all pixels; 255 where the sizes differ.
[[nodiscard]] double meanDistance(const QImage& a, const QImage& b);
std::ostream& operator<<(std::ostream& stream, const Stored& color);

} // namespace stillwick::testing
