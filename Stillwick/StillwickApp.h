// The application with its windows. Main thread.
#pragma once

#include "Stillwick/CommandLine.h"

namespace stillwick {

/// Opens a window for each file, or an empty one, and stays until the last is closed. Returns the
/// program's exit status: 2, with a sentence on standard error, where there is no screen.
[[nodiscard]] int runWindows(int& argc, char** argv, const WindowCommand& command);

} // namespace stillwick
