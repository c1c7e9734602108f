// One vector mark drawn on a still. Plain value, any thread.
#pragma once

#include "Stillwick/AnnotationKind.h"

#include <QPointF>
#include <QUuid>

#include <cstddef>

namespace stillwick {

/// A line, an arrow or an ellipse between two points, in one colour.
/// *Units*: points from 0 to 1 across the still's width and down its height; the stroke's width as
/// a fraction of the still's width; colour components and opacity from 0 to 1.
struct Annotation {
    QUuid id = QUuid::createUuid();
    AnnotationKind kind = AnnotationKind::arrow;
    QPointF start; ///< for a circle, a corner of the box around the ellipse
    QPointF end;   ///< for a circle, the opposite corner
    double r = 0;
    double g = 0;
    double b = 0;
    double a = 0;
    double lineWidth = 0;
};

/// Whether all nine fields are the same, numbers to the last bit: QPointF's own `==` is not exact.
[[nodiscard]] bool operator==(const Annotation& x, const Annotation& y) noexcept;
/// Taken over all nine fields; agrees with `==`.
[[nodiscard]] std::size_t qHash(const Annotation& annotation, std::size_t seed = 0) noexcept;

} // namespace stillwick
