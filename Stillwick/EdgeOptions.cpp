#include "Stillwick/EdgeOptions.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <charconv>

namespace stillwick {

namespace {

/// A number as printf writes it with %.Nf in the C locale: Qt's own rounds halves up.
QString fixed(double number, int decimals) {
    std::array<char, 400> text{}; // the largest double has 309 digits
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number,
                                   std::chars_format::fixed, decimals);
    return QString::fromLatin1(text.data(), end.ptr - text.data());
}

} // namespace

QColor ColorComponents::color() const {
    const auto inside = [](double value) {
        return float(std::clamp(value, 0.0, 1.0));
    };
    return QColor::fromRgbF(inside(r), inside(g), inside(b), inside(a));
}

bool EdgeOptions::isIdentity() const noexcept {
    return shrink <= 0 && feather <= 0 && !outline;
}

QString EdgeOptions::signature() const {
    const ColorComponents color = components(outlineColor);
    const QStringList edge{fixed(shrink, 1), fixed(feather, 1), QString::number(outline ? 1 : 0),
                           fixed(outlineWidth, 1)};
    const QStringList rgba{fixed(color.r, 2), fixed(color.g, 2), fixed(color.b, 2),
                           fixed(color.a, 2)};
    return edge.join(u'-') + u'-' + rgba.join(u',');
}

EdgeParams EdgeOptions::params() const {
    const ColorComponents color = components(outlineColor);
    return {shrink, feather, outline, outlineWidth, color.r, color.g, color.b, color.a};
}

ColorComponents EdgeOptions::components(const QColor& color) {
    if (!color.isValid())
        return {};
    const QColor rgb = color.toRgb();
    return {rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF()};
}

} // namespace stillwick
