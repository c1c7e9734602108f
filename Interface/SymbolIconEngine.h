// How a symbol becomes pixels. Main thread.
#pragma once

#include "Interface/Theme.h"

#include <QIconEngine>
#include <QString>

#include <variant>

namespace stillwick {

/// Draws one symbol, at any size, fitted to the grid of the device's pixels.
class SymbolIconEngine final : public QIconEngine {
public:
    using Tint = std::variant<ThemeColor, QColor>;

    SymbolIconEngine(QString name, Tint tint);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override;
    QString key() const override;
    QIconEngine* clone() const override;
    QString iconName() override;
    bool isNull() override;

private:
    [[nodiscard]] QColor colorFor(QIcon::Mode mode) const;
    [[nodiscard]] QPixmap rendered(const QSize& pixels, const QColor& color) const;

    QString m_name;
    Tint m_tint;
};

/// Where a symbol's drawing is kept.
[[nodiscard]] QString symbolPath(QStringView name);

} // namespace stillwick
