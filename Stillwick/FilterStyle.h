// The styles in which a cut-out can be drawn. Plain values, any thread.
#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <optional>

namespace stillwick {

enum class FilterStyle { none, sketch, comic, poster };

/// All styles in the order in which they are offered.
inline constexpr std::array allFilterStyles{FilterStyle::none, FilterStyle::sketch,
                                            FilterStyle::comic, FilterStyle::poster};

/// The style's name in project files, by which lists also identify it.
[[nodiscard]] QString rawValue(FilterStyle style);
/// The style of exactly that raw value, case included, or none.
[[nodiscard]] std::optional<FilterStyle> filterStyleFromRawValue(QStringView rawValue);

/// The style's French name.
[[nodiscard]] QString displayName(FilterStyle style);

} // namespace stillwick
