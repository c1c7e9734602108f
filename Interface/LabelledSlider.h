// A slider under its title and its value. Main thread.
#pragma once

#include <QWidget>

#include <functional>

class QLabel;

namespace stillwick {

class ContinuousSlider;

/// The title on the left, the value on the right, in small type; the slider below. The whole shows
/// the help text.
class LabelledSlider final : public QWidget {
    Q_OBJECT

public:
    LabelledSlider(const QString& title, double least, double greatest, const QString& help = {},
                   QWidget* parent = nullptr);
    /// Around a slider of another kind, which it takes over.
    LabelledSlider(const QString& title, ContinuousSlider* slider, QWidget* parent = nullptr);

    [[nodiscard]] double value() const;
    void setValue(double value);
    /// How the value is written; without decimals unless told otherwise.
    void setValueText(std::function<QString(double)> valueText);

    [[nodiscard]] ContinuousSlider& slider() const { return *m_slider; }

signals:
    /// The user chose this value.
    void valueChosen(double value);

private:
    void showValue();

    QLabel* m_value;
    ContinuousSlider* m_slider;
    std::function<QString(double)> m_valueText;
};

} // namespace stillwick
