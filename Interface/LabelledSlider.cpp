#include "Interface/LabelledSlider.h"

#include "Interface/ContinuousSlider.h"
#include "Interface/Labels.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace stillwick {

LabelledSlider::LabelledSlider(const QString& title, ContinuousSlider* slider, QWidget* parent)
    : QWidget(parent), m_value(new FixedDigitLabel), m_slider(slider),
      m_valueText([](double value) { return QString::number(value, 'f', 0); }) {
    setTextStyle(m_value, TextStyle::caption);
    setTextColor(m_value, ThemeColor::secondaryText);
    auto* titleLabel = makeLabel(title, TextStyle::caption);
    titleLabel->setBuddy(m_slider);
    m_slider->setAccessibleName(title);

    auto* line = new QHBoxLayout;
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(titleLabel);
    line->addStretch();
    line->addWidget(m_value);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addLayout(line);
    column->addWidget(m_slider);

    connect(m_slider, &ContinuousSlider::valueChosen, this, [this](double value) {
        showValue();
        emit valueChosen(value);
    });
    showValue();
}

LabelledSlider::LabelledSlider(const QString& title, double least, double greatest,
                               const QString& help, QWidget* parent)
    : LabelledSlider(title, new ContinuousSlider, parent) {
    m_slider->setBounds(least, greatest);
    m_slider->setAccessibleDescription(help);
    setToolTip(help);
    showValue();
}

double LabelledSlider::value() const {
    return m_slider->realValue();
}

void LabelledSlider::setValue(double value) {
    m_slider->setRealValue(value);
    showValue();
}

void LabelledSlider::setValueText(std::function<QString(double)> valueText) {
    m_valueText = std::move(valueText);
    m_slider->setValueText(m_valueText);
    showValue();
}

void LabelledSlider::showValue() {
    m_value->setText(m_valueText(m_slider->realValue()));
}

} // namespace stillwick
