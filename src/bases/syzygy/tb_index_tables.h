// The fixed tables of a Syzygy index: how squares are folded, ordered and counted.
//
// The format numbers positions after folding the board by its symmetries: eightfold without pawns,
// left to right with pawns. Everything here is computed by the compiler from the rule that defines
// it; a table that is a mere numbering stands as numbers.
#pragma once

#include "board/attacks.h"
#include "board/types.h"
#include "platform/bits.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace brenquil {

/// [i][j]: the number of ways to choose i + 1 of j things.
inline constexpr auto BinomialTable = [] {
    // By Pascal's triangle: the last thing is chosen or not.
    std::array<std::array<std::uint32_t, 64>, 5> table{};
    for (std::size_t j = 1; j < 64; ++j) {
        table[0][j] = table[0][j - 1] + 1;
        for (std::size_t i = 1; i < table.size(); ++i) {
            table[i][j] = table[i][j - 1] + table[i - 1][j - 1];
        }
    }
    return table;
}();

/// The sign of rank minus file: 0 on the a1-h8 diagonal, positive above it.
inline constexpr auto OffDiagonal = tables::BySquare([](Square s) {
    const int difference = RankOf(s) - FileOf(s);
    return static_cast<std::int8_t>((difference > 0 ? 1 : 0) - (difference < 0 ? 1 : 0));
});

/// The square reflected in the a1-h8 diagonal.
inline constexpr auto DiagonalFlip =
    tables::BySquare([](Square s) { return ToByte(MakeSquare(RankOf(s), FileOf(s))); });

/// The ten squares to which the symmetries of a board without pawns fold every square, by class.
inline constexpr std::array<Square, 10> TriangleSquares = {B1, C1, D1, C2, D2, D3, A1, B2, C3, D4};

/// The number of a square's representative in `TriangleSquares`.
inline constexpr auto TriangleClass = tables::BySquare([](Square s) {
    int file = FileOf(s) > 3 ? 7 - FileOf(s) : FileOf(s);
    int rank = RankOf(s) > 3 ? 7 - RankOf(s) : RankOf(s);
    if (rank > file) {
        std::swap(file, rank);
    }
    std::uint8_t found = 0;
    while (TriangleSquares[found] != MakeSquare(file, rank)) {
        ++found;
    }
    return found;
});

/// Squares below the a1-h8 diagonal 0 to 27, rank by rank, and their mirror images alike; the
/// squares of the diagonal 28 to 35 from a1 on.
inline constexpr auto LowerHalf = [] {
    SquareTable<std::uint8_t> table;
    std::uint8_t number = 0;
    for (Square s = A1; s <= H8; ++s) {
        if (FileOf(s) > RankOf(s)) {
            table[s] = table[MakeSquare(RankOf(s), FileOf(s))] = number++;
        }
    }
    for (int i = 0; i < 8; ++i) {
        table[MakeSquare(i, i)] = number++;
    }
    return table;
}();

/// a1 to h8 on one long diagonal 0 to 7, h1 to a8 on the other 8 to 15; 0 elsewhere.
inline constexpr auto DiagonalClass = tables::BySquare([](Square s) {
    const int onMain = FileOf(s) == RankOf(s) ? FileOf(s) : 0;
    return ToByte(FileOf(s) + RankOf(s) == 7 ? 8 + RankOf(s) : onMain);
});

/// 0 to 23 for a2 to a7, b2 to b7 and so on to d7; the files e to h as their mirror images. 0 on
/// the first and last rank.
inline constexpr auto LeadPawnOrder = tables::BySquare([](Square s) {
    const int file = FileOf(s) > 3 ? 7 - FileOf(s) : FileOf(s);
    const bool isEdge = RankOf(s) == 0 || RankOf(s) == 7;
    return ToByte(isEdge ? 0 : 6 * file + RankOf(s) - 1);
});

/// The squares in the order of `LeadPawnOrder`.
inline constexpr auto LeadPawnSquares = [] {
    std::array<Square, 24> table{};
    for (int i = 0; i < 24; ++i) {
        table[i] = MakeSquare(i / 6, i % 6 + 1);
    }
    return table;
}();

// clang-format off
/// A numbering of the squares of the ranks 2 to 7 from the edges towards the middle, each square
/// beside its mirror image.
inline constexpr SquareTable<std::uint8_t> PawnTwist = {{
     0,  0,  0,  0,  0,  0,  0,  0,
    47, 35, 23, 11, 10, 22, 34, 46,
    45, 33, 21,  9,  8, 20, 32, 44,
    43, 31, 19,  7,  6, 18, 30, 42,
    41, 29, 17,  5,  4, 16, 28, 40,
    39, 27, 15,  3,  2, 14, 26, 38,
    37, 25, 13,  1,  0, 12, 24, 36,
     0,  0,  0,  0,  0,  0,  0,  0,
}};
// clang-format on

/// Of the 462 pairs of two kings on the folded board, those with a king off the diagonal.
inline constexpr int KingPairsOffDiagonal = 441;

/// [class of the first king][square of the second]: number of the pair, -1 for kings that touch.
/// The pairs that lie wholly on the diagonal come last.
inline constexpr auto KingPairIndex = [] {
    std::array<SquareTable<std::int16_t>, 10> table{};
    std::int16_t number = 0;
    for (const bool diagonalPairs : {false, true}) {
        for (std::size_t c = 0; c < 10; ++c) {
            for (Square s = A1; s <= H8; ++s) {
                const bool onDiagonal = c >= 6 && FileOf(s) == RankOf(s);
                const bool isMirrored = c >= 6 && RankOf(s) > FileOf(s);
                const bool touches = tables::ChebyshevDistance(TriangleSquares[c], s) <= 1;
                if (isMirrored || touches) {
                    table[c][s] = -1;
                } else if (onDiagonal == diagonalPairs) {
                    table[c][s] = number++;
                }
            }
        }
    }
    return table;
}();

/// Placements of the leading group, by encoding type.
inline constexpr std::array<std::uint32_t, 3> PivotFactors = {31332, 28056, 462};

/// [pawns - 1][`LeadPawnOrder`]: placements that come before those with this first pawn, within its
/// file. [pawns - 1][file] of the second table: all placements of a file.
struct LeadPawnTables {
    std::array<std::array<std::uint32_t, 24>, 5> index{};
    std::array<std::array<std::uint32_t, 4>, 5> factor{};
};

inline constexpr LeadPawnTables LeadPawns = [] {
    LeadPawnTables result;
    for (std::size_t i = 0; i < 5; ++i) {
        for (std::size_t file = 0; file < 4; ++file) {
            std::uint32_t sum = 0;
            for (std::size_t j = 6 * file; j < 6 * file + 6; ++j) {
                result.index[i][j] = sum;
                sum += i == 0 ? 1 : BinomialTable[i - 1][PawnTwist[LeadPawnSquares[j]]];
            }
            result.factor[i][file] = sum;
        }
    }
    return result;
}();

inline constexpr const auto& LeadPawnIndex = LeadPawns.index;
inline constexpr const auto& LeadPawnFactor = LeadPawns.factor;

}  // namespace brenquil
