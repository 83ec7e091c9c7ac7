// Little books for the tests, written record by record.
#pragma once

#include "board/position.h"
#include "board/position_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil::test {

/// Puts together the bytes of a book.
class CBookBuilder {
public:
    /// Adds a record as it stands in the file.
    CBookBuilder& AddRaw(std::uint64_t key, unsigned field, unsigned weight) {
        records_.push_back(
            {key, static_cast<std::uint16_t>(field), static_cast<std::uint16_t>(weight)});
        return *this;
    }

    /// Adds a move in the format's notation ("e2e4", "e1h1", "e7e8q") for the position of a FEN.
    CBookBuilder& Add(std::string_view fen, std::string_view move, unsigned weight) {
        CPosition position;
        CPositionText(position).SetFen(fen);
        return AddRaw(position.key, FieldOf(move), weight);
    }

    /// The bytes of the file, the records in ascending order of their keys, those of one key in the
    /// order in which they were added.
    [[nodiscard]] std::string Bytes() const {
        std::vector<Record> sorted = records_;
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const Record& a, const Record& b) { return a.key < b.key; });
        return BytesOf(sorted);
    }

    /// The bytes with the records in the order in which they were added.
    [[nodiscard]] std::string UnsortedBytes() const { return BytesOf(records_); }

    [[nodiscard]] static unsigned FieldOf(std::string_view move) {
        const auto square = [move](std::size_t at) {
            return static_cast<unsigned>((move[at + 1] - '1') * 8 + (move[at] - 'a'));
        };
        const auto promotion =
            move.size() > 4 ? static_cast<unsigned>(std::string_view(" nbrq").find(move[4])) : 0U;
        return promotion << 12U | square(0) << 6U | square(2);
    }

private:
    struct Record {
        std::uint64_t key;
        std::uint16_t field;
        std::uint16_t weight;
    };

    static void Put(std::string& bytes, std::uint64_t number, int count) {
        for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) {
            bytes += static_cast<char>(number >> shift & 0xFFU);
        }
    }

    static std::string BytesOf(const std::vector<Record>& records) {
        std::string bytes;
        for (const Record& record : records) {
            Put(bytes, record.key, 8);
            Put(bytes, record.field, 2);
            Put(bytes, record.weight, 2);
            Put(bytes, 0x89ABCDEF, 4);  // what a learning program may have noted
        }
        return bytes;
    }

    std::vector<Record> records_;
};

}  // namespace brenquil::test
