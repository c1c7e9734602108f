#include "Interface/StylePainting.h"

#include "Interface/Theme.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>

#include <array>
#include <cstddef>

namespace stillwick {

void fillRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(rect, radius, radius);
    painter.restore();
}

void strokeRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& color,
                   double width) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    const double inset = width / 2;
    painter.drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), radius - inset,
                            radius - inset);
    painter.restore();
}

void paintFocusRing(QPainter& painter, const QRectF& rect, double radius, const QPalette& palette) {
    strokeRounded(painter, rect, radius, themeColor(ThemeColor::accent, palette), 2);
}

bool showsFocus(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_HasFocus) &&
           option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

void paintChevron(QPainter& painter, const QRectF& rect, ChevronDirection direction,
                  const QColor& color) {
    constexpr std::array turns{-90.0, 90.0, 180.0, 0.0};
    constexpr double reach = 3.5;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center());
    painter.rotate(turns.at(static_cast<std::size_t>(direction)));
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    QPainterPath path(QPointF(-reach / 2, -reach));
    path.lineTo(reach / 2, 0);
    path.lineTo(-reach / 2, reach);
    painter.drawPath(path);
    painter.restore();
}

void paintField(QPainter& painter, const QStyleOption& option) {
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    const QRectF rect(option.rect);
    const auto ground = isEnabled ? ThemeColor::fieldBackground : ThemeColor::controlBackground;
    fillRounded(painter, rect, controlRadius, themeColor(ground, option.palette));
    if (isEnabled && option.state.testFlag(QStyle::State_HasFocus))
        paintFocusRing(painter, rect, controlRadius, option.palette);
    else
        strokeRounded(painter, rect, controlRadius,
                      themeColor(ThemeColor::quaternary, option.palette));
}

} // namespace stillwick
