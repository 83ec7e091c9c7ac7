// An opening book in the Polyglot format, read in place.
//
// The file is a sequence of 16-byte records without a header, in ascending order of their keys. All
// numbers are big-endian:
//
// | bytes | meaning                                                            |
// |-------|--------------------------------------------------------------------|
// | 0-7   | the position's key, `CPosition::key`                               |
// | 8-9   | the move, see book/book_record.h                                   |
// | 10-11 | its weight                                                         |
// | 12-15 | what a learning program has noted; not used                        |
//
// Nothing of the book is held in memory: a question is a bisection by seeks and byte reads, some
// dozens of them. It is asked at the root only. A file that is not a book, or is cut off, unsorted
// or shortened while it is open, gives few moves or wrong ones, and every one of them is
// pseudo-legal.
//
// The place in the file is a state that all questions share, so an object is used by one thread at
// a time.
#pragma once

#include "board/move_list.h"
#include "board/position.h"
#include "text/file.h"

#include <cstdint>
#include <string>

namespace brenquil {

/// The moves that a book holds for a position.
class CBookFile {
public:
    /// Bytes of one record.
    static constexpr std::uint32_t RecordSize = 16;

    /// Opens another book in place of the present one.
    /// @return false when the file cannot be opened; there is not a book then
    [[nodiscard]] bool Open(const std::string& path) noexcept { return file_.Open(path); }

    [[nodiscard]] bool IsOpen() const noexcept { return file_.IsOpen(); }

    /// The number of whole records, 0 without a book. The place in the file stays as it was.
    [[nodiscard]] std::uint32_t RecordCount() const noexcept;

    /// Appends the moves of the position in the order of the file, each with its weight in the
    /// upper half of the word. Records of moves that are not pseudo-legal here are left out.
    void LookUp(MoveList& list, const CPosition& position) noexcept;

private:
    [[nodiscard]] bool SeekRecord(std::uint32_t index) noexcept;
    [[nodiscard]] std::uint64_t ReadNumber(int bytes) noexcept;
    [[nodiscard]] std::uint64_t KeyAt(std::uint32_t index) noexcept;
    [[nodiscard]] std::uint32_t FirstNotBelow(std::uint64_t key, std::uint32_t count) noexcept;

    CReadFile file_;
};

}  // namespace brenquil
