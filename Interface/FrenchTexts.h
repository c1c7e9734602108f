// The toolkit's own texts in French, whatever the locale. Main thread.
#pragma once

class QCoreApplication;

namespace stillwick {

/// Makes the toolkit speak French: its own translation, and better words where that one is poor.
/// Numbers and dates go the French way too.
void installFrenchTexts(QCoreApplication& application);

} // namespace stillwick
