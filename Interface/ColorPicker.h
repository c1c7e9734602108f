// Choosing a colour. Main thread.
#pragma once

#include "Interface/ContinuousSlider.h"

#include <QColor>
#include <QPushButton>
#include <QWidget>

#include <array>

class QLineEdit;

namespace stillwick {

/// A slider whose groove shows what each of its values gives.
class ColorSlider final : public ContinuousSlider {
    Q_OBJECT

public:
    explicit ColorSlider(QWidget* parent = nullptr);

    /// From the least value to the greatest, evenly spaced.
    void setStops(const QList<QColor>& stops);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QList<QColor> m_stops;
};

/// One colour, as a button.
class ColorSwatch final : public QPushButton {
    Q_OBJECT

public:
    ColorSwatch(const QColor& color, const QString& name, QWidget* parent = nullptr);

    void setCurrent(bool isCurrent);
    [[nodiscard]] QColor color() const { return m_color; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_color;
    bool m_isCurrent = false;
};

/// Swatches, sliders for hue, saturation, brightness and opacity, and the colour's hexadecimal
/// code. *Shape*: sRGB with straight alpha.
class ColorPicker final : public QWidget {
    Q_OBJECT

public:
    explicit ColorPicker(QWidget* parent = nullptr);

    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor& color);

signals:
    /// The user chose this colour.
    void colorChosen(const QColor& color);

private:
    enum Channel { hue, saturation, brightness, opacity, channelCount };

    QWidget* makeSwatches();
    QWidget* makeCodeLine();
    void onSliderMoved();
    void onCodeEdited(const QString& code);
    void showCode(const QString& code);
    void choose(const QColor& color);
    void showColor();
    void showStops();

    QColor m_color = Qt::white;
    std::array<ColorSlider*, channelCount> m_sliders{};
    QList<ColorSwatch*> m_swatches;
    QLineEdit* m_code = nullptr;
};

/// "#RRGGBB", or "#RRGGBBAA" where the colour is not opaque.
[[nodiscard]] QString colorCode(const QColor& color);
/// The colour of such a code, with or without its "#", three and four digits too; invalid for
/// anything else.
[[nodiscard]] QColor colorOfCode(QString code);

/// Paints the colour over a checkerboard, so that its opacity shows.
void paintColorSample(QPainter& painter, const QRectF& rect, double radius, const QColor& color);

} // namespace stillwick
