#include "Stillwick/ImageFilterService.h"

#include "Imaging/AlphaMask.h"
#include "Imaging/ColorPosterize.h"
#include "Imaging/ComicEffect.h"
#include "Imaging/LineOverlay.h"

namespace stillwick {

namespace {

/// The colours of the style, opaque; a null picture where there are none.
QImage stylizedColor(FilterStyle style, const QImage& image) {
    switch (style) {
    case FilterStyle::none:
        break;
    case FilterStyle::sketch:
        return lineOverlay(image, {.noiseReductionLevel = 0.07F,
                                   .noiseReductionSharpness = 0.71F,
                                   .edgeIntensity = 1.0F,
                                   .threshold = 0.1F,
                                   .contrast = 50.0F});
    case FilterStyle::comic:
        return comicEffect(image);
    case FilterStyle::poster:
        return colorPosterize(image, {.levels = 6});
    }
    return {};
}

} // namespace

QImage ImageFilterService::apply(FilterStyle style, const QImage& image) const {
    if (style == FilterStyle::none || image.isNull())
        return image;
    const QImage result = withAlphaOf(stylizedColor(style, image), image);
    return result.isNull() ? image : result;
}

} // namespace stillwick
