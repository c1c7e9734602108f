// Writing a file whole or not at all. Any thread; blocks until the disk has the bytes.
#pragma once

#include <QByteArray>
#include <QString>

namespace stillwick {

/// Makes `content` the content of the file at `path`, replacing one that is there. Readers see the
/// old content or the new, at no moment anything between, and neither a full disk nor a crash
/// changes that. A symbolic link stays, its target is written. The permissions of an existing file
/// are kept, and its owner as far as the system allows; hard links to it keep the old content.
/// A program killed before the end leaves a hidden file beside it, ".stillwick-" and 16 digits.
/// *Errors*: DesktopError; the old content is untouched and nothing is left beside it. One
/// exception: where the disk fails at recording the change in the folder, after everything else
/// succeeded, the new content is in place but may not outlast a power failure. Folders are never
/// created.
void writeFileAtomically(const QString& path, const QByteArray& content);

/// Removes the hidden files that killed programs of this user left in the folder of the file at
/// `path`, or of its target where that is a link. What another program is writing just now stays.
/// Never fails: what cannot be removed stays too.
void removeAbandonedWritesBeside(const QString& path);

} // namespace stillwick
