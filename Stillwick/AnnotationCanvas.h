// The layer over a cut-out on which marks are drawn, picked and moved. Main thread.
#pragma once

#include "Stillwick/Annotation.h"
#include "Stillwick/AnnotationTool.h"

#include <QColor>
#include <QList>
#include <QPointF>
#include <QUuid>
#include <QWidget>

#include <optional>

class QPainter;

namespace stillwick {

/// Covers exactly the picture that the marks belong to. Shows what it is given and tells what the
/// user did; a mark that is being drawn is its own until it is finished.
class AnnotationCanvas final : public QWidget {
    Q_OBJECT

public:
    explicit AnnotationCanvas(QWidget* parent = nullptr);

    void setAnnotations(const QList<Annotation>& annotations);
    void setTool(AnnotationTool tool);
    /// Of new marks.
    void setColor(const QColor& color);
    /// Of new marks. *Units*: a fraction of the canvas's width.
    void setLineWidth(double width);
    void setSelectedID(std::optional<QUuid> id);
    /// Lets go of the mark that is being drawn or moved; what the hand does until it is lifted has
    /// no effect.
    void abandonDrag();

    [[nodiscard]] const QList<Annotation>& annotations() const noexcept { return m_annotations; }
    [[nodiscard]] const std::optional<QUuid>& selectedID() const noexcept { return m_selectedID; }
    /// The mark that is being drawn.
    [[nodiscard]] const std::optional<Annotation>& draft() const noexcept { return m_draft; }

signals:
    /// The user changed the marks.
    void annotationsEdited(const QList<Annotation>& annotations);
    /// The user selected a mark, or none.
    void selectionEdited(const std::optional<QUuid>& id);
    /// The user draws the picture itself away: a drag with the selection tool that hit no mark.
    void pictureDragged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void drawAnnotation(QPainter& painter, const Annotation& annotation, bool isSelected) const;
    void drag(const QPointF& start, const QPointF& point);
    void moveSelected(const QPointF& start, const QPointF& point);
    void endDrag();
    void select(std::optional<QUuid> id);

    QList<Annotation> m_annotations;
    AnnotationTool m_tool = AnnotationTool::select;
    QColor m_color = Qt::red;
    double m_lineWidth = 0.006;
    std::optional<QUuid> m_selectedID;
    std::optional<Annotation> m_draft;
    std::optional<Annotation> m_dragSnapshot; ///< the mark that is moved, as it was
    std::optional<QPointF> m_pressed;
    bool m_isDragging = false; ///< the pointer has gone far enough
};

} // namespace stillwick
