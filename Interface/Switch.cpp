#include "Interface/Switch.h"

#include "Interface/StylePainting.h"
#include "Interface/Theme.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace stillwick {

namespace {

constexpr QSize trackSize(34, 20);
constexpr int room = 3; // for the focus ring
constexpr int gap = 12;

} // namespace

Switch::Switch(const QString& text, QWidget* parent) : QCheckBox(text, parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize Switch::sizeHint() const {
    const int width = fontMetrics().horizontalAdvance(text()) + gap + trackSize.width() + room;
    return {width, std::max(fontMetrics().height(), trackSize.height()) + 2 * room};
}

bool Switch::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void Switch::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    const int top = (height() - trackSize.height()) / 2; // on whole pixels
    const QRectF track(width() - trackSize.width() - room, top, trackSize.width(),
                       trackSize.height());
    const double radius = track.height() / 2;
    ThemeColor ground = isChecked() ? ThemeColor::accentFill : ThemeColor::thumb;
    if (!isEnabled())
        ground = ThemeColor::groove;
    fillRounded(painter, track, radius, themeColor(ground, palette()));
    if (showsFocus(option))
        paintFocusRing(painter, track.adjusted(-3, -3, 3, 3), radius + 3, palette());
    QRectF knob(track.left() + 2, track.top() + 2, track.height() - 4, track.height() - 4);
    if (isChecked())
        knob.moveRight(track.right() - 2);
    fillRounded(painter, knob.translated(0, 0.75), knob.height() / 2, QColor(0, 0, 0, 40));
    fillRounded(painter, knob, knob.height() / 2,
                isEnabled() ? QColor(Qt::white) : themeColor(ThemeColor::window, palette()));

    const QRect textRoom(0, 0, int(track.left()) - gap, height());
    painter.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    painter.drawText(textRoom, Qt::AlignVCenter | Qt::TextShowMnemonic | Qt::TextSingleLine,
                     text());
}

} // namespace stillwick
