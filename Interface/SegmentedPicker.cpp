#include "Interface/SegmentedPicker.h"

#include "Interface/StylePainting.h"
#include "Interface/Symbol.h"
#include "Interface/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOption>

namespace stillwick {

namespace {

constexpr int border = 2;

} // namespace

Segment::Segment(QStringView symbol, const QString& name, QWidget* parent) : QRadioButton(parent) {
    setIcon(symbolIcon(symbol));
    setIconSize(QSize(18, 18));
    setToolTip(name);
    setAccessibleName(name);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Segment::sizeHint() const {
    return {36, 26};
}

bool Segment::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void Segment::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    const QRectF ground(rect());
    const double radius = controlRadius - border + 1;
    if (isChecked()) {
        const bool isDark = schemeOf(palette()) == ColorScheme::dark;
        fillRounded(painter, ground.translated(0, 0.5), radius, QColor(0, 0, 0, 30));
        fillRounded(painter, ground, radius,
                    isDark ? themeColor(ThemeColor::thumb, palette())
                           : themeColor(ThemeColor::fieldBackground, palette()));
    } else if (isEnabled() && underMouse()) {
        fillRounded(painter, ground, radius, themeColor(ThemeColor::controlBorder, palette()));
    }
    if (showsFocus(option))
        paintFocusRing(painter, ground, radius, palette());
    QRect square(QPoint(0, 0), iconSize());
    square.moveCenter(rect().center());
    icon().paint(&painter, square, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
}

SegmentedPicker::SegmentedPicker(const QString& label, QWidget* parent)
    : QWidget(parent), m_group(new QButtonGroup(this)) {
    setAccessibleName(label);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(border, border, border, border);
    layout->setSpacing(1);
    connect(m_group, &QButtonGroup::idToggled, this, [this](int index, bool isChecked) {
        if (isChecked)
            emit indexChosen(index);
    });
}

void SegmentedPicker::addSegment(QStringView symbol, const QString& name) {
    const int index = int(m_group->buttons().size());
    auto* segment = new Segment(symbol, name, this);
    layout()->addWidget(segment);
    m_group->addButton(segment, index);
    if (index == 0)
        setCurrentIndex(0);
}

void SegmentedPicker::setCurrentIndex(int index) {
    const QSignalBlocker isOurs(m_group);
    if (QAbstractButton* segment = m_group->button(index))
        segment->setChecked(true);
}

void SegmentedPicker::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    fillRounded(painter, QRectF(rect()), controlRadius + 1,
                themeColor(ThemeColor::separator, palette()));
}

} // namespace stillwick
