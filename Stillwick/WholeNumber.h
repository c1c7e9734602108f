// Whole numbers as JSON may write them. Pure function, any thread.
#pragma once

#include <QByteArrayView>
#include <QtGlobal>

#include <optional>

namespace stillwick {

/// The value of a JSON number if it is whole and fits 64 bits, worked out without rounding: 12,
/// 12.0 and 1.2e1 are the same number. None for any other.
[[nodiscard]] std::optional<qint64> wholeNumber(QByteArrayView number);

} // namespace stillwick
