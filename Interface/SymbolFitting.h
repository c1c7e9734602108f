// Symbols fitted to the grid of pixels. Plain functions, any thread.
#pragma once

#include <QByteArray>

namespace stillwick {

/// The same drawing for a square of `side` pixels, its upright and level lines moved by less than
/// half a pixel so that one edge of each falls between two pixels; what lies between them goes
/// along. *Shape*: an SVG of paths (with absolute commands M L H V C A Z), circles and rectangles
/// in a square view box, every stroke of the weight that the root states.
[[nodiscard]] QByteArray fitSymbolToPixels(const QByteArray& svg, int side);

} // namespace stillwick
