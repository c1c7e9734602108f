// A slider over real numbers. Main thread.
#pragma once

#include <QSlider>
#include <QString>

#include <functional>

namespace stillwick {

/// Runs between two real numbers. A press anywhere on it moves the handle there; arrows step by a
/// hundredth of the range unless told otherwise. Screen readers hear and set the real value.
class ContinuousSlider : public QSlider {
    Q_OBJECT

public:
    explicit ContinuousSlider(QWidget* parent = nullptr,
                              Qt::Orientation orientation = Qt::Horizontal);

    /// `least` < `greatest`; the value is brought between them.
    void setBounds(double least, double greatest);
    /// How far an arrow key goes; the page keys go ten times as far.
    void setStep(double step);
    /// How a screen reader is told the value, beside the number.
    void setValueText(std::function<QString(double)> valueText);

    [[nodiscard]] double least() const { return m_least; }
    [[nodiscard]] double greatest() const { return m_greatest; }
    [[nodiscard]] double step() const { return m_step; }
    [[nodiscard]] double realValue() const { return m_value; }
    [[nodiscard]] QString valueText() const;

    /// Shows the value; without effect while the user holds the handle. No signal.
    void setRealValue(double value);
    /// Sets the value as the user would.
    void chooseRealValue(double value);

signals:
    /// The user chose this value.
    void valueChosen(double value);

protected:
    void wheelEvent(QWheelEvent* event) override;

private:
    void onPositionChanged(int position);
    void showRealValue();

    double m_least = 0;
    double m_greatest = 1;
    double m_step = 0.01;
    double m_value = 0;
    bool m_isShowing = false;
    std::function<QString(double)> m_valueText;
};

} // namespace stillwick
