// Draws cut-outs in a style. Shared by previews and exports; any number of threads at once.
#pragma once

#include "Stillwick/FilterStyle.h"

#include <QImage>

namespace stillwick {

/// Applies a style to a transparent cut-out and keeps its transparency. Holds no state.
class ImageFilterService final {
public:
    ImageFilterService() = default;
    Q_DISABLE_COPY_MOVE(ImageFilterService)

    /// The cut-out in that style; for the style `none` the very picture given.
    /// *Shape*: Format_RGBA8888 (straight alpha), the picture's size, alpha and colour space; all
    /// four bytes are zero where nothing is visible.
    /// *Errors*: none; where there is no picture or no memory, the picture given comes back.
    [[nodiscard]] QImage apply(FilterStyle style, const QImage& image) const;
};

} // namespace stillwick
