// The contents of a Nalimov table as it lies in a plain file: one byte a position, in the file's
// numbering.
//
// A win in n moves is 127 - n, a loss in n moves n - 126, a draw 0; 126 and 127 moves have bytes of
// their own at the lower end. Places that no position has hold 127, the mark for "no answer". One
// loss cannot be written down: seven positions of kppkp are lost in 127 moves, and a reader has to
// know them. Their places hold the mark too.
#pragma once

#include "board/attacks.h"
#include "tables/ending_values.h"
#include "tables/progress.h"
#include "tables/workers.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace brenquil {

inline constexpr std::uint8_t NalimovNoValue = 127;

/// The byte of a code of `DistanceToMate`.
[[nodiscard]] std::uint8_t NalimovByteOf(int code) noexcept;

/// The code of a byte that is not the mark.
[[nodiscard]] int CodeOfNalimovByte(std::uint8_t byte) noexcept;

/// Has the ending the same file for both sides to move.
[[nodiscard]] bool HasOneNalimovFile(const Ending& ending);

/// The number of places of a file; side 0 is White to move.
[[nodiscard]] std::uint64_t NalimovPlaces(const Ending& ending, int side);

/// The place of a position in the file of its side to move. `victim` is the pawn that has just made
/// a double step and may be taken in passing, `Ending::NoMan` for none.
/// @return `CNalimovCalculator::NoIndex` if it has none
[[nodiscard]] std::uint64_t NalimovPlaceOf(const Ending& ending, const EndingSquares& squares,
                                           Colour sideToMove, std::size_t victim);

/// Do like pieces stand in ascending order: of positions that differ in nothing else, one. (Pawns
/// always do in the numbering of the solver.)
[[nodiscard]] inline bool AreInOrder(const Ending& ending, const EndingSquares& squares) noexcept {
    for (std::size_t man = 2; man + 1 < ending.pieces; ++man) {
        if (squares[man] > squares[man + 1] && ending.man[man] == ending.man[man + 1]) {
            return false;
        }
    }
    return true;
}

/// The contents of the file of one side to move.
[[nodiscard]] std::vector<std::uint8_t> NalimovBytes(const SolvedValues& values,
                                                     const SolvedEndings& solved, int side,
                                                     CWorkers& workers, CProgress& progress);

/// The contents of an ending's files, by side; the second one is empty where there is one file.
using NalimovContents = std::array<std::vector<std::uint8_t>, 2>;

/// Reads the values of one side to move into the solver's numbering, from the contents of its file.
/// Throws `CTableError` when a position has none.
void ReadNalimovValues(std::span<const std::uint8_t> contents, Colour sideToMove,
                       SolvedValues& values, CWorkers& workers, CProgress& progress);

/// Calls `visit(victim)` for each pawn that can just have made a double step and stands beside a
/// pawn of the side to move. No test of checks.
template <class Visit>
void ForDoubleSteps(const Ending& ending, const EndingSquares& squares, Colour sideToMove,
                    const Visit& visit) {
    if (!ending.HasPawnsOfBoth()) {
        return;
    }
    const Square forward = sideToMove == White ? 8 : -8;
    Bitboard occupied = 0;
    Bitboard takers = 0;
    for (std::size_t man = 0; man < ending.men; ++man) {
        occupied |= BitOf(squares[man]);
        if (ending.man[man] == EndingMan{Pawn, sideToMove}) {
            takers |= BitOf(squares[man]);
        }
    }
    for (std::size_t man = ending.pieces; man < ending.men; ++man) {
        const Square passed = squares[man] + forward;
        if (ending.man[man].colour != sideToMove &&
            RankOf(squares[man]) == (sideToMove == White ? 4 : 3) &&
            (occupied & (BitOf(passed) | BitOf(passed + forward))) == 0 &&
            (PawnAttacks[~sideToMove][passed] & takers) != 0) {
            visit(man);
        }
    }
}

}  // namespace brenquil
