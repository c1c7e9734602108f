// The finish of a cut-out's border. Any thread; calls share nothing.
#pragma once

#include <QColor>
#include <QImage>

namespace stillwick {

/// Shrinks, softens and outlines cut-outs. Never fails: a picture that cannot be worked on comes
/// back as it was.
class EdgeProcessingService final {
public:
    /// The cut-out with its border drawn inwards by `shrink`, then blurred with the standard
    /// deviation `feather`; neither is done for 0 or less. Opacity never grows, and no colour
    /// changes.
    /// *Shape*: any picture; Format_RGBA8888 of the same size and colour space comes back, or the
    /// very picture given where there is nothing to do.
    /// *Units*: the picture's pixels.
    [[nodiscard]] QImage cleanEdges(const QImage& image, double shrink, double feather) const;

    /// The cut-out lying on its own silhouette, grown by `width` and filled with `color`.
    /// *Shape*: Format_RGBA8888, larger by `width` + 2 pixels on each side, rounded up; the cut-out
    /// is in the middle.
    /// *Units*: the picture's pixels; a width below 0 counts as 0.
    [[nodiscard]] QImage addOutline(const QImage& image, double width, const QColor& color) const;
};

} // namespace stillwick
