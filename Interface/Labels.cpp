#include "Interface/Labels.h"

#include "Interface/Symbol.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace stillwick {

namespace {

class ColorFollower final : public QObject {
public:
    ColorFollower(QWidget* widget, ThemeColor color) : QObject(widget), m_widget(widget) {
        setObjectName(QStringLiteral("textColor"));
        setColor(color);
        widget->installEventFilter(this);
    }

    void setColor(ThemeColor color) {
        m_color = color;
        apply();
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::ApplicationPaletteChange ||
            event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange)
            apply();
        return false;
    }

private:
    /// In the scheme of what it stands in, which may be dark in a light window.
    void apply() {
        QPalette palette;
        const QWidget* const around = m_widget->parentWidget();
        const QPalette theme = around == nullptr ? QApplication::palette() : around->palette();
        for (const auto group : {QPalette::Active, QPalette::Inactive}) {
            palette.setColor(group, QPalette::WindowText, themeColor(m_color, theme));
            palette.setColor(group, QPalette::ButtonText, themeColor(m_color, theme));
        }
        m_widget->setPalette(palette);
    }

    QWidget* m_widget;
    ThemeColor m_color = ThemeColor::text;
};

int widestDigit(const QFontMetrics& metrics) {
    int widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    return widest;
}

} // namespace

void setTextColor(QWidget* widget, ThemeColor color) {
    auto* follower = dynamic_cast<ColorFollower*>(
        widget->findChild<QObject*>(QStringLiteral("textColor"), Qt::FindDirectChildrenOnly));
    if (follower == nullptr)
        new ColorFollower(widget, color); // the widget owns it
    else
        follower->setColor(color);
}

QLabel* makeLabel(const QString& text, TextStyle style, ThemeColor color, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    setTextStyle(label, style);
    if (color != ThemeColor::text)
        setTextColor(label, color);
    return label;
}

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(QStringLiteral("…")), QLabel::sizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRect room = contentsRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, room.width());
    style()->drawItemText(&painter, room, int(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    const bool isCut = fontMetrics().horizontalAdvance(text()) > contentsRect().width();
    setToolTip(isCut ? text() : QString());
}

FixedDigitLabel::FixedDigitLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

int drawFixedDigits(QPainter& painter, const QPointF& start, const QString& text) {
    const QFontMetrics metrics = painter.fontMetrics();
    const int digitCell = widestDigit(metrics);
    int x = 0;
    for (const QChar character : text) {
        const int advance = metrics.horizontalAdvance(character);
        const int cell = character.isDigit() ? digitCell : advance;
        painter.drawText(start + QPointF(x + (cell - advance) / 2.0, 0), QString(character));
        x += cell;
    }
    return x;
}

int FixedDigitLabel::cellWidth(QChar character) const {
    return character.isDigit() ? widestDigit(fontMetrics())
                               : fontMetrics().horizontalAdvance(character);
}

int FixedDigitLabel::textWidth() const {
    int width = 0;
    for (const QChar character : text())
        width += cellWidth(character);
    return width;
}

QSize FixedDigitLabel::sizeHint() const {
    return {textWidth(), fontMetrics().height()};
}

QSize FixedDigitLabel::minimumSizeHint() const {
    return sizeHint();
}

void FixedDigitLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole()));
    const QRect room = contentsRect();
    const int slack = room.width() - textWidth();
    int x = room.left();
    if (alignment().testFlag(Qt::AlignRight))
        x += slack;
    else if (alignment().testFlag(Qt::AlignHCenter))
        x += slack / 2;
    const int baseline =
        room.top() + (room.height() - fontMetrics().height()) / 2 + fontMetrics().ascent();
    drawFixedDigits(painter, QPointF(x, baseline), text());
}

SymbolView::SymbolView(QStringView symbol, int side, ThemeColor color, QWidget* parent)
    : QWidget(parent), m_symbol(symbol.toString()), m_color(color), m_side(side) {
    setFixedSize(side, side);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SymbolView::setSymbol(QStringView symbol, ThemeColor color) {
    m_symbol = symbol.toString();
    m_color = color;
    update();
}

QSize SymbolView::sizeHint() const {
    return {m_side, m_side};
}

void SymbolView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const ThemeColor color = isEnabled() ? m_color : ThemeColor::disabledText;
    symbolIcon(m_symbol, themeColor(color, palette())).paint(&painter, rect());
}

SymbolLabel::SymbolLabel(QStringView symbol, const QString& text, TextStyle style, ThemeColor color,
                         QWidget* parent)
    : QWidget(parent), m_label(makeLabel(text, style, color)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(7);
    constexpr int side = 18;
    layout->addWidget(new SymbolView(symbol, side, color));
    layout->addWidget(m_label);
    layout->addStretch();
}

void SymbolLabel::setText(const QString& text) {
    m_label->setText(text);
}

} // namespace stillwick
