// How the border of a cut-out is finished. Plain values, any thread.
#pragma once

#include <QColor>
#include <QString>

namespace stillwick {

/// The edge settings as the renderer takes them.
/// *Units*: pixels of the cut-out; colour components and opacity in sRGB, from 0 to 1.
struct EdgeParams {
    double shrink = 0;
    double feather = 0;
    bool outline = false;
    double outlineWidth = 0;
    double r = 1;
    double g = 1;
    double b = 1;
    double a = 1;

    /// The settings that leave a cut-out as it is.
    [[nodiscard]] static EdgeParams identity() noexcept { return {}; }
    /// Whether the border is shrunk or softened.
    [[nodiscard]] bool needsClean() const noexcept { return shrink > 0 || feather > 0; }

    friend bool operator==(const EdgeParams&, const EdgeParams&) noexcept = default;
};

/// The components of a colour in sRGB, from 0 to 1.
struct ColorComponents {
    double r = 1;
    double g = 1;
    double b = 1;
    double a = 1;

    /// The colour; components outside are brought inside.
    [[nodiscard]] QColor color() const;

    friend bool operator==(const ColorComponents&, const ColorComponents&) noexcept = default;
};

/// The edge settings as the interface holds them.
/// *Units*: pixels of the cut-out.
struct EdgeOptions {
    double shrink = 0;  ///< how far the border is drawn inwards
    double feather = 0; ///< the standard deviation of the blur that softens it
    bool outline = false;
    double outlineWidth = 6;
    QColor outlineColor = Qt::white;

    /// Whether there is nothing to do.
    [[nodiscard]] bool isIdentity() const noexcept;
    /// A text that differs where settings would be rendered differently.
    [[nodiscard]] QString signature() const;
    [[nodiscard]] EdgeParams params() const;

    /// The colour in sRGB; opaque white for a colour that has none.
    [[nodiscard]] static ColorComponents components(const QColor& color);

    friend bool operator==(const EdgeOptions&, const EdgeOptions&) noexcept = default;
};

} // namespace stillwick
