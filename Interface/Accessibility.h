// What screen readers are told of our own widgets. Main thread.
#pragma once

namespace stillwick {

/// Makes our widgets known to assistive technologies with their roles, values and states. Calling
/// it again changes nothing.
void installAccessibility();

} // namespace stillwick
