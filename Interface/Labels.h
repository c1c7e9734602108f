// Labels: text cut to its room, digits that keep their place, symbols. Main thread.
#pragma once

#include "Interface/TextStyle.h"
#include "Interface/Theme.h"

#include <QIcon>
#include <QLabel>
#include <QWidget>

namespace stillwick {

/// A label in that style and colour; it follows the theme.
[[nodiscard]] QLabel* makeLabel(const QString& text, TextStyle style,
                                ThemeColor color = ThemeColor::text, QWidget* parent = nullptr);

/// Gives a widget's text a colour of the theme, now and whenever the theme changes.
void setTextColor(QWidget* widget, ThemeColor color);

/// One line; what does not fit is cut in the middle, and the tool tip has it whole.
class ElidedLabel final : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
};

/// Every digit is as wide as the widest, so that a running time does not tremble.
class FixedDigitLabel final : public QLabel {
    Q_OBJECT

public:
    explicit FixedDigitLabel(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] int cellWidth(QChar character) const;
    [[nodiscard]] int textWidth() const;
};

/// Draws text as FixedDigitLabel does, from `start`, on that base line; gives its width.
int drawFixedDigits(QPainter& painter, const QPointF& start, const QString& text);

/// A symbol by itself, for the eye only.
class SymbolView final : public QWidget {
    Q_OBJECT

public:
    SymbolView(QStringView symbol, int side, ThemeColor color, QWidget* parent = nullptr);

    void setSymbol(QStringView symbol, ThemeColor color);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_symbol;
    ThemeColor m_color;
    int m_side;
};

/// A symbol and a text beside it.
class SymbolLabel final : public QWidget {
    Q_OBJECT

public:
    SymbolLabel(QStringView symbol, const QString& text, TextStyle style = TextStyle::headline,
                ThemeColor color = ThemeColor::text, QWidget* parent = nullptr);

    void setText(const QString& text);
    [[nodiscard]] QString text() const { return m_label->text(); }

private:
    QLabel* m_label;
};

} // namespace stillwick
