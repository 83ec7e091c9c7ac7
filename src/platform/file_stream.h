// Files of the C library whose names and sizes are not bound by what a system's C library can do.
//
// A name is a byte string: what a front end sent, a person typed or a file holds. Where names are
// bytes it goes to the system as it is. On Windows, where they are not, a name that is UTF-8 is
// taken for UTF-8, and any other in the code page of the system; names in plain ASCII are both.
//
// Places and sizes have 64 bits, also where `long` has 32.
//
// No exceptions.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace brenquil {

/// Opens a stream, like std::fopen with a mode of "r", "w" or "a"; nullptr when that fails. What is
/// no regular file is closed again, nullptr too, and neither opening nor reading ever blocks.
/// Ask IsSpecialFile first where merely opening a device could disturb something.
[[nodiscard]] std::FILE* OpenStream(const std::string& name, const char* mode) noexcept;

/// Goes to a place counted from the start of the file. False when the system refuses; a place past
/// the end is fine.
[[nodiscard]] bool SeekStream(std::FILE* stream, std::uint64_t place) noexcept;

/// The place of the next read, counted from the start.
[[nodiscard]] std::optional<std::uint64_t> StreamPlace(std::FILE* stream) noexcept;

/// The number of bytes from the start to the end. Leaves the place at the end.
[[nodiscard]] std::optional<std::uint64_t> StreamSize(std::FILE* stream) noexcept;

}  // namespace brenquil
