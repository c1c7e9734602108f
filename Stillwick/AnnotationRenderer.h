// Marks burnt into pictures. Any thread.
#pragma once

#include "Stillwick/Annotation.h"

#include <QImage>
#include <QList>

namespace stillwick::AnnotationRenderer {

/// The picture with the marks drawn on it, later ones over earlier ones, anti-aliased; what lies
/// outside the picture is cut off. The very picture given where there is nothing to draw or drawing
/// is impossible.
/// *Shape*: Format_RGBA8888 of the same size, in sRGB.
/// *Units*: see Annotation; a stroke is at least 1 pixel wide, an arrow's barbs 8 pixels long.
[[nodiscard]] QImage draw(const QList<Annotation>& annotations, const QImage& image);

} // namespace stillwick::AnnotationRenderer
