// A cut-out finished. Plain value, any thread.
#pragma once

#include "Stillwick/Annotation.h"
#include "Stillwick/EdgeOptions.h"
#include "Stillwick/FilterStyle.h"

#include <QImage>
#include <QList>

#include <memory>

namespace stillwick {

class EdgeProcessingService;
class ImageFilterService;

/// Makes the finished picture of a cut-out.
struct ExtractRenderer {
    std::shared_ptr<const ImageFilterService> filter;
    std::shared_ptr<const EdgeProcessingService> edge;

    /// A renderer with services of its own.
    [[nodiscard]] static ExtractRenderer make();

    /// The cut-out with its border cleaned, then in `style`, then outlined: the outline keeps its
    /// plain colour. Never fails: a step that does leaves the picture as it was.
    /// *Shape*: see EdgeProcessingService and ImageFilterService; the very picture given where
    /// there is nothing to do.
    [[nodiscard]] QImage render(const QImage& image, FilterStyle style,
                                const EdgeParams& params) const;
    /// The same with its marks, as it is exported whole; where `crop` is set trimmed to what is
    /// visible.
    [[nodiscard]] QImage finish(const QImage& image, FilterStyle style, const EdgeParams& params,
                                const QList<Annotation>& annotations, bool crop) const;
};

} // namespace stillwick
