// Remembering a file or folder in a document, so that it is found again when the document is opened
// another day. Pure bytes, any thread.
#pragma once

#include <QByteArray>

#include <optional>

namespace stillwick {

/// Bytes from which the file or folder at `path` is found again by its path; made absolute where it
/// is not. The file need not be there, for its disk may be away just now. `path` may hold any byte
/// but NUL. None where no file can have that path.
/// *Source*: the form is our own: "swbm", a byte for the version, the first eight bytes of the
/// SHA-256 of the path, the path.
[[nodiscard]] std::optional<QByteArray> makeBookmark(const QByteArray& path);

/// The absolute path that the bookmark stands for, if a regular file or a folder is there. None for
/// bytes that `makeBookmark` did not make, and for damaged ones. Nothing is opened or read.
[[nodiscard]] std::optional<QByteArray> resolveBookmark(const QByteArray& bookmark);

} // namespace stillwick
