#include "Stillwick/AnnotationRenderer.h"

#include "Imaging/StraightAlpha.h"
#include "Stillwick/AnnotationGeometry.h"

#include <QColorSpace>
#include <QLineF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace stillwick::AnnotationRenderer {

namespace {

bool isDrawable(const Annotation& mark) {
    const auto numbers = {mark.start.x(), mark.start.y(), mark.end.x(), mark.end.y(),  mark.r,
                          mark.g,         mark.b,         mark.a,       mark.lineWidth};
    return std::all_of(numbers.begin(), numbers.end(), [](double x) { return std::isfinite(x); });
}

/// A line without length is a dot: the round cap alone.
void drawSegment(QPainter& painter, const QLineF& line) {
    if (line.isNull())
        painter.drawPoint(line.p1());
    else
        painter.drawLine(line);
}

void drawMark(QPainter& painter, const Annotation& mark, const QSizeF& size) {
    const double stroke = AnnotationGeometry::strokeOf(mark, size);
    painter.setPen(QPen(AnnotationGeometry::colorOf(mark), stroke, Qt::SolidLine, Qt::RoundCap,
                        Qt::RoundJoin));
    const auto pixels = [&size](const QPointF& point) {
        return QPointF(point.x() * size.width(), point.y() * size.height());
    };
    const QLineF line(pixels(mark.start), pixels(mark.end));
    if (mark.kind == AnnotationKind::circle)
        painter.drawEllipse(QRectF(line.p1(), line.p2()).normalized());
    else
        drawSegment(painter, line);
    if (mark.kind == AnnotationKind::arrow)
        painter.drawPath(AnnotationGeometry::arrowHead(line.p1(), line.p2(), stroke));
}

QImage inSrgb(const QImage& image) {
    const QColorSpace srgb(QColorSpace::SRgb);
    const QColorSpace own = image.colorSpace();
    QImage canvas =
        withStraightAlpha(own.isValid() && own != srgb ? image.convertedToColorSpace(srgb) : image);
    canvas.setColorSpace(srgb);
    return canvas;
}

} // namespace

QImage draw(const QList<Annotation>& annotations, const QImage& image) {
    if (annotations.isEmpty() || image.isNull())
        return image;
    QImage canvas = inSrgb(image);
    QPainter painter;
    if (canvas.isNull() || !painter.begin(&canvas))
        return image;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    for (const Annotation& mark : annotations)
        if (isDrawable(mark))
            drawMark(painter, mark, QSizeF(image.size()));
    painter.end();
    return canvas;
}

} // namespace stillwick::AnnotationRenderer
