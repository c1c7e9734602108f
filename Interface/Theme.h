// The colours of the interface, light and dark. Plain functions, any thread.
#pragma once

#include <QColor>
#include <QPalette>

namespace stillwick {

enum class ColorScheme { light, dark };

/// What a colour is for. Texts have a contrast of at least 4.5:1 on every ground on which they
/// stand.
enum class ThemeColor {
    window,            ///< behind everything
    controlBackground, ///< a panel set into the window
    fieldBackground,   ///< behind text that is edited, and lists
    control,           ///< a button at rest
    controlHover,
    controlPressed,
    controlBorder,
    separator,
    quaternary, ///< the thin border around an editor
    groove,     ///< what a slider or a bar of progress runs in
    thumb,      ///< the handle of a scroll bar
    text,
    secondaryText,
    disabledText,
    accent,     ///< text and symbols that stand out; the frame of what has the focus
    accentFill, ///< the ground of prominent buttons and of what is selected
    accentHover,
    accentPressed,
    onAccent,      ///< text and symbols on `accentFill`
    selectionTint, ///< the ground of what is selected where the focus is elsewhere
    destructive,
    warning,
};

[[nodiscard]] QColor themeColor(ThemeColor color, ColorScheme scheme);
/// As above, in the scheme that the palette belongs to.
[[nodiscard]] QColor themeColor(ThemeColor color, const QPalette& palette);

/// The palette that widgets take these colours from.
[[nodiscard]] QPalette themePalette(ColorScheme scheme);

/// Dark where text is lighter than what it stands on.
[[nodiscard]] ColorScheme schemeOf(const QPalette& palette);

/// The contrast of two opaque colours, 1 to 21.
/// *Source*: Web Content Accessibility Guidelines 2.1, "contrast ratio" and "relative luminance".
[[nodiscard]] double contrastRatio(const QColor& one, const QColor& other);

} // namespace stillwick
