#include "Interface/Buttons.h"

#include "Interface/Symbol.h"

namespace stillwick {

namespace {

/// A space before: the toolkit sets symbol and text too close.
QString spaced(const QString& text) {
    return u' ' + text;
}

} // namespace

SymbolButton::SymbolButton(QStringView symbol, const QString& help, Border border, QWidget* parent)
    : QPushButton(parent) {
    setFlat(border == Border::none);
    setAutoDefault(false);
    setSymbol(symbol);
    setHelp(help);
    setIconSize(border == Border::none ? QSize(18, 18) : QSize(20, 20));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolButton::setSymbol(QStringView symbol, ThemeColor color) {
    setIcon(symbolIcon(symbol, color));
}

void SymbolButton::setHelp(const QString& help) {
    setToolTip(help);
    setAccessibleName(help);
}

QSize SymbolButton::sizeHint() const {
    constexpr int room = 5;
    const QSize icon = iconSize();
    return isFlat() ? icon + QSize(2 * room, 2 * room) : icon + QSize(4 * room, 2 * room);
}

ProminentButton::ProminentButton(QStringView symbol, const QString& text, Size size,
                                 QWidget* parent)
    : QPushButton(symbolIcon(symbol, ThemeColor::onAccent), spaced(text), parent), m_size(size) {
    setProperty("isProminent", true);
    setAutoDefault(false);
    setAccessibleName(text);
    setIconSize(QSize(18, 18));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize ProminentButton::sizeHint() const {
    const QSize regular = QPushButton::sizeHint();
    return m_size == Size::regular ? regular : regular + QSize(16, 8);
}

QPushButton* makeLabelledButton(QStringView symbol, const QString& text, QWidget* parent) {
    auto* button = new QPushButton(symbolIcon(symbol), spaced(text), parent);
    button->setAutoDefault(false);
    button->setAccessibleName(text);
    button->setIconSize(QSize(18, 18));
    return button;
}

} // namespace stillwick
