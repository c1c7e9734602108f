#include "Interface/StylePainting.h"

#include "Interface/Theme.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace stillwick {

namespace {

constexpr double grooveThickness = 4;

/// The part of `rect` of that thickness along its middle.
QRectF middleOf(const QRectF& rect, Qt::Orientation orientation, double thickness) {
    if (orientation == Qt::Horizontal)
        return {rect.left(), rect.center().y() - thickness / 2, rect.width(), thickness};
    return {rect.center().x() - thickness / 2, rect.top(), thickness, rect.height()};
}

/// The groove from its beginning, where the least value is, to the handle.
QRectF filledPart(const QRectF& groove, const QPointF& handle, const QStyleOptionSlider& option) {
    QRectF filled = groove;
    if (option.orientation == Qt::Horizontal) {
        if (option.upsideDown)
            filled.setLeft(handle.x());
        else
            filled.setRight(handle.x());
    } else if (option.upsideDown) {
        filled.setTop(handle.y());
    } else {
        filled.setBottom(handle.y());
    }
    return filled;
}

void paintHandle(QPainter& painter, const QStyleOptionSlider& option, const QRectF& handle) {
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    const bool isHeld = option.activeSubControls.testFlag(QStyle::SC_SliderHandle) &&
                        option.state.testFlag(QStyle::State_Sunken);
    const double radius = handle.width() / 2;
    if (showsFocus(option))
        paintFocusRing(painter, handle.adjusted(-3, -3, 3, 3), radius + 3, option.palette);
    const QColor shadow(0, 0, 0, 28);
    fillRounded(painter, handle.adjusted(-0.5, 0.5, 0.5, 1.5), radius + 0.5, shadow);
    const bool isDark = schemeOf(option.palette) == ColorScheme::dark;
    QColor ground = isDark ? QColor(0xe6, 0xe6, 0xee) : QColor(Qt::white);
    if (!isEnabled)
        ground = themeColor(ThemeColor::groove, option.palette);
    else if (isHeld)
        ground = ground.darker(108);
    fillRounded(painter, handle, radius, ground);
    strokeRounded(painter, handle, radius, QColor(0, 0, 0, isDark ? 90 : 62));
}

} // namespace

void paintSlider(QPainter& painter, const QStyleOptionSlider& option, const QRectF& handle) {
    const QRectF groove = middleOf(QRectF(option.rect), option.orientation, grooveThickness);
    const double radius = grooveThickness / 2;
    fillRounded(painter, groove, radius, themeColor(ThemeColor::groove, option.palette));
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    fillRounded(painter, filledPart(groove, handle.center(), option), radius,
                themeColor(isEnabled ? ThemeColor::accentFill : ThemeColor::thumb, option.palette));
    paintHandle(painter, option, handle);
}

void paintScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QRectF& thumb,
                    const QWidget* widget) {
    const QWidget* around = widget == nullptr ? nullptr : widget->parentWidget();
    const auto* area =
        around == nullptr ? nullptr : dynamic_cast<QAbstractScrollArea*>(around->parentWidget());
    const QColor ground =
        area == nullptr ? themeColor(ThemeColor::window, option.palette)
                        : area->viewport()->palette().color(area->viewport()->backgroundRole());
    painter.fillRect(option.rect, ground);
    if (option.minimum == option.maximum)
        return;
    const bool isActive = option.state.testFlag(QStyle::State_MouseOver) ||
                          option.activeSubControls.testFlag(QStyle::SC_ScrollBarSlider);
    const double thickness = isActive ? 8 : 6;
    const QRectF bar = middleOf(thumb, option.orientation, thickness);
    fillRounded(
        painter, bar, thickness / 2,
        themeColor(isActive ? ThemeColor::disabledText : ThemeColor::thumb, option.palette));
}

void paintProgressBar(QPainter& painter, const QStyleOptionProgressBar& option) {
    constexpr double thickness = 6;
    const QRectF groove = middleOf(QRectF(option.rect), Qt::Horizontal, thickness);
    fillRounded(painter, groove, thickness / 2, themeColor(ThemeColor::groove, option.palette));
    const double span = std::max(1, option.maximum - option.minimum);
    const double part = std::clamp((option.progress - option.minimum) / span, 0.0, 1.0);
    if (part <= 0)
        return;
    QRectF filled = groove;
    filled.setWidth(std::max(thickness, groove.width() * part));
    fillRounded(painter, filled, thickness / 2, themeColor(ThemeColor::accentFill, option.palette));
}

} // namespace stillwick
