// A picture as a printed comic. Any thread.
#pragma once

#include <QImage>

namespace stillwick {

/// Flattened colours, a screen of dots in the shadows and outlines in ink, the silhouette's too.
/// *Shape*: any format in; Format_RGBA8888 out, opaque everywhere, of the picture's size and colour
/// space.
/// *Errors*: a null picture where there is none, or no memory.
/// *Source*: H. Winnemöller, S. Olsen and B. Gooch, "Real-time video abstraction" (2006), for the
/// tones and the ink.
[[nodiscard]] QImage comicEffect(const QImage& image);

} // namespace stillwick
