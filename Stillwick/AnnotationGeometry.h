// How marks are drawn, and where they are: between a canvas and the still, and how far a point is
// from them. Free functions, any thread.
#pragma once

#include "Stillwick/Annotation.h"

#include <QColor>
#include <QList>
#include <QPainterPath>
#include <QPointF>
#include <QSizeF>
#include <QUuid>

#include <optional>

namespace stillwick::AnnotationGeometry {

/// How near a point must be to hit a mark. *Units*: of the still's width, and of its height.
inline constexpr double tolerance = 0.04;

/// A point of the canvas as a part of its size, from 0 to 1, brought inside; (0, 0) on a canvas
/// without an area.
[[nodiscard]] QPointF normalize(const QPointF& point, const QSizeF& size);
/// The canvas's point of normalised coordinates.
[[nodiscard]] QPointF denormalize(const QPointF& point, const QSizeF& size);

/// The mark nearest to a normalised point and within the tolerance, the earlier of two as near.
[[nodiscard]] std::optional<QUuid> hitTest(const QList<Annotation>& annotations,
                                           const QPointF& point);
/// From a normalised point to a mark: to a line or to an arrow's shaft; to the circle of the mean
/// radius for an ellipse.
[[nodiscard]] double distance(const QPointF& point, const Annotation& annotation);
[[nodiscard]] double pointToSegment(const QPointF& point, const QPointF& a, const QPointF& b);

/// The mark's colour; components outside 0 to 1 are brought inside.
[[nodiscard]] QColor colorOf(const Annotation& annotation);
/// How wide the mark is drawn on a picture or canvas of that size, at least 1. *Units*: pixels.
[[nodiscard]] double strokeOf(const Annotation& annotation, const QSizeF& size);
/// The two strokes of an arrow's head at `to`. *Units*: pixels.
[[nodiscard]] QPainterPath arrowHead(const QPointF& from, const QPointF& to, double stroke);
/// The whole mark between two points. *Units*: pixels.
[[nodiscard]] QPainterPath shapePath(AnnotationKind kind, const QPointF& from, const QPointF& to,
                                     double stroke);

} // namespace stillwick::AnnotationGeometry
