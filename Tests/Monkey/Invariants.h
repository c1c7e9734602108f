// What must hold of a window whatever was done to it. Main thread.
#pragma once

#include <QString>

namespace stillwick {
class StillwickWindow;
}

namespace stillwick::monkey {

/// The first rule that the window's state, or what it shows of it, breaks; empty where all is well.
[[nodiscard]] QString brokenRule(const StillwickWindow& window);

/// The first name under the folder that no finished export or project would leave there; empty
/// where there is none.
[[nodiscard]] QString strayFile(const QString& folder);

} // namespace stillwick::monkey
