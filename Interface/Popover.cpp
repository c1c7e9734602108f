#include "Interface/Popover.h"

#include "Interface/Theme.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#include <algorithm>

namespace stillwick {

namespace {

constexpr int shadowWidth = 12;
constexpr int arrowHeight = 9;
constexpr int arrowHalfWidth = 10;
constexpr int padding = 14;
constexpr double radius = 10;

QPainterPath outline(const QRectF& body, int arrowX, bool pointsUp) {
    QPainterPath path;
    path.addRoundedRect(body, radius, radius);
    const double edge = pointsUp ? body.top() : body.bottom();
    const double tip = pointsUp ? edge - arrowHeight : edge + arrowHeight;
    const double inner = pointsUp ? edge + 1 : edge - 1;
    QPainterPath arrow(QPointF(arrowX - arrowHalfWidth, inner));
    arrow.lineTo(arrowX - arrowHalfWidth, edge);
    arrow.cubicTo(arrowX - 4, edge, arrowX - 2, tip, arrowX, tip);
    arrow.cubicTo(arrowX + 2, tip, arrowX + 4, edge, arrowX + arrowHalfWidth, edge);
    arrow.lineTo(arrowX + arrowHalfWidth, inner);
    arrow.closeSubpath();
    return path.united(arrow);
}

} // namespace

Popover::Popover(QWidget* anchor, const QString& title) : QWidget(anchor), m_anchor(anchor) {
    setTitle(title);
    setVisible(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(shadowWidth + padding, shadowWidth + arrowHeight + padding,
                               shadowWidth + padding, shadowWidth + arrowHeight + padding);
    // While it is open the window is its parent.
    connect(anchor, &QObject::destroyed, this, &QObject::deleteLater);
}

Popover::~Popover() {
    if (m_isOpen)
        qApp->removeEventFilter(this);
}

void Popover::setContent(QWidget* content) {
    layout()->addWidget(content);
}

void Popover::setTitle(const QString& title) {
    setAccessibleName(title);
}

void Popover::open() {
    if (m_isOpen || m_anchor.isNull())
        return;
    m_isOpen = true;
    m_focusBefore = QApplication::focusWidget();
    setParent(m_anchor->window());
    place();
    show();
    raise();
    qApp->installEventFilter(this);
    if (const QList<QWidget*> widgets = focusableWidgets(); !widgets.isEmpty())
        widgets.first()->setFocus(Qt::PopupFocusReason);
    emit openChanged(true);
}

void Popover::dismiss() {
    if (!m_isOpen)
        return;
    m_isOpen = false;
    qApp->removeEventFilter(this);
    const bool hadFocus =
        QApplication::focusWidget() != nullptr &&
        (QApplication::focusWidget() == this || isAncestorOf(QApplication::focusWidget()));
    hide();
    if (!m_anchor.isNull())
        setParent(m_anchor);
    if (hadFocus) {
        QWidget* next = m_focusBefore.isNull() ? m_anchor.data() : m_focusBefore.data();
        if (next != nullptr)
            next->setFocus(Qt::PopupFocusReason);
    }
    emit openChanged(false);
}

void Popover::toggle() {
    if (m_isOpen)
        dismiss();
    else
        open();
}

void Popover::place() {
    adjustSize();
    const QRect room = parentWidget()->rect();
    const QRect anchor(m_anchor->mapTo(parentWidget(), QPoint(0, 0)), m_anchor->size());
    const int below = anchor.bottom() + 1 - shadowWidth;
    const int above = anchor.top() - height() + shadowWidth;
    m_pointsUp = below + height() <= room.bottom() || above < room.top();
    const int wantedX = anchor.center().x() - width() / 2;
    const int x = std::clamp(wantedX, room.left(), std::max(room.left(), room.right() - width()));
    const int y = std::clamp(m_pointsUp ? below : above, room.top() - shadowWidth,
                             std::max(room.top(), room.bottom() + shadowWidth - height()));
    move(x, y);
    constexpr int leastDistance = shadowWidth + int(radius) + arrowHalfWidth;
    m_arrowX = std::clamp(anchor.center().x() - x, leastDistance,
                          std::max(leastDistance, width() - leastDistance));
    update();
}

bool Popover::isOutside(const QWidget* widget) const {
    return widget->window() == window() && widget != this && !isAncestorOf(widget) &&
           widget != m_anchor && !m_anchor->isAncestorOf(widget);
}

bool Popover::eventFilter(QObject* watched, QEvent* event) {
    const auto* widget = qobject_cast<QWidget*>(watched);
    if (!m_isOpen || widget == nullptr || m_anchor.isNull())
        return false;
    const bool holdsAnchor = widget == m_anchor || widget->isAncestorOf(m_anchor);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (isOutside(widget))
            dismiss();
        break;
    case QEvent::Move:
    case QEvent::Resize:
        if (holdsAnchor && m_anchor->isVisible())
            place();
        break;
    case QEvent::Hide:
        if (holdsAnchor)
            dismiss();
        break;
    case QEvent::LayoutRequest: // what it shows has grown
        if (widget == this)
            place();
        break;
    default:
        break;
    }
    return false;
}

void Popover::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF body = QRectF(rect()).adjusted(shadowWidth, shadowWidth + arrowHeight,
                                                -shadowWidth, -shadowWidth - arrowHeight);
    const QPainterPath path = outline(body, m_arrowX, m_pointsUp);
    const bool isDark = schemeOf(palette()) == ColorScheme::dark;
    painter.setBrush(Qt::NoBrush);
    for (int width = shadowWidth; width >= 1; --width) { // one upon the other they fade outwards
        QColor shadow(0, 0, 0, isDark ? 12 : 5);
        painter.setPen(QPen(shadow, 2 * width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(path.translated(0, 2));
    }
    painter.setPen(QPen(themeColor(ThemeColor::controlBorder, palette()), 1));
    painter.setBrush(
        themeColor(isDark ? ThemeColor::controlPressed : ThemeColor::window, palette()));
    painter.drawPath(path);
}

void Popover::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        dismiss();
    event->accept();
}

void Popover::mousePressEvent(QMouseEvent* event) {
    event->accept(); // what is below is not meant
}

QList<QWidget*> Popover::focusableWidgets() const {
    QList<QWidget*> widgets;
    for (QWidget* widget = nextInFocusChain(); widget != nullptr && widget != this;
         widget = widget->nextInFocusChain()) {
        if (isAncestorOf(widget) && widget->isVisibleTo(this) && widget->isEnabled() &&
            (widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus)
            widgets.push_back(widget);
    }
    return widgets;
}

bool Popover::focusNextPrevChild(bool next) {
    const QList<QWidget*> widgets = focusableWidgets();
    if (widgets.isEmpty())
        return true;
    const auto current = widgets.indexOf(QApplication::focusWidget());
    const auto count = widgets.size();
    const auto wanted = current < 0 ? 0 : (current + (next ? 1 : count - 1)) % count;
    widgets.at(wanted)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

} // namespace stillwick
