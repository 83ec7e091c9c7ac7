// Pawn structure and king shelter: all terms that depend on pawns and kings alone.
//
// `SumPawns` computes the sums of pawn terms, of the square values of pawns and kings and of the
// shelter danger. `GetPawnEntry` answers from the pawn hash, or leaves the sums there. A hit is one
// modulo, one load and one comparison.
#pragma once

#include "board/position.h"
#include "board/table.h"
#include "board/types.h"
#include "eval/pawn_hash.h"
#include "eval/term_pair.h"

namespace brenquil {

/// By the pawn's rank, 0 to 7 from its own side. On the third and fourth ranks a passed pawn costs
/// something in the middlegame: deliberate.
inline constexpr LineTable<TermPair> PassedBonus = {
    {{0, 0}, {4, 4}, {-19, 17}, {-8, 32}, {19, 51}, {48, 67}, {58, 90}, {0, 0}}};

/// How exposed a king on `kingSquare` is behind the pawns of its colour and before the enemy's,
/// 0 to 27; higher is worse. Only the king's file counts.
[[nodiscard]] int ShelterDanger(const CPosition& position, Square kingSquare,
                                Colour colour) noexcept;

/// The sums of one side, computed from the board.
[[nodiscard]] PawnSums SumPawns(const CPosition& position, Colour colour) noexcept;

/// The filled entry of the position's pawns and kings: the slot of the table, or `localEntry` when
/// the table has no memory.
[[nodiscard]] const PawnEntry& GetPawnEntry(const CPosition& position, CPawnHash& pawnHash,
                                            PawnEntry& localEntry) noexcept;

}  // namespace brenquil
