// Showing a folder in the desktop's file browser. Main thread.
#pragma once

#include <QCoroTask>
#include <QString>

namespace stillwick {

/// Shows the folder at `path` in the file browser: through the desktop's file manager service where
/// there is one, else by what the desktop opens folders with. Whether one of them took it.
/// *Source*: freedesktop.org, File Manager D-Bus Interface, method ShowFolders.
[[nodiscard]] QCoro::Task<bool> showFolder(QString path);

} // namespace stillwick
