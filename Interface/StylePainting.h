// What the interface style draws, piece by piece. Main thread.
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;
class QPalette;
class QStyleOption;
class QStyleOptionButton;
class QStyleOptionMenuItem;
class QStyleOptionProgressBar;
class QStyleOptionSlider;
class QWidget;

namespace stillwick {

inline constexpr double controlRadius = 6;

void fillRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& color);
/// A frame of that width just inside of the rectangle.
void strokeRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& color,
                   double width = 1);
/// The frame of what has the keyboard's focus.
void paintFocusRing(QPainter& painter, const QRectF& rect, double radius, const QPalette& palette);
/// Whether the focus is to be seen: the widget has it, and it came by the keyboard.
[[nodiscard]] bool showsFocus(const QStyleOption& option);

enum class ChevronDirection { up, down, left, right };
void paintChevron(QPainter& painter, const QRectF& rect, ChevronDirection direction,
                  const QColor& color);

[[nodiscard]] bool isProminent(const QStyleOptionButton& option, const QWidget* widget);
void paintPushButtonPanel(QPainter& painter, const QStyleOptionButton& option,
                          const QWidget* widget);
void paintToolButtonPanel(QPainter& painter, const QStyleOption& option);
void paintCheckBox(QPainter& painter, const QStyleOption& option);
void paintRadioButton(QPainter& painter, const QStyleOption& option);
/// The frame and the ground of what text is typed into.
void paintField(QPainter& painter, const QStyleOption& option);

void paintSlider(QPainter& painter, const QStyleOptionSlider& option, const QRectF& handle);
void paintScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QRectF& thumb,
                    const QWidget* widget);
void paintProgressBar(QPainter& painter, const QStyleOptionProgressBar& option);

void paintMenuItem(QPainter& painter, const QStyleOptionMenuItem& option);
void paintMenuBarItem(QPainter& painter, const QStyleOptionMenuItem& option);
[[nodiscard]] QSize menuItemSize(const QStyleOptionMenuItem& option, const QSize& contents);

} // namespace stillwick
