// A colour that can be changed. Main thread.
#pragma once

#include <QColor>
#include <QPushButton>

namespace stillwick {

class ColorPicker;
class Popover;

/// Shows a colour, opacity included; pressed, it opens a picker beside itself.
class ColorWell final : public QPushButton {
    Q_OBJECT

public:
    /// `label` is not shown; a screen reader says it, and the picker bears it.
    explicit ColorWell(const QString& label, QWidget* parent = nullptr);

    [[nodiscard]] QColor color() const { return m_color; }
    /// *Shape*: any colour; shown and given back as sRGB.
    void setColor(const QColor& color);

    [[nodiscard]] Popover& popover() const { return *m_popover; }
    [[nodiscard]] ColorPicker& picker() const { return *m_picker; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

signals:
    /// The user chose this colour.
    void colorChosen(const QColor& color);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void take(const QColor& color);

    QColor m_color = Qt::white;
    Popover* m_popover;
    ColorPicker* m_picker;
};

} // namespace stillwick
