#include "Interface/InterfaceStyle.h"

#include "Interface/StylePainting.h"
#include "Interface/Symbol.h"
#include "Interface/Theme.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTextEdit>

#include <algorithm>
#include <optional>

namespace stillwick {

namespace {

constexpr int sliderHandle = 16;
constexpr int sliderRoom = 22; // the handle and its focus ring
constexpr int scrollBarExtent = 12;
constexpr int shortestThumb = 28;

bool isTextArea(const QWidget* widget) {
    return qobject_cast<const QTextEdit*>(widget) != nullptr ||
           qobject_cast<const QPlainTextEdit*>(widget) != nullptr;
}

std::optional<ChevronDirection> chevronOf(QStyle::PrimitiveElement element) {
    switch (element) {
    case QStyle::PE_IndicatorArrowUp:
    case QStyle::PE_IndicatorSpinUp:
        return ChevronDirection::up;
    case QStyle::PE_IndicatorArrowDown:
    case QStyle::PE_IndicatorSpinDown:
        return ChevronDirection::down;
    case QStyle::PE_IndicatorArrowLeft:
        return ChevronDirection::left;
    case QStyle::PE_IndicatorArrowRight:
        return ChevronDirection::right;
    default:
        return std::nullopt;
    }
}

void paintLine(QPainter& painter, const QStyleOption& option, Qt::Orientation orientation) {
    QRect line = option.rect;
    if (orientation == Qt::Horizontal)
        line = QRect(line.left(), line.center().y(), line.width(), 1);
    else
        line = QRect(line.center().x(), line.top(), 1, line.height());
    painter.fillRect(line, themeColor(ThemeColor::separator, option.palette));
}

} // namespace

InterfaceStyle::InterfaceStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

void InterfaceStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    // The frame of a text area shows the focus, but nothing repaints it when the focus moves.
    if (isTextArea(widget))
        widget->installEventFilter(this);
}

bool InterfaceStyle::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        if (auto* widget = qobject_cast<QWidget*>(watched); isTextArea(widget))
            widget->update();
    }
    return QProxyStyle::eventFilter(watched, event);
}

bool InterfaceStyle::drawPanel(PrimitiveElement element, const QStyleOption& option,
                               QPainter& painter, const QWidget* widget) const {
    switch (element) {
    case PE_PanelLineEdit:
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(&option);
            frame != nullptr && (frame->lineWidth > 0 || option.state.testFlag(State_HasFocus)))
            paintField(painter, option);
        return true;
    case PE_FrameLineEdit:
    case PE_FrameDefaultButton:
    case PE_PanelMenuBar:
    case PE_FrameStatusBarItem:
    case PE_FrameTabBarBase:
        return true;
    case PE_Frame:
        if (!isTextArea(widget))
            return false;
        paintField(painter, option);
        return true;
    case PE_PanelMenu:
        painter.fillRect(option.rect, themeColor(ThemeColor::fieldBackground, option.palette));
        return true;
    case PE_FrameMenu:
        strokeRounded(painter, QRectF(option.rect), 0,
                      themeColor(ThemeColor::controlBorder, option.palette));
        return true;
    case PE_PanelTipLabel:
        painter.fillRect(option.rect, option.palette.color(QPalette::ToolTipBase));
        strokeRounded(painter, QRectF(option.rect), 0,
                      themeColor(ThemeColor::controlBorder, option.palette));
        return true;
    case PE_IndicatorToolBarSeparator:
        paintLine(painter, option,
                  option.state.testFlag(State_Horizontal) ? Qt::Vertical : Qt::Horizontal);
        return true;
    default:
        return false;
    }
}

void InterfaceStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const {
    if (const auto chevron = chevronOf(element)) {
        const bool isEnabled = option->state.testFlag(State_Enabled);
        paintChevron(*painter, QRectF(option->rect), *chevron,
                     themeColor(isEnabled ? ThemeColor::secondaryText : ThemeColor::disabledText,
                                option->palette));
        return;
    }
    if (drawPanel(element, *option, *painter, widget))
        return;
    switch (element) {
    case PE_PanelButtonCommand:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option))
            paintPushButtonPanel(*painter, *button, widget);
        return;
    case PE_PanelButtonTool:
        paintToolButtonPanel(*painter, *option);
        return;
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        paintCheckBox(*painter, *option);
        return;
    case PE_IndicatorRadioButton:
        paintRadioButton(*painter, *option);
        return;
    case PE_FrameFocusRect: // buttons and indicators frame themselves
        if (qstyleoption_cast<const QStyleOptionFocusRect*>(option) != nullptr &&
            qobject_cast<const QAbstractScrollArea*>(widget) != nullptr)
            paintFocusRing(*painter, QRectF(option->rect), controlRadius, option->palette);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void InterfaceStyle::drawPushButtonLabel(const QStyleOptionButton& option, QPainter& painter,
                                         const QWidget* widget) const {
    QStyleOptionButton label = option;
    if (isProminent(option, widget) && option.state.testFlag(State_Enabled))
        label.palette.setColor(QPalette::ButtonText,
                               themeColor(ThemeColor::onAccent, option.palette));
    QProxyStyle::drawControl(CE_PushButtonLabel, &label, &painter, widget);
}

void InterfaceStyle::drawControl(ControlElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const {
    switch (element) {
    case CE_PushButtonBevel:
        proxy()->drawPrimitive(PE_PanelButtonCommand, option, painter, widget);
        return;
    case CE_PushButtonLabel:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option))
            drawPushButtonLabel(*button, *painter, widget);
        return;
    case CE_ProgressBar:
        if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option))
            paintProgressBar(*painter, *bar);
        return;
    case CE_MenuItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option))
            paintMenuItem(*painter, *item);
        return;
    case CE_MenuBarItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option))
            paintMenuBarItem(*painter, *item);
        return;
    case CE_MenuBarEmptyArea:
    case CE_ToolBar:
        painter->fillRect(option->rect, themeColor(ThemeColor::window, option->palette));
        return;
    case CE_ShapedFrame:
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            frame != nullptr &&
            (frame->frameShape == QFrame::HLine || frame->frameShape == QFrame::VLine)) {
            paintLine(*painter, *option,
                      frame->frameShape == QFrame::HLine ? Qt::Horizontal : Qt::Vertical);
            return;
        }
        break;
    default:
        break;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void InterfaceStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                        QPainter* painter, const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_Slider && slider != nullptr)
        paintSlider(*painter, *slider, QRectF(sliderPart(*slider, SC_SliderHandle, widget)));
    else if (control == CC_ScrollBar && slider != nullptr)
        paintScrollBar(*painter, *slider, QRectF(scrollBarPart(*slider, SC_ScrollBarSlider)),
                       widget);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect InterfaceStyle::sliderPart(const QStyleOptionSlider& option, SubControl part,
                                 const QWidget* /*widget*/) const {
    if (part == SC_SliderGroove)
        return option.rect;
    if (part != SC_SliderHandle)
        return {};
    // Room for the ring on both ends.
    constexpr int ring = (sliderRoom - sliderHandle) / 2;
    const bool isHorizontal = option.orientation == Qt::Horizontal;
    const QRect room = option.rect.adjusted(isHorizontal ? ring : 0, isHorizontal ? 0 : ring,
                                            isHorizontal ? -ring : 0, isHorizontal ? 0 : -ring);
    const int span = (isHorizontal ? room.width() : room.height()) - sliderHandle;
    const int offset = sliderPositionFromValue(option.minimum, option.maximum,
                                               option.sliderPosition, span, option.upsideDown);
    if (isHorizontal)
        return {room.left() + offset, room.top() + (room.height() - sliderHandle) / 2, sliderHandle,
                sliderHandle};
    return {room.left() + (room.width() - sliderHandle) / 2, room.top() + offset, sliderHandle,
            sliderHandle};
}

QRect InterfaceStyle::scrollBarPart(const QStyleOptionSlider& option, SubControl part) const {
    const QRect room = option.rect.adjusted(2, 2, -2, -2);
    const bool isHorizontal = option.orientation == Qt::Horizontal;
    const int length = isHorizontal ? room.width() : room.height();
    const qint64 range = qint64(option.maximum) - option.minimum;
    int thumb = length;
    if (range > 0)
        thumb = int(qint64(option.pageStep) * length / (range + option.pageStep));
    thumb = std::clamp(thumb, std::min(shortestThumb, length), length);
    const int start = sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition,
                                              length - thumb, option.upsideDown);
    const auto along = [&](int from, int extent) {
        return isHorizontal ? QRect(room.left() + from, room.top(), extent, room.height())
                            : QRect(room.left(), room.top() + from, room.width(), extent);
    };
    switch (part) {
    case SC_ScrollBarGroove:
        return option.rect;
    case SC_ScrollBarSlider:
        return along(start, thumb);
    case SC_ScrollBarSubPage:
        return along(0, start);
    case SC_ScrollBarAddPage:
        return along(start + thumb, length - start - thumb);
    default:
        return {}; // no arrows
    }
}

QRect InterfaceStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                     SubControl subControl, const QWidget* widget) const {
    if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
        if (control == CC_Slider)
            return sliderPart(*slider, subControl, widget);
        if (control == CC_ScrollBar)
            return visualRect(slider->direction, slider->rect, scrollBarPart(*slider, subControl));
    }
    return QProxyStyle::subControlRect(control, option, subControl, widget);
}

QRect InterfaceStyle::subElementRect(SubElement element, const QStyleOption* option,
                                     const QWidget* widget) const {
    const QRect rect = QProxyStyle::subElementRect(element, option, widget);
    constexpr int textMargin = 5;
    return element == SE_LineEditContents ? rect.adjusted(textMargin, 0, -textMargin, 0) : rect;
}

QSize InterfaceStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                       const QSize& size, const QWidget* widget) const {
    constexpr int controlHeight = 30;
    if (type == CT_MenuItem) {
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option))
            return menuItemSize(*item, size);
    }
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_PushButton) {
        result = {size.width() + 28, std::max(size.height() + 10, controlHeight)};
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        constexpr int shortest = 72;
        if (button != nullptr && !button->text.isEmpty())
            result.setWidth(std::max(result.width(), shortest));
    } else if (type == CT_LineEdit || type == CT_ComboBox || type == CT_SpinBox) {
        result.setHeight(std::max(result.height(), controlHeight));
    } else if (type == CT_MenuBarItem) {
        result = size + QSize(20, 10);
    }
    return result;
}

int InterfaceStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                                const QWidget* widget) const {
    switch (metric) {
    case PM_SliderThickness:
        return sliderRoom;
    case PM_SliderControlThickness:
    case PM_SliderLength:
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
    case PM_ButtonIconSize:
    case PM_SmallIconSize:
        return sliderHandle;
    case PM_ToolBarIconSize:
        return 20;
    case PM_ScrollBarExtent:
        return scrollBarExtent;
    case PM_ScrollBarSliderMin:
        return shortestThumb;
    case PM_ScrollView_ScrollBarSpacing:
    case PM_ScrollView_ScrollBarOverlap:
        return 0;
    case PM_DefaultFrameWidth:
        return isTextArea(widget) ? 3 : QProxyStyle::pixelMetric(metric, option, widget);
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return 4;
    case PM_MenuBarHMargin:
        return 6;
    case PM_MenuBarVMargin:
        return 2;
    case PM_MenuBarPanelWidth:
    case PM_ToolBarFrameWidth:
        return 0;
    case PM_ToolTipLabelFrameWidth:
        return 6;
    case PM_SplitterWidth:
        return 9;
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return 8;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int InterfaceStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                              QStyleHintReturn* returnData) const {
    switch (hint) {
    case SH_Slider_AbsoluteSetButtons:
    case SH_ScrollBar_LeftClickAbsolutePosition:
        return Qt::LeftButton; // for the scroll bar any value but 0
    case SH_Slider_PageSetButtons:
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_Menu_FlashTriggeredItem:
    case SH_ComboBox_Popup:
        return 0;
    case SH_ItemView_ShowDecorationSelected:
        return 1;
    case SH_ToolTipLabel_Opacity:
        return 255;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

QIcon InterfaceStyle::standardIcon(StandardPixmap icon, const QStyleOption* option,
                                   const QWidget* widget) const {
    constexpr QStringView warningSign = u"exclamationmark.triangle.fill";
    switch (icon) {
    case SP_MessageBoxWarning:
        return symbolIcon(warningSign, ThemeColor::warning);
    case SP_MessageBoxCritical:
        return symbolIcon(warningSign, ThemeColor::destructive);
    case SP_DirIcon:
    case SP_DirClosedIcon:
    case SP_DirOpenIcon:
        return symbolIcon(u"folder", ThemeColor::secondaryText);
    default:
        return QProxyStyle::standardIcon(icon, option, widget);
    }
}

} // namespace stillwick
