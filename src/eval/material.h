// The material of both sides, the phase of the game and the question who can still mate.
//
// Counted anew for each evaluation from the counts that the position keeps; some twenty
// instructions a side.
#pragma once

#include "board/position.h"
#include "board/types.h"
#include "text/option.h"

#include <array>
#include <cstdint>

namespace brenquil {

/// Values by type, pawn to queen, that options change while searches read them.
using PieceValues = std::array<COptionSpin, 5>;

/// What a full set of men counts for the phase; promoted men can bring it above.
inline constexpr int PhaseTotal = 24;

/// Arrays are by `Colour`, Black first.
struct Material {
    /// 1 for a knight and for each colour of squares that a side's bishops stand on, 2 for a rook,
    /// 4 for a queen, of both sides together; pawns and kings count nothing.
    int phase = 0;
    /// In piece values. A bishop beside another one on the same colour of squares adds nothing.
    std::array<std::int32_t, 2> value{};
    /// The lowest square with a king, `SquareNone` if there is none.
    std::array<Square, 2> kingSquare{SquareNone, SquareNone};
    /// The colour has bishops on both colours of squares.
    std::array<bool, 2> hasBishopPair{};
};

[[nodiscard]] Material ComputeMaterial(const CPosition& position,
                                       const PieceValues& values) noexcept;

/// The colour has nothing but its king, or king and bishops all on one colour of squares, or king
/// and one knight. One other man of any kind makes it false.
[[nodiscard]] bool CannotMate(const CPosition& position, Colour colour) noexcept;

}  // namespace brenquil
