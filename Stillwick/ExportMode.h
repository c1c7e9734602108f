// How an export cuts a still into pictures. Plain value, any thread.
#pragma once

#include <array>

namespace stillwick {

enum class ExportMode {
    merged,     ///< one picture per still, all subjects together
    perSubject, ///< one picture per subject
};

/// Both modes in the order in which they are offered.
inline constexpr std::array allExportModes{ExportMode::merged, ExportMode::perSubject};

} // namespace stillwick
