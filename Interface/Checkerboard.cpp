#include "Interface/Checkerboard.h"

#include <QPainter>

#include <cmath>

namespace stillwick {

void paintCheckerboard(QPainter& painter, const QRectF& rect, double squareSize,
                       const QColor& light, const QColor& dark) {
    painter.save();
    painter.setClipRect(rect, Qt::IntersectClip);
    painter.fillRect(rect, light);
    const int columns = int(std::ceil(rect.width() / squareSize));
    const int rows = int(std::ceil(rect.height() / squareSize));
    QList<QRectF> squares;
    squares.reserve((columns * rows + 1) / 2);
    for (int row = 0; row < rows; ++row) {
        for (int column = row % 2; column < columns; column += 2)
            squares.push_back({rect.left() + column * squareSize, rect.top() + row * squareSize,
                               squareSize, squareSize});
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(dark);
    painter.drawRects(squares);
    painter.restore();
}

CheckerboardView::CheckerboardView(double squareSize, QWidget* parent)
    : QWidget(parent), m_squareSize(squareSize) {}

void CheckerboardView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paintCheckerboard(painter, QRectF(rect()), m_squareSize);
}

} // namespace stillwick
