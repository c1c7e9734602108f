// Reading a file that may be anything. Any thread; blocks until the disk has given the bytes.
#pragma once

#include <QByteArray>
#include <QString>

namespace stillwick {

/// The first `mostBytes` bytes of a regular file, or all where it is shorter. Never waits for what
/// is no file, such as a pipe.
/// *Errors*: DesktopError.
[[nodiscard]] QByteArray readFile(const QString& path, qint64 mostBytes);

} // namespace stillwick
