#include "Interface/DisclosureGroup.h"

#include "Interface/StylePainting.h"
#include "Interface/Symbol.h"
#include "Interface/TextStyle.h"

#include <QAccessible>
#include <QHash>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>
#include <QVBoxLayout>

namespace stillwick {

namespace {

constexpr int arrowColumn = 16;
constexpr int symbolSide = 18;
constexpr int gap = 7;

/// By title, for as long as the program runs.
QHash<QString, bool>& lastStates() {
    static QHash<QString, bool> states;
    return states;
}

} // namespace

DisclosureHeader::DisclosureHeader(QStringView symbol, const QString& title, QWidget* parent)
    : QAbstractButton(parent), m_icon(symbolIcon(symbol)) {
    setText(title);
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setTextStyle(this, TextStyle::headline);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize DisclosureHeader::sizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    constexpr int room = 10;
    return {arrowColumn + symbolSide + gap + metrics.horizontalAdvance(text()) + gap,
            metrics.height() + room};
}

void DisclosureHeader::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    if (showsFocus(option))
        paintFocusRing(painter, QRectF(rect()), controlRadius, palette());
    const QColor arrow =
        themeColor(underMouse() ? ThemeColor::text : ThemeColor::secondaryText, palette());
    paintChevron(painter, QRectF(0, 0, arrowColumn, height()),
                 isChecked() ? ChevronDirection::down : ChevronDirection::right, arrow);
    m_icon.paint(&painter,
                 QRect(arrowColumn + 2, (height() - symbolSide) / 2, symbolSide, symbolSide));
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect().adjusted(arrowColumn + 2 + symbolSide + gap, 0, 0, 0),
                     Qt::AlignVCenter | Qt::TextSingleLine, text());
}

void DisclosureHeader::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Right)
        setChecked(true);
    else if (event->key() == Qt::Key_Left)
        setChecked(false);
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        toggle();
    else
        QAbstractButton::keyPressEvent(event);
}

bool DisclosureHeader::event(QEvent* event) {
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QAbstractButton::event(event);
}

DisclosureGroup::DisclosureGroup(QStringView symbol, const QString& title, QWidget* parent)
    : QWidget(parent), m_header(new DisclosureHeader(symbol, title, this)), m_title(title) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_header);
    setAccessibleName(title);
    m_header->setChecked(lastStates().value(title, false));
    connect(m_header, &QAbstractButton::toggled, this, &DisclosureGroup::onToggled);
}

void DisclosureGroup::setContent(QWidget* content) {
    delete m_content;
    m_content = content;
    layout()->addWidget(content);
    content->setVisible(isExpanded());
}

void DisclosureGroup::setExpanded(bool isExpanded) {
    m_header->setChecked(isExpanded);
}

void DisclosureGroup::onToggled(bool isExpanded) {
    lastStates()[m_title] = isExpanded;
    if (m_content != nullptr)
        m_content->setVisible(isExpanded);
    QAccessible::State changed;
    changed.expanded = true;
    QAccessibleStateChangeEvent event(m_header, changed);
    QAccessible::updateAccessibility(&event);
    emit expandedChanged(isExpanded);
}

} // namespace stillwick
