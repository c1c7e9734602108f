#include "Stillwick/AnnotationCanvas.h"

#include "Interface/Accessibility.h"
#include "Interface/Theme.h"
#include "Stillwick/AnnotationGeometry.h"
#include "Stillwick/EdgeOptions.h"

#include <QApplication>
#include <QLineF>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace stillwick {

namespace {

constexpr double leastDrag = 2; // pixels; a press without a movement does nothing
constexpr double haloOpacity = 0.6;
constexpr double haloExtra = 4;

} // namespace

AnnotationCanvas::AnnotationCanvas(QWidget* parent) : QWidget(parent) {
    setAccessibleRole(this, QAccessible::Canvas);
    setAccessibleName(QStringLiteral("Annotations"));
    setAttribute(Qt::WA_NoSystemBackground);
    setCursor(Qt::ArrowCursor);
}

void AnnotationCanvas::setAnnotations(const QList<Annotation>& annotations) {
    m_annotations = annotations;
    update();
}

void AnnotationCanvas::setTool(AnnotationTool tool) {
    m_tool = tool;
    setCursor(kindOf(tool) ? Qt::CrossCursor : Qt::ArrowCursor);
}

void AnnotationCanvas::setColor(const QColor& color) {
    m_color = color;
}

void AnnotationCanvas::setLineWidth(double width) {
    m_lineWidth = width;
}

void AnnotationCanvas::setSelectedID(std::optional<QUuid> id) {
    m_selectedID = id;
    update();
}

void AnnotationCanvas::abandonDrag() {
    m_draft.reset();
    endDrag();
    update();
}

void AnnotationCanvas::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const Annotation& annotation : std::as_const(m_annotations))
        drawAnnotation(painter, annotation, annotation.id == m_selectedID);
    if (m_draft)
        drawAnnotation(painter, *m_draft, false);
}

void AnnotationCanvas::drawAnnotation(QPainter& painter, const Annotation& annotation,
                                      bool isSelected) const {
    const QSizeF canvas = size();
    const double stroke = AnnotationGeometry::strokeOf(annotation, canvas);
    const QPainterPath path = AnnotationGeometry::shapePath(
        annotation.kind, AnnotationGeometry::denormalize(annotation.start, canvas),
        AnnotationGeometry::denormalize(annotation.end, canvas), stroke);
    if (isSelected) {
        QColor halo = themeColor(ThemeColor::accent, palette());
        halo.setAlphaF(float(haloOpacity));
        painter.strokePath(
            path, QPen(halo, stroke + haloExtra, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.strokePath(path, QPen(AnnotationGeometry::colorOf(annotation), stroke, Qt::SolidLine,
                                  Qt::RoundCap, Qt::RoundJoin));
}

void AnnotationCanvas::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_pressed = event->position();
    m_isDragging = false;
}

void AnnotationCanvas::mouseMoveEvent(QMouseEvent* event) {
    if (!m_pressed)
        return;
    m_isDragging = m_isDragging || QLineF(*m_pressed, event->position()).length() >= leastDrag;
    if (!m_isDragging)
        return;
    drag(AnnotationGeometry::normalize(*m_pressed, size()),
         AnnotationGeometry::normalize(event->position(), size()));
    const bool hasHold = m_draft || m_dragSnapshot;
    if (!hasHold &&
        QLineF(*m_pressed, event->position()).length() >= QApplication::startDragDistance()) {
        endDrag(); // its end will not be told
        emit pictureDragged();
    }
}

void AnnotationCanvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    if (m_draft) {
        const Annotation finished = *std::exchange(m_draft, std::nullopt);
        m_annotations.append(finished);
        emit annotationsEdited(m_annotations);
        select(finished.id);
    }
    endDrag();
    update();
}

void AnnotationCanvas::endDrag() {
    m_dragSnapshot.reset();
    m_pressed.reset();
    m_isDragging = false;
}

void AnnotationCanvas::drag(const QPointF& start, const QPointF& point) {
    const auto kind = kindOf(m_tool);
    if (!kind) {
        moveSelected(start, point);
        return;
    }
    const ColorComponents color = EdgeOptions::components(m_color);
    m_draft = Annotation{
        QUuid::createUuid(), *kind, start, point, color.r, color.g, color.b, color.a, m_lineWidth};
    update();
}

void AnnotationCanvas::moveSelected(const QPointF& start, const QPointF& point) {
    const auto find = [this](const QUuid& id) {
        return std::find_if(m_annotations.begin(), m_annotations.end(),
                            [&id](const Annotation& each) { return each.id == id; });
    };
    if (!m_dragSnapshot) {
        select(AnnotationGeometry::hitTest(m_annotations, start));
        if (m_selectedID)
            m_dragSnapshot = *find(*m_selectedID);
    }
    if (!m_dragSnapshot)
        return;
    const auto moved = find(m_dragSnapshot->id);
    if (moved == m_annotations.end())
        return;
    moved->start = m_dragSnapshot->start + (point - start);
    moved->end = m_dragSnapshot->end + (point - start);
    emit annotationsEdited(m_annotations);
    update();
}

void AnnotationCanvas::select(std::optional<QUuid> id) {
    if (id == m_selectedID)
        return;
    m_selectedID = id;
    emit selectionEdited(id);
    update();
}

} // namespace stillwick
