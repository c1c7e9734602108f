// A picture's pixels in fewer bytes, none of them lost. Any thread; two calls share nothing.
#pragma once

#include <QByteArray>
#include <QImage>

namespace stillwick {

/// The picture's pixels: each channel apart, red and blue less green, each row less the one above,
/// deflated. A film's picture of 1080p takes some 40 % of its size, in the time of a frame.
/// *Shape*: any format of four bytes a pixel, not empty.
/// *Errors*: std::bad_alloc.
[[nodiscard]] QByteArray packedPixels(const QImage& image);

/// Puts the pixels of `packed` into `image`, whose size and format are those of the picture that
/// was packed. Whether the bytes were such pixels; where not, the content of `image` is undefined.
/// *Shape*: any format of four bytes a pixel.
/// *Errors*: std::bad_alloc.
[[nodiscard]] bool unpackPixels(const QByteArray& packed, QImage& image);

} // namespace stillwick
