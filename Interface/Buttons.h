// Buttons with symbols. Main thread.
#pragma once

#include "Interface/Theme.h"

#include <QPushButton>
#include <QStringView>

namespace stillwick {

/// A button that shows a symbol alone; its help text is its tool tip and its accessible name.
class SymbolButton final : public QPushButton {
    Q_OBJECT

public:
    enum class Border { none, thin };

    SymbolButton(QStringView symbol, const QString& help, Border border, QWidget* parent = nullptr);

    void setSymbol(QStringView symbol, ThemeColor color = ThemeColor::text);
    void setHelp(const QString& help);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }
};

/// The button of the step that most will take next: a symbol and a text on the accent colour.
class ProminentButton final : public QPushButton {
    Q_OBJECT

public:
    enum class Size { regular, large };

    ProminentButton(QStringView symbol, const QString& text, Size size = Size::regular,
                    QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

private:
    Size m_size;
};

/// An ordinary button with a symbol before its text.
[[nodiscard]] QPushButton* makeLabelledButton(QStringView symbol, const QString& text,
                                              QWidget* parent = nullptr);

} // namespace stillwick
