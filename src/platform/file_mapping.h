// A whole file as read-only memory.
//
//     CFileMapping file;
//     if (file.Open(path)) { ... file.Data()[0 .. file.Size() - 1] ... }
//
// The system reads a page of the file when it is first touched and may drop it again, so a mapping
// of a large file costs no memory by itself. The bytes stay valid until Close, the next Open or the
// destructor, also after a move of the object. A file that somebody shortens meanwhile ends the
// program when the lost part is read; table files do not change.
//
// Any number of threads may read the bytes of an open mapping. No exceptions.
//
// LengthOfFile tells what Open would find: a file that has a length and cannot be mapped is the
// system's fault, and Error says which.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace brenquil {

class CFileMapping {
public:
    /// Maps nothing.
    CFileMapping() noexcept = default;
    CFileMapping(const CFileMapping&) = delete;
    CFileMapping& operator=(const CFileMapping&) = delete;
    CFileMapping(CFileMapping&& other) noexcept;
    CFileMapping& operator=(CFileMapping&& other) noexcept;
    ~CFileMapping();

    /// Maps the file of that name in place of what was mapped before. False, and nothing is mapped,
    /// when it cannot be read, is not a regular file or is empty.
    [[nodiscard]] bool Open(const std::string& path) noexcept;

    /// Ends the mapping, if there is one.
    void Close() noexcept;

    [[nodiscard]] bool IsOpen() const noexcept { return data_ != nullptr; }

    /// The first byte, nullptr when nothing is mapped.
    [[nodiscard]] const std::uint8_t* Data() const noexcept { return data_; }

    /// The length of the file, 0 when nothing is mapped.
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }

    /// The system's number for the reason why the last Open failed; 0 when it knew none.
    [[nodiscard]] std::uint32_t Error() const noexcept { return error_; }

    /// All bytes.
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const noexcept { return {data_, size_}; }

private:
    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    std::uint32_t error_ = 0;
};

/// The length of the regular file of that name; nothing when it cannot be opened for reading.
[[nodiscard]] std::optional<std::uint64_t> LengthOfFile(const std::string& path) noexcept;

}  // namespace brenquil
