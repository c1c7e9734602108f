// Times as people write them. Pure functions, any thread.
#pragma once

#include "Media/CMTime.h"

#include <QString>

#include <optional>

namespace stillwick {

/// A time as the user writes it: seconds ("83.5"), minutes and seconds ("01:23.500"), hours too
/// ("1:02:03.250"), or an exact pair ("41750/500"). Exact, decimals up to nine; none for anything
/// else.
[[nodiscard]] std::optional<CMTime> parseTime(const QString& text);

} // namespace stillwick
