#include "Interface/ColorWell.h"

#include "Interface/ColorPicker.h"
#include "Interface/Popover.h"
#include "Interface/StylePainting.h"
#include "Interface/Theme.h"

#include <QPainter>
#include <QStyleOptionButton>

#include <cmath>

namespace stillwick {

ColorWell::ColorWell(const QString& label, QWidget* parent)
    : QPushButton(parent), m_popover(new Popover(this, label)), m_picker(new ColorPicker) {
    setAutoDefault(false);
    setAccessibleName(label);
    setToolTip(label);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_popover->setContent(m_picker);
    connect(this, &QPushButton::clicked, m_popover, &Popover::toggle);
    connect(m_picker, &ColorPicker::colorChosen, this, [this](const QColor& color) {
        take(color);
        emit colorChosen(m_color);
    });
    setColor(m_color);
}

QSize ColorWell::sizeHint() const {
    return {44, 28};
}

void ColorWell::setColor(const QColor& color) {
    take(color.toRgb());
    m_picker->setColor(m_color);
}

void ColorWell::take(const QColor& color) {
    m_color = color;
    setAccessibleDescription(QStringLiteral("%1, opacité %2 %")
                                 .arg(color.name(QColor::HexRgb).toUpper())
                                 .arg(std::lround(color.alphaF() * 100)));
    update();
}

void ColorWell::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    paintPushButtonPanel(painter, option, this);
    const QRectF sample = QRectF(rect()).adjusted(5, 5, -5, -5);
    painter.setOpacity(isEnabled() ? 1 : 0.4);
    paintColorSample(painter, sample, controlRadius - 3, m_color);
    strokeRounded(painter, sample, controlRadius - 3,
                  schemeOf(palette()) == ColorScheme::dark ? QColor(255, 255, 255, 50)
                                                           : QColor(0, 0, 0, 46));
}

} // namespace stillwick
