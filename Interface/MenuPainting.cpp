#include "Interface/StylePainting.h"

#include "Interface/Theme.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

#include <algorithm>

namespace stillwick {

namespace {

constexpr int sideMargin = 10;
constexpr int markColumn = 20;
constexpr int arrowColumn = 16;
constexpr int shortcutGap = 28;
constexpr int verticalMargin = 5;
constexpr int separatorHeight = 9;

int leadingColumn(const QStyleOptionMenuItem& option) {
    return option.menuHasCheckableItems || option.maxIconWidth > 0 ? markColumn : 0;
}

ThemeColor textColor(const QStyleOptionMenuItem& option, bool isSelected, ThemeColor otherwise) {
    if (!option.state.testFlag(QStyle::State_Enabled))
        return ThemeColor::disabledText;
    return isSelected ? ThemeColor::onAccent : otherwise;
}

void paintLeadingMark(QPainter& painter, const QStyleOptionMenuItem& option, const QRect& column,
                      bool isSelected) {
    if (option.checkType != QStyleOptionMenuItem::NotCheckable && option.checked) {
        const QColor color =
            themeColor(textColor(option, isSelected, ThemeColor::text), option.palette);
        painter.setPen(QPen(color, 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF middle = QRectF(column).center();
        const QPolygonF mark{middle + QPointF(-4, 0.5), middle + QPointF(-1, 3.5),
                             middle + QPointF(4, -3.5)};
        painter.drawPolyline(mark);
    } else if (!option.icon.isNull()) {
        QIcon::Mode mode = isSelected ? QIcon::Selected : QIcon::Normal;
        if (!option.state.testFlag(QStyle::State_Enabled))
            mode = QIcon::Disabled;
        constexpr int side = 16;
        QRect square(0, 0, side, side);
        square.moveCenter(column.center());
        option.icon.paint(&painter, square, Qt::AlignCenter, mode);
    }
}

} // namespace

void paintMenuItem(QPainter& painter, const QStyleOptionMenuItem& option) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(option.rect, themeColor(ThemeColor::fieldBackground, option.palette));
    if (option.menuItemType == QStyleOptionMenuItem::Separator) {
        const QRect line(option.rect.left() + sideMargin, option.rect.center().y(),
                         option.rect.width() - 2 * sideMargin, 1);
        painter.fillRect(line, themeColor(ThemeColor::separator, option.palette));
        painter.restore();
        return;
    }
    const bool isSelected = option.state.testFlag(QStyle::State_Selected) &&
                            option.state.testFlag(QStyle::State_Enabled);
    if (isSelected)
        fillRounded(painter, QRectF(option.rect), controlRadius - 2,
                    themeColor(ThemeColor::accentFill, option.palette));
    const QRect inner = option.rect.adjusted(sideMargin, 0, -sideMargin, 0);
    const int leading = leadingColumn(option);
    paintLeadingMark(painter, option, QRect(inner.left() - 2, inner.top(), leading, inner.height()),
                     isSelected);

    const QStringList parts = option.text.split(u'\t');
    painter.setFont(option.font);
    painter.setPen(themeColor(textColor(option, isSelected, ThemeColor::text), option.palette));
    constexpr int flags = Qt::AlignVCenter | Qt::TextShowMnemonic | Qt::TextSingleLine;
    painter.drawText(inner.adjusted(leading, 0, 0, 0), flags | Qt::AlignLeft, parts.first());
    if (parts.size() > 1) {
        painter.setPen(
            themeColor(textColor(option, isSelected, ThemeColor::secondaryText), option.palette));
        painter.drawText(inner, flags | Qt::AlignRight, parts.at(1));
    }
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu) {
        const QRectF arrow(inner.right() - arrowColumn / 2.0, inner.top(), arrowColumn / 2.0,
                           inner.height());
        paintChevron(
            painter, arrow, ChevronDirection::right,
            themeColor(textColor(option, isSelected, ThemeColor::secondaryText), option.palette));
    }
    painter.restore();
}

void paintMenuBarItem(QPainter& painter, const QStyleOptionMenuItem& option) {
    painter.fillRect(option.rect, themeColor(ThemeColor::window, option.palette));
    const bool isActive = option.state.testFlag(QStyle::State_Selected);
    if (isActive)
        fillRounded(painter, QRectF(option.rect).adjusted(1, 2, -1, -2), controlRadius - 1,
                    themeColor(ThemeColor::separator, option.palette));
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    painter.setPen(
        themeColor(isEnabled ? ThemeColor::text : ThemeColor::disabledText, option.palette));
    painter.drawText(option.rect,
                     Qt::AlignCenter | Qt::TextShowMnemonic | Qt::TextDontClip | Qt::TextSingleLine,
                     option.text);
}

QSize menuItemSize(const QStyleOptionMenuItem& option, const QSize& contents) {
    if (option.menuItemType == QStyleOptionMenuItem::Separator)
        return {contents.width(), separatorHeight};
    int width = contents.width() + 2 * sideMargin + leadingColumn(option);
    width += option.text.contains(u'\t') ? shortcutGap : 0;
    width += option.menuItemType == QStyleOptionMenuItem::SubMenu ? arrowColumn + sideMargin : 0;
    return {width, std::max(contents.height(), option.fontMetrics.height()) + 2 * verticalMargin};
}

} // namespace stillwick
