// Runs a piece of a test in a process of its own, for what cannot be undone in the test's: another
// user, another umask, mounts, limits.
#pragma once

#include <functional>
#include <string>

namespace stillwick {

/// What `work` returned in a forked child; "died" if the child ended without returning.
[[nodiscard]] std::string inChild(const std::function<std::string()>& work);

/// Makes this process a user without privileges, if it is the superuser. For use in a child.
void becomeNobody();

/// Mounts an empty file system of that size on `folder`, seen by this process alone. Returns what
/// stood in the way, or nothing. For use in a child.
[[nodiscard]] std::string mountSmallDisk(const std::string& folder, const std::string& size);
/// Makes a disk of `mountSmallDisk` read-only.
[[nodiscard]] std::string makeDiskReadOnly(const std::string& folder);

} // namespace stillwick
