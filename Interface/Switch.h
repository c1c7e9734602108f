// On or off. Main thread.
#pragma once

#include <QCheckBox>

namespace stillwick {

/// A check box that looks like a switch, its text on the left, the switch on the right.
class Switch final : public QCheckBox {
    Q_OBJECT

public:
    explicit Switch(const QString& text, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& position) const override;
};

} // namespace stillwick
