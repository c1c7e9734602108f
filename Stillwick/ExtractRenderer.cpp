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
    QImage picture = image;
    if (params.needsClean())
        picture = edge->cleanEdges(picture, params.shrink, params.feather);
    picture = filter->apply(style, picture);
    if (params.outline)
        picture = edge->addOutline(
            picture, params.outlineWidth,
            QColor::fromRgbF(float(params.r), float(params.g), float(params.b), float(params.a)));
    return picture;
}

QImage ExtractRenderer::finish(const QImage& image, FilterStyle style, const EdgeParams& params,
                               const QList<Annotation>& annotations, bool crop) const {
    const QImage marked = AnnotationRenderer::draw(annotations, render(image, style, params));
    return crop ? ImageCrop::trimmedToContent(marked) : marked;
}

} // namespace stillwick
