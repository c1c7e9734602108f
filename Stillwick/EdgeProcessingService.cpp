#include "Stillwick/EdgeProcessingService.h"

#include "Imaging/AlphaBlur.h"
#include "Imaging/AlphaPlane.h"
#include "Imaging/DiscMorphology.h"
#include "Imaging/StraightAlpha.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace stillwick {

namespace {

/// What an outline may make of a picture at most, 1 GiB: wider ones are not drawn.
constexpr double mostPixels = 1 << 28;
/// The free border beyond an outline.
constexpr double freeBorder = 2;

/// The pixels that decide how the visible ones come out; null where none is visible.
QRect areaToClean(const QImage& picture, double feather) {
    const QRect visible = boxOfAlphaAbove(picture, 0);
    if (visible.isNull())
        return {};
    const int reach = 0 < feather ? gaussianReach(feather) : 0;
    return visible.marginsAdded({reach, reach, reach, reach}) & picture.rect();
}

/// *Errors*: std::bad_alloc.
QImage cleaned(const QImage& image, double shrink, double feather) {
    QImage picture = withStraightAlpha(image);
    const QRect area = areaToClean(picture, feather);
    if (area.isNull() || picture.bits() == nullptr) // bits() detaches, and may find no memory
        return image;
    if (0 < shrink)
        limitAlpha(picture, erodedByDisc(alphaPlaneOf(picture, area), shrink), area.topLeft());
    if (0 < feather)
        limitAlpha(picture, gaussianBlurred(alphaPlaneOf(picture, area), feather), area.topLeft());
    return picture;
}

} // namespace

QImage EdgeProcessingService::cleanEdges(const QImage& image, double shrink, double feather) const {
    if (!(0 < shrink) && !(0 < feather))
        return image;
    try {
        return m_cleaned.of({image.cacheKey(), shrink, feather},
                            [&] { return cleaned(image, shrink, feather); });
    } catch (const std::bad_alloc&) {
        return image;
    }
}

EdgeProcessingService::Silhouette EdgeProcessingService::silhouetteOf(const QImage& bordered,
                                                                      double width) {
    const int reach = int(std::ceil(width));
    const QRect visible = boxOfAlphaAbove(bordered, 0);
    if (visible.isNull())
        return {};
    const QRect grown = visible.marginsAdded({reach, reach, reach, reach});
    return {dilatedByDisc(alphaPlaneOf(bordered, grown), width), grown.topLeft()};
}

QImage EdgeProcessingService::outlined(const QImage& picture, double width, const QColor& color,
                                       qint64 shape) const {
    const double border = std::ceil(width + freeBorder);
    if (!((picture.width() + 2 * border) * (picture.height() + 2 * border) <= mostPixels))
        return {};
    QImage result = withBorder(picture, int(border));
    const Silhouette silhouette =
        m_silhouette.of({shape, width}, [&] { return silhouetteOf(result, width); });
    if (!silhouette.plane.isNull())
        layOnColor(result, color, silhouette.plane, silhouette.corner);
    return result;
}

QImage EdgeProcessingService::addOutline(const QImage& image, double width, const QColor& color,
                                         const QImage& shape) const {
    try {
        const QImage picture = withStraightAlpha(image);
        const QImage result =
            picture.isNull() ? picture
                             : outlined(picture, std::max(width, 0.0), color, shape.cacheKey());
        return result.isNull() ? image : result;
    } catch (const std::bad_alloc&) {
        return image;
    }
}

} // namespace stillwick
