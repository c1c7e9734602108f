#include "Interface/StylePainting.h"

#include "Interface/Theme.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>
#include <QVariant>
#include <QWidget>

namespace stillwick {

namespace {

bool has(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

/// One of three colours: at rest, under the pointer, held down.
ThemeColor byState(const QStyleOption& option, ThemeColor rest, ThemeColor hover,
                   ThemeColor pressed) {
    if (has(option, QStyle::State_Sunken))
        return pressed;
    return has(option, QStyle::State_MouseOver) ? hover : rest;
}

void paintProminentPanel(QPainter& painter, const QStyleOptionButton& option) {
    const QRectF rect(option.rect);
    if (!has(option, QStyle::State_Enabled)) {
        fillRounded(painter, rect, controlRadius,
                    themeColor(ThemeColor::controlBackground, option.palette));
        strokeRounded(painter, rect, controlRadius,
                      themeColor(ThemeColor::separator, option.palette));
        return;
    }
    const ThemeColor ground =
        byState(option, ThemeColor::accentFill, ThemeColor::accentHover, ThemeColor::accentPressed);
    fillRounded(painter, rect, controlRadius, themeColor(ground, option.palette));
    if (showsFocus(option)) { // an inner frame, for the ground is of the ring's colour
        paintFocusRing(painter, rect, controlRadius, option.palette);
        strokeRounded(painter, rect.adjusted(2, 2, -2, -2), controlRadius - 2,
                      themeColor(ThemeColor::onAccent, option.palette), 1.5);
    }
}

/// The ground of a small indicator: filled when it is on.
void paintIndicatorGround(QPainter& painter, const QStyleOption& option, double radius) {
    const bool isOn = has(option, QStyle::State_On) || has(option, QStyle::State_NoChange);
    const bool isEnabled = has(option, QStyle::State_Enabled);
    const QRectF rect(option.rect);
    if (isOn && isEnabled) {
        const ThemeColor ground = byState(option, ThemeColor::accentFill, ThemeColor::accentHover,
                                          ThemeColor::accentPressed);
        fillRounded(painter, rect, radius, themeColor(ground, option.palette));
    } else {
        const ThemeColor ground = byState(option, ThemeColor::fieldBackground,
                                          ThemeColor::controlHover, ThemeColor::controlPressed);
        fillRounded(painter, rect, radius,
                    themeColor(isEnabled ? ground : ThemeColor::controlBackground, option.palette));
        strokeRounded(
            painter, rect, radius,
            themeColor(isEnabled ? ThemeColor::thumb : ThemeColor::controlBorder, option.palette));
    }
    if (showsFocus(option))
        paintFocusRing(painter, rect.adjusted(-2, -2, 2, 2), radius + 2, option.palette);
}

QColor indicatorMarkColor(const QStyleOption& option) {
    return themeColor(has(option, QStyle::State_Enabled) ? ThemeColor::onAccent
                                                         : ThemeColor::disabledText,
                      option.palette);
}

} // namespace

bool isProminent(const QStyleOptionButton& option, const QWidget* widget) {
    return option.features.testFlag(QStyleOptionButton::DefaultButton) ||
           (widget != nullptr && widget->property("isProminent").toBool());
}

void paintPushButtonPanel(QPainter& painter, const QStyleOptionButton& option,
                          const QWidget* widget) {
    if (option.features.testFlag(QStyleOptionButton::Flat)) {
        paintToolButtonPanel(painter, option);
        return;
    }
    if (isProminent(option, widget)) {
        paintProminentPanel(painter, option);
        return;
    }
    const bool isEnabled = has(option, QStyle::State_Enabled);
    const QRectF rect(option.rect);
    const ThemeColor ground = isEnabled
                                  ? byState(option, ThemeColor::control, ThemeColor::controlHover,
                                            ThemeColor::controlPressed)
                                  : ThemeColor::window;
    fillRounded(painter, rect, controlRadius, themeColor(ground, option.palette));
    strokeRounded(
        painter, rect, controlRadius,
        themeColor(isEnabled ? ThemeColor::controlBorder : ThemeColor::separator, option.palette));
    if (showsFocus(option))
        paintFocusRing(painter, rect, controlRadius, option.palette);
}

void paintToolButtonPanel(QPainter& painter, const QStyleOption& option) {
    const QRectF rect(option.rect);
    const bool isEnabled = has(option, QStyle::State_Enabled);
    if (isEnabled && has(option, QStyle::State_Sunken))
        fillRounded(painter, rect, controlRadius,
                    themeColor(ThemeColor::controlBorder, option.palette));
    else if (isEnabled && has(option, QStyle::State_On))
        fillRounded(painter, rect, controlRadius,
                    themeColor(ThemeColor::selectionTint, option.palette));
    else if (isEnabled && has(option, QStyle::State_MouseOver))
        fillRounded(painter, rect, controlRadius,
                    themeColor(ThemeColor::separator, option.palette));
    if (showsFocus(option))
        paintFocusRing(painter, rect, controlRadius, option.palette);
}

void paintCheckBox(QPainter& painter, const QStyleOption& option) {
    paintIndicatorGround(painter, option, 4);
    const QRectF rect(option.rect);
    const double unit = rect.width() / 16;
    QPainterPath mark;
    if (has(option, QStyle::State_NoChange)) {
        mark.moveTo(rect.left() + 4.5 * unit, rect.center().y());
        mark.lineTo(rect.right() - 4.5 * unit, rect.center().y());
    } else if (has(option, QStyle::State_On)) {
        mark.moveTo(rect.left() + 4 * unit, rect.top() + 8.5 * unit);
        mark.lineTo(rect.left() + 7 * unit, rect.top() + 11.5 * unit);
        mark.lineTo(rect.left() + 12 * unit, rect.top() + 5 * unit);
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(
        QPen(indicatorMarkColor(option), 1.75 * unit, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(mark);
    painter.restore();
}

void paintRadioButton(QPainter& painter, const QStyleOption& option) {
    const QRectF rect(option.rect);
    paintIndicatorGround(painter, option, rect.width() / 2);
    if (!has(option, QStyle::State_On))
        return;
    const double inset = rect.width() * 0.3;
    fillRounded(painter, rect.adjusted(inset, inset, -inset, -inset), rect.width() * 0.2,
                indicatorMarkColor(option));
}

} // namespace stillwick
