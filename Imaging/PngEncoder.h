// PNG files from pictures. Any thread; two encodings share nothing.
#pragma once

#include <QByteArray>
#include <QImage>

namespace stillwick {

/// The bytes of a PNG file of the picture.
/// *Shape*: the picture's size in pixels, 8-bit RGBA, straight alpha, whatever the picture's own
/// format. Where alpha is 255 colours are those of the picture, elsewhere each is the nearest to
/// `premultiplied * 255 / alpha`; a fully transparent pixel is all zeros if the picture is
/// premultiplied. The picture's colour space is embedded and its colours are not converted; a
/// picture without one is taken as sRGB.
/// *Errors*: ImagingError.
/// *Source*: ISO/IEC 15948 (PNG, second edition), clauses 11.3.3 on colour space, 12.8 on filters.
[[nodiscard]] QByteArray encodePng(const QImage& image);

} // namespace stillwick
