// The shapes of a mark drawn on a still. Plain values, any thread.
#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <optional>

namespace stillwick {

enum class AnnotationKind { arrow, line, circle };

/// All kinds in the order in which they are offered.
inline constexpr std::array allAnnotationKinds{AnnotationKind::arrow, AnnotationKind::line,
                                               AnnotationKind::circle};

/// The kind's name in project files, by which lists also identify it.
[[nodiscard]] QString rawValue(AnnotationKind kind);
/// The kind of exactly that raw value, case included, or none.
[[nodiscard]] std::optional<AnnotationKind> annotationKindFromRawValue(QStringView rawValue);

/// The kind's French name.
[[nodiscard]] QString displayName(AnnotationKind kind);
/// The name of the symbol on the kind's button.
[[nodiscard]] QString systemImage(AnnotationKind kind);

} // namespace stillwick
