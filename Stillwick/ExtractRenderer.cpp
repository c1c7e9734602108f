#include "Stillwick/ExtractRenderer.h"

#include "Stillwick/AnnotationRenderer.h"
#include "Stillwick/EdgeProcessingService.h"
#include "Stillwick/ImageCrop.h"
#include "Stillwick/ImageFilterService.h"

namespace stillwick {

ExtractRenderer ExtractRenderer::make() {
    return {std::make_shared<const ImageFilterService>(),
            std::make_shared<const EdgeProcessingService>()};
}

QImage ExtractRenderer::render(const QImage& image, FilterStyle style,
                               const EdgeParams& params) const {
    const QImage cleaned =
        params.needsClean() ? edge->cleanEdges(image, params.shrink, params.feather) : image;
    QImage picture = filter->apply(style, cleaned);
    if (params.outline)
        picture = edge->addOutline(
            picture, params.outlineWidth,
            QColor::fromRgbF(float(params.r), float(params.g), float(params.b), float(params.a)),
            cleaned); // no style changes the opacity
    return picture;
}

QImage ExtractRenderer::finish(const QImage& image, FilterStyle style, const EdgeParams& params,
                               const QList<Annotation>& annotations, bool crop) const {
    const QImage marked = AnnotationRenderer::draw(annotations, render(image, style, params));
    return crop ? ImageCrop::trimmedToContent(marked) : marked;
}

} // namespace stillwick
