// The board that shows through what is transparent. Main thread.
#pragma once

#include <QColor>
#include <QWidget>

class QPainter;

namespace stillwick {

inline constexpr QColor checkerboardLight{0xd1, 0xd1, 0xd1}; // white level 0.82
inline constexpr QColor checkerboardDark{0xad, 0xad, 0xad};  // white level 0.68

/// Squares from the top left corner, which is always dark; those at the right and bottom edges are
/// cut. *Units*: the side of a square in pixels that do not depend on the screen.
void paintCheckerboard(QPainter& painter, const QRectF& rect, double squareSize = 6,
                       const QColor& light = checkerboardLight,
                       const QColor& dark = checkerboardDark);

class CheckerboardView : public QWidget {
    Q_OBJECT

public:
    explicit CheckerboardView(double squareSize = 6, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double m_squareSize;
};

} // namespace stillwick
