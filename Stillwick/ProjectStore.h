// Projects on the disk. No state; any thread; blocks until the disk has answered.
#pragma once

#include "Stillwick/ProjectFile.h"

#include <QByteArray>
#include <QUrl>

#include <optional>

namespace stillwick::ProjectStore {

/// Writes the project whole or not at all: a save that fails leaves the earlier file as it was. See
/// `writeFileAtomically` for links, permissions and what a failing disk may leave. What a save that
/// was killed left beside the file is cleared away.
/// *Errors*: ProjectError where the project cannot be put into words, DesktopError where the file
/// cannot be written, or `url` is none of a local file.
void save(const ProjectFile& project, const QUrl& url);

/// The project in the file.
/// *Errors*: ProjectError where the file's content is no project, DesktopError where it cannot be
/// read, or `url` is none of a local file.
[[nodiscard]] ProjectFile load(const QUrl& url);

/// Bytes from which the file or folder is found again by its path, whatever the bytes of its name;
/// none where `url` is none of a local file. It need not be there just now.
[[nodiscard]] std::optional<QByteArray> makeBookmark(const QUrl& url);

/// Where the file or folder is that the bookmark stands for; none where nothing is there any more,
/// and for bytes that are no bookmark. Opens nothing.
[[nodiscard]] std::optional<QUrl> resolveBookmark(const QByteArray& bookmark);

} // namespace stillwick::ProjectStore
