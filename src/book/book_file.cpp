#include "book/book_file.h"

#include "book/book_record.h"
#include "platform/file_stream.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <limits>

namespace brenquil {

std::uint32_t CBookFile::RecordCount() const noexcept {
    if (!IsOpen()) {
        return 0;
    }
    const std::uint64_t place = StreamPlace(file_.file).value_or(0);
    const std::uint64_t records = StreamSize(file_.file).value_or(0) / RecordSize;
    (void)SeekStream(file_.file, place);
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(records, std::numeric_limits<std::uint32_t>::max()));
}

void CBookFile::LookUp(MoveList& list, const CPosition& position) noexcept {
    const std::uint64_t key = position.key;
    const std::uint32_t count = RecordCount();
    if (count == 0) {
        return;
    }
    const std::uint32_t first = FirstNotBelow(key, count);
    if (KeyAt(first) != key) {
        return;
    }
    // A full list takes no more: the rest of a book of nothing but this key need not be read.
    for (std::uint32_t i = first; i < count && list.count < MoveList::Capacity; ++i) {
        if (!SeekRecord(i) || ReadNumber(8) != key) {
            return;
        }
        BookRecord record;
        record.move = ReadNumber(2) & 0xFFFFU;
        record.weight = ReadNumber(2) & 0xFFFFU;
        const Move move = MoveOfRecord(record, position);
        if (!move.IsNone()) {
            list.Append(move);
        }
    }
}

/// Goes to the start of a record.
bool CBookFile::SeekRecord(std::uint32_t index) noexcept {
    assert(IsOpen());
    return SeekStream(file_.file, std::uint64_t{index} * RecordSize);
}

/// The next bytes as a number, the most significant one first. Bytes past the end of the file are
/// skipped.
std::uint64_t CBookFile::ReadNumber(int bytes) noexcept {
    assert(bytes >= 0 && bytes <= 8);
    std::uint64_t number = 0;
    for (int i = 0; i < bytes; ++i) {
        const int byte = std::fgetc(file_.file);
        if (byte != EOF) {
            number = number << 8U | byte;
        }
    }
    return number;
}

/// The key of a record, 0 if the file has no such place.
std::uint64_t CBookFile::KeyAt(std::uint32_t index) noexcept {
    return SeekRecord(index) ? ReadNumber(8) : 0;
}

/// The first record whose key is not below `key`, or the last record. `count` is not 0.
std::uint32_t CBookFile::FirstNotBelow(std::uint64_t key, std::uint32_t count) noexcept {
    assert(count != 0);
    std::uint32_t low = 0;
    std::uint32_t high = count - 1;
    while (low < high) {
        const std::uint32_t middle = low + (high - low) / 2;
        if (key > KeyAt(middle)) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

}  // namespace brenquil
