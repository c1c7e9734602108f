// A picture's opacity as a plane of its own. Any thread.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

namespace stillwick {

/// The opacity of a picture's pixels within `area`.
/// *Shape*: Format_RGBA8888 in, Format_Alpha8 of the area's size out; the area lies in the picture.
/// *Errors*: std::bad_alloc.
[[nodiscard]] QImage alphaPlaneOf(const QImage& picture, const QRect& area);

/// The smallest box that holds every pixel whose opacity is above `threshold`; null where there is
/// none.
/// *Shape*: Format_RGBA8888 or Format_RGBA8888_Premultiplied.
[[nodiscard]] QRect boxOfAlphaAbove(const QImage& picture, uchar threshold);

/// Makes no pixel of the picture more opaque than `plane` allows there; the plane's corner lies at
/// `corner`. Colours stay, to the bit; a pixel that is left without opacity is all zeros.
/// *Shape*: Format_RGBA8888 and Format_Alpha8; the plane lies in the picture.
void limitAlpha(QImage& picture, const QImage& plane, QPoint corner);

/// Lays the picture on one colour, whose own opacity is multiplied by `plane`. Where the picture is
/// transparent the colour stands exactly, where it is opaque the picture does.
/// *Shape*: as `limitAlpha`.
/// *Source*: Porter and Duff, Compositing Digital Images (1984), the operator over.
void layOnColor(QImage& picture, const QColor& color, const QImage& plane, QPoint corner);

/// The picture in the middle of a transparent border of that width on every side.
/// *Shape*: Format_RGBA8888. *Errors*: std::bad_alloc.
[[nodiscard]] QImage withBorder(const QImage& picture, int widthPixels);

} // namespace stillwick
