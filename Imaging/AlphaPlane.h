// A picture's opacity as a plane of its own. Any thread.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

namespace stillwick {

/// The opacity of a picture's pixels.
/// *Shape*: Format_RGBA8888 in, Format_Alpha8 of the same size out.
/// *Errors*: std::bad_alloc.
[[nodiscard]] QImage alphaPlaneOf(const QImage& picture);

/// The smallest box that holds every pixel whose opacity is above `threshold`; null where there is
/// none.
/// *Shape*: Format_RGBA8888 or Format_RGBA8888_Premultiplied.
[[nodiscard]] QRect boxOfAlphaAbove(const QImage& picture, uchar threshold);

/// The picture with no pixel more opaque than `plane` allows there. Colours stay, to the bit; a
/// pixel that is left without opacity is all zeros.
/// *Shape*: Format_RGBA8888 and Format_Alpha8 of the same size; the result is as the picture.
/// *Errors*: std::bad_alloc.
[[nodiscard]] QImage limitedToAlpha(const QImage& picture, const QImage& plane);

/// The picture lying on one colour, whose own opacity is multiplied by `plane`. Where the picture
/// is transparent the colour stands exactly, where it is opaque the picture does. *Shape*,
/// *Errors*: as `limitedToAlpha`. *Source*: Porter and Duff, Compositing Digital Images (1984), the
/// operator over.
[[nodiscard]] QImage laidOnColor(const QImage& picture, const QColor& color, const QImage& plane);

/// The picture in the middle of a transparent border of that width on every side.
/// *Shape*: Format_RGBA8888. *Errors*: std::bad_alloc.
[[nodiscard]] QImage withBorder(const QImage& picture, int widthPixels);

/// The picture that is transparent but for `part`, whose corner lies at `corner`.
/// *Shape*: Format_RGBA8888, of `size`; `part` must lie inside. *Errors*: std::bad_alloc.
[[nodiscard]] QImage placedIn(const QSize& size, const QImage& part, QPoint corner);

} // namespace stillwick
