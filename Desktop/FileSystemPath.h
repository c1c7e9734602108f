// Paths as the system takes them. Pure function, any thread.
#pragma once

#include <QString>

#include <filesystem>

namespace stillwick {

/// The path in the system's bytes.
/// *Errors*: DesktopError NameInvalid for an empty path, and for one with characters that no path
/// holds.
[[nodiscard]] std::filesystem::path fileSystemPath(const QString& path);

} // namespace stillwick
