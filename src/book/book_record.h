// One record of a book and the move that it stands for.
//
// | bits  | meaning of the move field                                                |
// |-------|--------------------------------------------------------------------------|
// | 0-5   | to-square, numbered as ours are                                          |
// | 6-11  | from-square                                                              |
// | 12-14 | promotion: 0 none, 1 knight, 2 bishop, 3 rook, 4 queen; 5 to 7 are none  |
//
// A field of 0 is no move. Castling is written as the king taking his own rook: e1h1, e1a1, e8h8,
// e8a8; that is the only form understood.
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <cstdint>

namespace brenquil {

/// What a book says about one move.
struct BookRecord {
    std::uint16_t move = 0;
    std::uint16_t weight = 0;
};

/// The move of the record in this position, its weight in the upper half; `NoMove` if the record
/// holds none or one that is not pseudo-legal here.
[[nodiscard]] Move MoveOfRecord(const BookRecord& record, const CPosition& position) noexcept;

}  // namespace brenquil
