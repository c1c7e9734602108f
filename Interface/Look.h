// How the application looks and speaks. Main thread.
#pragma once

#include "Interface/Theme.h"

class QApplication;

namespace stillwick {

/// Gives the application its style, its colours, its font, its icon and its language; from then on
/// the colours follow the desktop. Call it once, before the first window.
void installLook(QApplication& application);

/// As above in one scheme, whatever the desktop's.
void installLook(QApplication& application, ColorScheme scheme);

} // namespace stillwick
