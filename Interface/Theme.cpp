#include "Interface/Theme.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace stillwick {

namespace {

struct Shades {
    ThemeColor color;
    QRgb light;
    QRgb dark;
};

/// One row per colour, in the order of the enumeration.
constexpr std::array table{
    Shades{ThemeColor::window, 0xfff4f4f7, 0xff1f1f24},
    Shades{ThemeColor::controlBackground, 0xffebebf0, 0xff18181c},
    Shades{ThemeColor::fieldBackground, 0xffffffff, 0xff17171b},
    Shades{ThemeColor::control, 0xffffffff, 0xff34343c},
    Shades{ThemeColor::controlHover, 0xfff0f0f5, 0xff3d3d46},
    Shades{ThemeColor::controlPressed, 0xffe2e2ea, 0xff2a2a31},
    Shades{ThemeColor::controlBorder, 0xffc8c8d2, 0xff4b4b56},
    Shades{ThemeColor::separator, 0xffdcdce4, 0xff36363e},
    Shades{ThemeColor::quaternary, 0xffd2d2dc, 0xff42424c},
    Shades{ThemeColor::groove, 0xffd6d6df, 0xff44444e},
    Shades{ThemeColor::thumb, 0xffb4b4c0, 0xff5a5a66},
    Shades{ThemeColor::text, 0xff1c1c22, 0xffededf2},
    Shades{ThemeColor::secondaryText, 0xff5e5e6c, 0xffa9a9b6},
    Shades{ThemeColor::disabledText, 0xff9c9caa, 0xff6c6c78},
    Shades{ThemeColor::accent, 0xff4f4bd0, 0xffa3a5ff},
    Shades{ThemeColor::accentFill, 0xff5552d9, 0xff5e5be6},
    Shades{ThemeColor::accentHover, 0xff4a47cc, 0xff6562eb},
    Shades{ThemeColor::accentPressed, 0xff3f3cb4, 0xff4f4ccf},
    Shades{ThemeColor::onAccent, 0xffffffff, 0xffffffff},
    Shades{ThemeColor::selectionTint, 0xffe0e0f6, 0xff34345a},
    Shades{ThemeColor::destructive, 0xffb3261e, 0xffff7a70},
    Shades{ThemeColor::warning, 0xff8a4b00, 0xffffb84d},
};

/// A channel's part in the light that a colour gives.
double linearLight(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double relativeLuminance(const QColor& color) {
    return 0.2126 * linearLight(color.redF()) + 0.7152 * linearLight(color.greenF()) +
           0.0722 * linearLight(color.blueF());
}

void setDisabled(QPalette& palette, ColorScheme scheme) {
    const QColor faint = themeColor(ThemeColor::disabledText, scheme);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::BrightText, QPalette::PlaceholderText, QPalette::Link})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Disabled, QPalette::Highlight,
                     themeColor(ThemeColor::groove, scheme));
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, faint);
}

} // namespace

QColor themeColor(ThemeColor color, ColorScheme scheme) {
    const Shades& shades = table.at(static_cast<std::size_t>(color));
    Q_ASSERT(shades.color == color);
    return QColor::fromRgb(scheme == ColorScheme::light ? shades.light : shades.dark);
}

QColor themeColor(ThemeColor color, const QPalette& palette) {
    return themeColor(color, schemeOf(palette));
}

QPalette themePalette(ColorScheme scheme) {
    const auto color = [scheme](ThemeColor wanted) {
        return themeColor(wanted, scheme);
    };
    QPalette palette(color(ThemeColor::text), color(ThemeColor::control),
                     color(ThemeColor::control).lighter(), color(ThemeColor::controlBorder),
                     color(ThemeColor::separator), color(ThemeColor::text), Qt::white,
                     color(ThemeColor::fieldBackground), color(ThemeColor::window));
    palette.setColor(QPalette::AlternateBase, color(ThemeColor::controlBackground));
    palette.setColor(QPalette::ToolTipBase, color(ThemeColor::fieldBackground));
    palette.setColor(QPalette::ToolTipText, color(ThemeColor::text));
    palette.setColor(QPalette::PlaceholderText, color(ThemeColor::secondaryText));
    palette.setColor(QPalette::Highlight, color(ThemeColor::accentFill));
    palette.setColor(QPalette::HighlightedText, color(ThemeColor::onAccent));
    palette.setColor(QPalette::Link, color(ThemeColor::accent));
    palette.setColor(QPalette::LinkVisited, color(ThemeColor::accent));
    setDisabled(palette, scheme);
    return palette;
}

ColorScheme schemeOf(const QPalette& palette) {
    const bool isDark = palette.color(QPalette::Active, QPalette::WindowText).lightnessF() >
                        palette.color(QPalette::Active, QPalette::Window).lightnessF();
    return isDark ? ColorScheme::dark : ColorScheme::light;
}

double contrastRatio(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({relativeLuminance(one), relativeLuminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace stillwick
