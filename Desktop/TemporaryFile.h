// A file under a passing name beside the one that it is to become. One thread at a time.
#pragma once

#include <QByteArray>

#include <filesystem>

#include <sys/types.h>

struct stat;

namespace stillwick {

/// A new hidden file in a folder, removed unless it was moved away. It is locked (flock) while it
/// is in use, so that what a killed program left is told from what another is at work on.
/// *Errors*: all operations throw DesktopError.
class TemporaryFile final {
public:
    TemporaryFile(const std::filesystem::path& folder, mode_t mode);
    ~TemporaryFile();
    Q_DISABLE_COPY_MOVE(TemporaryFile)

    /// Best effort: only the superuser gives files away, and some file systems have neither.
    void takeOwnerAndPermissionsOf(const struct stat& status);
    /// Returns once the disk has the bytes.
    void write(const QByteArray& content);
    /// Becomes the file at `target`, in place of one that is there. Nothing can be written any
    /// more.
    void moveTo(const std::filesystem::path& target);

private:
    bool tryToMake(const std::filesystem::path& folder, mode_t mode);
    [[nodiscard]] bool isClaimed() const;

    std::filesystem::path m_path;
    int m_descriptor = -1;
};

/// Removes what temporary files of this user were left in the folder by programs that were killed.
/// Best effort: what cannot be listed, locked or removed stays.
void removeAbandonedTemporaryFiles(const std::filesystem::path& folder);

/// Makes sure that the disk has what was written to the descriptor, where its file system can tell.
/// *Errors*: DesktopError.
void synchronise(int descriptor);

} // namespace stillwick
