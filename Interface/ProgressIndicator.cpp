#include "Interface/ProgressIndicator.h"

#include "Interface/Theme.h"

#include <QPainter>

#include <algorithm>

namespace stillwick {

void paintProgressIndicator(QPainter& painter, const QRectF& rect, int step,
                            const QPalette& palette) {
    const double radius = std::min(rect.width(), rect.height()) / 2;
    QColor color = themeColor(ThemeColor::secondaryText, palette);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center());
    for (int spoke = 0; spoke < progressSpokes; ++spoke) {
        const int age = ((step - spoke) % progressSpokes + progressSpokes) % progressSpokes;
        color.setAlphaF(1.0F - 0.11F * float(age));
        painter.setPen(QPen(color, radius * 0.22, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(spoke * 360.0 / progressSpokes);
        painter.drawLine(QPointF(0, -radius * 0.48), QPointF(0, -radius * 0.85));
        painter.restore();
    }
    painter.restore();
}

ProgressIndicator::ProgressIndicator(QWidget* parent, int side) : QWidget(parent), m_side(side) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(QStringLiteral("En cours"));
    m_timer.setInterval(progressIntervalMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % progressSpokes;
        update();
    });
}

void ProgressIndicator::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paintProgressIndicator(painter, QRectF(rect()), m_step, palette());
}

void ProgressIndicator::showEvent(QShowEvent* /*event*/) {
    m_timer.start();
}

void ProgressIndicator::hideEvent(QHideEvent* /*event*/) {
    m_timer.stop();
}

} // namespace stillwick
