// How the byte string of a name becomes a name of Windows. Used by the files of this room that are
// for Windows, and by nobody else.
#pragma once

#include <string>

namespace brenquil {

/// The name in the system's own characters: read as UTF-8 when it is that, else in the code page of
/// the system. Empty when it is empty or cannot be converted.
[[nodiscard]] std::wstring WindowsName(const std::string& name) noexcept;

}  // namespace brenquil
