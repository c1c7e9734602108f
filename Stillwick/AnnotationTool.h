// What a press on the canvas does. Plain value, any thread.
#pragma once

#include "Stillwick/AnnotationKind.h"

#include <QString>

#include <array>
#include <optional>

namespace stillwick {

enum class AnnotationTool { select, arrow, line, circle };

/// All tools in the order in which they are offered.
inline constexpr std::array allAnnotationTools{AnnotationTool::select, AnnotationTool::arrow,
                                               AnnotationTool::line, AnnotationTool::circle};

/// The tool's French name.
[[nodiscard]] QString displayName(AnnotationTool tool);
/// The name of the symbol on its button.
[[nodiscard]] QString systemImage(AnnotationTool tool);
/// What the tool draws; none for the one that selects.
[[nodiscard]] std::optional<AnnotationKind> kindOf(AnnotationTool tool);

} // namespace stillwick
