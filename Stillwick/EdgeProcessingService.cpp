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

QImage outlined(const QImage& picture, double width, const QColor& color) {
    const double border = std::ceil(width + freeBorder);
    if (!((picture.width() + 2 * border) * (picture.height() + 2 * border) <= mostPixels))
        return {};
    QImage result = withBorder(picture, int(border));
    const int reach = int(std::ceil(width));
    const QRect visible = boxOfAlphaAbove(result, 0);
    if (!visible.isNull()) {
        const QRect grown = visible.marginsAdded({reach, reach, reach, reach});
        const QImage silhouette = dilatedByDisc(alphaPlaneOf(result, grown), width);
        layOnColor(result, color, silhouette, grown.topLeft());
    }
    return result;
}

} // namespace

QImage EdgeProcessingService::cleanEdges(const QImage& image, double shrink, double feather) const {
    if (!(0 < shrink) && !(0 < feather))
        return image;
    try {
        QImage picture = withStraightAlpha(image);
        const QRect area = areaToClean(picture, feather);
        if (area.isNull() || picture.bits() == nullptr) // bits() detaches, and may find no memory
            return image;
        if (0 < shrink)
            limitAlpha(picture, erodedByDisc(alphaPlaneOf(picture, area), shrink), area.topLeft());
        if (0 < feather)
            limitAlpha(picture, gaussianBlurred(alphaPlaneOf(picture, area), feather),
                       area.topLeft());
        return picture;
    } catch (const std::bad_alloc&) {
        return image;
    }
}

QImage EdgeProcessingService::addOutline(const QImage& image, double width,
                                         const QColor& color) const {
    try {
        const QImage picture = withStraightAlpha(image);
        const QImage result =
            picture.isNull() ? picture : outlined(picture, std::max(width, 0.0), color);
        return result.isNull() ? image : result;
    } catch (const std::bad_alloc&) {
        return image;
    }
}

} // namespace stillwick
