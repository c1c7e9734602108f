// The finish of a cut-out's border. Any thread.
#pragma once

#include "Stillwick/LastResult.h"

#include <QColor>
#include <QImage>
#include <QPoint>

#include <tuple>

namespace stillwick {

/// Shrinks, softens and outlines cut-outs. Never fails: a picture that cannot be worked on comes
/// back as it was. What it did last is at hand for the next call: the styles of one cut-out have
/// their border in common.
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
    [[nodiscard]] QImage addOutline(const QImage& image, double width, const QColor& color) const {
        return addOutline(image, width, color, image);
    }
    /// The same for a picture that has the very opacity of `shape`, whose silhouette may be at
    /// hand.
    [[nodiscard]] QImage addOutline(const QImage& image, double width, const QColor& color,
                                    const QImage& shape) const;

private:
    /// Grown opacity, and where in the bordered picture it lies; null where nothing is visible.
    struct Silhouette {
        QImage plane;
        QPoint corner;
    };
    /// A picture's identity, and what was done to it.
    using CleanKey = std::tuple<qint64, double, double>;
    using SilhouetteKey = std::tuple<qint64, double>;

    [[nodiscard]] QImage outlined(const QImage& picture, double width, const QColor& color,
                                  qint64 shape) const;
    [[nodiscard]] static Silhouette silhouetteOf(const QImage& bordered, double width);

    mutable LastResult<CleanKey, QImage> m_cleaned;
    mutable LastResult<SilhouetteKey, Silhouette> m_silhouette;
};

} // namespace stillwick
