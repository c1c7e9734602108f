#include "Interface/ContinuousSlider.h"

#include <QAccessible>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace stillwick {

namespace {

constexpr int positions =
    1'000'000; // finer than any screen, and than a picture in ten hours of film

} // namespace

ContinuousSlider::ContinuousSlider(QWidget* parent, Qt::Orientation orientation)
    : QSlider(orientation, parent) {
    QSlider::setRange(0, positions);
    setStep(m_step);
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QSlider::valueChanged, this, &ContinuousSlider::onPositionChanged);
}

void ContinuousSlider::setBounds(double least, double greatest) {
    Q_ASSERT(least < greatest);
    const double part = m_step / (m_greatest - m_least);
    m_least = least;
    m_greatest = greatest;
    setStep(part * (greatest - least));
    m_value = std::clamp(m_value, least, greatest);
    showRealValue();
}

void ContinuousSlider::setStep(double step) {
    m_step = step;
    const double part = step / (m_greatest - m_least);
    const int steps = std::clamp(int(std::lround(part * positions)), 1, positions);
    setSingleStep(steps);
    setPageStep(std::min(10 * steps, positions));
}

void ContinuousSlider::setValueText(std::function<QString(double)> valueText) {
    m_valueText = std::move(valueText);
}

QString ContinuousSlider::valueText() const {
    return m_valueText ? m_valueText(m_value) : QString();
}

void ContinuousSlider::setRealValue(double value) {
    if (isSliderDown())
        return;
    m_value = std::clamp(value, m_least, m_greatest);
    showRealValue();
}

void ContinuousSlider::chooseRealValue(double value) {
    setRealValue(value);
    emit valueChosen(m_value);
}

void ContinuousSlider::showRealValue() {
    const double part = (m_value - m_least) / (m_greatest - m_least);
    m_isShowing = true;
    setValue(int(std::lround(part * positions)));
    m_isShowing = false;
}

// Who scrolls a panel does not mean the slider that comes under the pointer.
void ContinuousSlider::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void ContinuousSlider::onPositionChanged(int position) {
    if (m_isShowing)
        return;
    // Rounding must not lead out of the bounds.
    m_value = std::min(m_least + (m_greatest - m_least) * position / positions, m_greatest);
    emit valueChosen(m_value);
}

} // namespace stillwick
