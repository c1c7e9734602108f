// A picture in few colours. Any thread.
#pragma once

#include <QImage>

namespace stillwick {

/// How many values each channel may have, evenly spaced from 0 to 255; 2 to 256.
struct ColorPosterize {
    int levels = 6;
};

/// Red, green and blue each at the nearest of the levels, halves up. Noise is smoothed before, so
/// that areas that are flat but for noise become flat; even areas are mapped exactly.
/// *Shape*: any format in; Format_RGBA8888 out, opaque everywhere, of the picture's size and colour
/// space.
/// *Errors*: a null picture where there is none, or no memory.
/// *Source*: C. Tomasi and R. Manduchi, "Bilateral filtering for gray and color images" (1998).
[[nodiscard]] QImage colorPosterize(const QImage& image, const ColorPosterize& parameters);

} // namespace stillwick
