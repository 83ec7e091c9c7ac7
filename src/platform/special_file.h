// Whether a name leads to something that only looks like a file.
//
// A directory can be opened for reading on some systems, and a pipe or a terminal keeps the opener
// waiting. Ask here before opening a file to read.
//
// Cost: one question to the system.
#pragma once

#include <string>

namespace brenquil {

/// True when there is something of that name that is not a regular file: a directory, a device, a
/// pipe, or a link to one of these. False for a file and for nothing.
[[nodiscard]] bool IsSpecialFile(const std::string& path) noexcept;

}  // namespace brenquil
