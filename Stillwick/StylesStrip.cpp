#include "Stillwick/StylesStrip.h"

#include "Interface/Checkerboard.h"
#include "Interface/ProgressIndicator.h"
#include "Interface/TextStyle.h"
#include "Interface/Theme.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

namespace stillwick {

namespace {

constexpr int boxSide = 60;
constexpr int boxPadding = 2;
constexpr int textSpacing = 4;
constexpr int buttonSpacing = 10;
constexpr double boxRadius = 6;
constexpr double boxSquares = 5;
constexpr double borderWidth = 2;
constexpr int indicatorSide = 16;

} // namespace

StyleButton::StyleButton(FilterStyle style, QWidget* parent)
    : QAbstractButton(parent), m_style(style) {
    setText(displayName(style));
    setToolTip(QStringLiteral("Appliquer le style ") + displayName(style));
    setCheckable(true);
    setAutoExclusive(true); // one of several, also for a reader
    setFocusPolicy(Qt::StrongFocus);
    setTextStyle(this, TextStyle::caption);
}

void StyleButton::setContent(Content content, const QImage& image) {
    if (content == m_content && image.cacheKey() == m_image.cacheKey())
        return;
    m_content = content;
    m_image = image;
    if (m_timer != 0)
        killTimer(std::exchange(m_timer, 0));
    if (content == Content::progress)
        m_timer = startTimer(progressIntervalMilliseconds);
    update();
}

QSize StyleButton::sizeHint() const {
    return {std::max(boxSide, fontMetrics().horizontalAdvance(text()) + 2),
            boxSide + textSpacing + fontMetrics().height()};
}

void StyleButton::timerEvent(QTimerEvent* /*event*/) {
    m_step = (m_step + 1) % progressSpokes;
    update();
}

void StyleButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect box((width() - boxSide) / 2, 0, boxSide, boxSide);
    QPainterPath clip;
    clip.addRoundedRect(box, boxRadius, boxRadius);
    painter.setClipPath(clip);
    paintCheckerboard(painter, box, boxSquares);
    if (m_content == Content::picture) {
        const QRect room = box.adjusted(boxPadding, boxPadding, -boxPadding, -boxPadding);
        QRect fitted(QPoint(), m_image.size().scaled(room.size(), Qt::KeepAspectRatio));
        fitted.moveCenter(room.center());
        painter.drawImage(fitted, m_image);
    } else if (m_content == Content::progress) {
        QRect middle(0, 0, indicatorSide, indicatorSide);
        middle.moveCenter(box.center());
        paintProgressIndicator(painter, middle, m_step, palette());
    }
    painter.setClipping(false);
    const QColor accent = themeColor(ThemeColor::accent, palette());
    if (isChecked() || hasFocus()) {
        QPen pen(accent, borderWidth);
        if (!isChecked())
            pen.setStyle(Qt::DotLine);
        painter.setPen(pen);
        constexpr double inset = borderWidth / 2;
        painter.drawRoundedRect(QRectF(box).adjusted(inset, inset, -inset, -inset), boxRadius,
                                boxRadius);
    }
    painter.setPen(isChecked() ? accent : themeColor(ThemeColor::secondaryText, palette()));
    painter.drawText(QRect(0, boxSide + textSpacing, width(), fontMetrics().height()),
                     Qt::AlignHCenter | Qt::AlignTop, text());
}

StylesStrip::StylesStrip(QWidget* parent) : QWidget(parent) {
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->setSpacing(buttonSpacing);
    auto* const group = new QButtonGroup(this);
    for (const FilterStyle style : allFilterStyles) {
        auto* const button = new StyleButton(style, this);
        group->addButton(button);
        row->addWidget(button);
        m_buttons.append(button);
        // A screen reader toggles, which is no click.
        connect(button, &QAbstractButton::toggled, this, [this, style](bool isChosen) {
            if (isChosen)
                emit styleChosen(style);
        });
    }
    row->addStretch();
}

void StylesStrip::setCurrent(FilterStyle style) {
    button(style).setChecked(true);
}

StyleButton& StylesStrip::button(FilterStyle style) const {
    return **std::find_if(m_buttons.begin(), m_buttons.end(),
                          [style](const StyleButton* each) { return each->style() == style; });
}

} // namespace stillwick
