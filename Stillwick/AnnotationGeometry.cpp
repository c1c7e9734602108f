#include "Stillwick/AnnotationGeometry.h"

#include "Stillwick/EdgeOptions.h"

#include <QRectF>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace stillwick::AnnotationGeometry {

namespace {

constexpr double leastBarb = 8;
constexpr double barbPerStroke = 3.5;
constexpr double barbAngle = 0.45; ///< radians off the shaft

double lengthOf(const QPointF& vector) {
    return std::hypot(vector.x(), vector.y());
}

} // namespace

QPointF normalize(const QPointF& point, const QSizeF& size) {
    if (size.width() <= 0 || size.height() <= 0)
        return {0, 0};
    return {std::clamp(point.x() / size.width(), 0.0, 1.0),
            std::clamp(point.y() / size.height(), 0.0, 1.0)};
}

QPointF denormalize(const QPointF& point, const QSizeF& size) {
    return {point.x() * size.width(), point.y() * size.height()};
}

QColor colorOf(const Annotation& annotation) {
    return ColorComponents{annotation.r, annotation.g, annotation.b, annotation.a}.color();
}

double strokeOf(const Annotation& annotation, const QSizeF& size) {
    constexpr double least = 1;
    return std::max(annotation.lineWidth * size.width(), least);
}

std::optional<QUuid> hitTest(const QList<Annotation>& annotations, const QPointF& point) {
    std::optional<QUuid> hit;
    double nearest = tolerance;
    for (const Annotation& annotation : annotations) {
        const double away = distance(point, annotation);
        if (away < nearest) {
            nearest = away;
            hit = annotation.id;
        }
    }
    return hit;
}

double distance(const QPointF& point, const Annotation& annotation) {
    if (annotation.kind != AnnotationKind::circle)
        return pointToSegment(point, annotation.start, annotation.end);
    const QPointF centre = (annotation.start + annotation.end) / 2;
    const QPointF extent = annotation.end - annotation.start;
    const double radius = (std::abs(extent.x()) / 2 + std::abs(extent.y()) / 2) / 2;
    return std::abs(lengthOf(point - centre) - radius);
}

double pointToSegment(const QPointF& point, const QPointF& a, const QPointF& b) {
    const QPointF along = b - a;
    const double lengthSquared = along.x() * along.x() + along.y() * along.y();
    if (lengthSquared == 0)
        return lengthOf(point - a);
    const double share =
        std::clamp(QPointF::dotProduct(point - a, along) / lengthSquared, 0.0, 1.0);
    return lengthOf(point - (a + share * along));
}

QPainterPath arrowHead(const QPointF& from, const QPointF& to, double stroke) {
    const double direction = std::atan2(to.y() - from.y(), to.x() - from.x());
    const double length = std::max(stroke * barbPerStroke, leastBarb);
    QPainterPath head;
    for (const double side : {-barbAngle, barbAngle}) {
        const double angle = direction + std::numbers::pi + side;
        head.moveTo(to);
        head.lineTo(to + length * QPointF(std::cos(angle), std::sin(angle)));
    }
    return head;
}

QPainterPath shapePath(AnnotationKind kind, const QPointF& from, const QPointF& to, double stroke) {
    QPainterPath path;
    if (kind == AnnotationKind::circle) {
        path.addEllipse(QRectF(from, to).normalized());
        return path;
    }
    path.moveTo(from);
    path.lineTo(to);
    if (kind == AnnotationKind::arrow)
        path.addPath(arrowHead(from, to, stroke));
    return path;
}

} // namespace stillwick::AnnotationGeometry
