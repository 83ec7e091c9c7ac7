// Directories and drives, as far as looking for table files needs them.
//
// Drive letters exist on Windows. Elsewhere every drive counts as present and ready, so that code
// which asks before it opens a file behaves as if the question had not been there.
#pragma once

#include <string>

namespace brenquil {

/// The character between the parts of a path.
[[nodiscard]] char PathSeparator() noexcept;

/// True when `path` names a directory (or a link to one). The empty path names none.
[[nodiscard]] bool DirectoryExists(const std::string& path) noexcept;

/// True when the system knows a drive of that letter, in either case.
[[nodiscard]] bool DriveExists(char letter) noexcept;

/// False when the drive has no medium at the moment. A drive that fails in another way is ready.
[[nodiscard]] bool DriveIsReady(char letter) noexcept;

}  // namespace brenquil
