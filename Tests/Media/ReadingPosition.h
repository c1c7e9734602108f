// Waiting until somebody else has read far enough, without sleeping. Free function, any thread.
#pragma once

#include <QString>

namespace stillwick::testing {

/// How far this process has read into a file; 0 where it does not have it open.
[[nodiscard]] qint64 bytesRead(const QString& path);

} // namespace stillwick::testing
