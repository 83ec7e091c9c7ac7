// A table file, open for reading.
//
// Offsets are 64 bits wide. Reads are not buffered, because a reader always wants a whole block and
// never the one after it.
//
// A file belongs to one thread at a time; the cache guards it by a lock. No exceptions.
#pragma once

#include "text/file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace brenquil {

class CNalimovFile {
public:
    /// Opens the file of that name in place of what was open before. False, and nothing is open,
    /// when it cannot be read or is not a regular file.
    [[nodiscard]] bool Open(const std::string& name) noexcept;

    void Close() noexcept { file_.Close(); }

    [[nodiscard]] bool IsOpen() const noexcept { return file_.IsOpen(); }

    /// Goes to an offset from the start. False when the system refuses.
    [[nodiscard]] bool Seek(std::uint64_t offset) noexcept;

    /// The length of the file; nothing when the system does not tell. Leaves the read position
    /// at the end.
    [[nodiscard]] std::optional<std::uint64_t> Size() noexcept;

    /// Reads from the present position on until the buffer is full or the file ends. Returns the
    /// number of bytes.
    [[nodiscard]] std::size_t Read(std::span<std::uint8_t> buffer) noexcept;

    /// True when the last Read stopped for another reason than the end of the file.
    [[nodiscard]] bool HasFailed() const noexcept;

private:
    CReadFile file_;
};

}  // namespace brenquil
