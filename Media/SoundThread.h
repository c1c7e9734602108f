// The one thread in which everything of Qt Multimedia happens, from the first use of it until the
// application ends. Any thread.
#pragma once

#include <functional>

class QObject;

namespace stillwick {

/// Runs `work` in the sound thread, after all that was posted before; `home` is an object of that
/// thread, the parent of whatever is to stay there. Returns at once. Dropped where there is no
/// QCoreApplication (any more): its end ends the thread and all that lives in `home`.
///
/// One thread for all, and for good: Qt keeps one connection to the sound server, which belongs to
/// the thread that first asked for a device and needs that thread's event loop to be made anew
/// after a failure; and what plays through it must be closed in that same thread, before the
/// connection is given up. Opening a device may block there as long as the sound server likes, so
/// no other thread ever waits for it.
void postToSoundThread(std::function<void(QObject& home)> work);

} // namespace stillwick
