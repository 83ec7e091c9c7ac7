// The geometry that only the evaluation asks for: files and squares around a pawn, and how far the
// kings of an ending stand from edges and corners. Compile-time constants.
#pragma once

#include "board/attacks.h"
#include "board/table.h"
#include "board/types.h"
#include "platform/bits.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace brenquil {

namespace tables {

/// Everything strictly in front, on the pawn's own and both adjacent files, to the far edge.
template <int Step>
constexpr Bitboard PassedSpan(Square square) noexcept {
    const Bitboard ahead = Shift<Step>(BitOf(square));
    Bitboard span = ahead | Shift<1>(ahead) | Shift<-1>(ahead);
    for (int rank = 0; rank < 6; ++rank) {
        span |= Shift<Step>(span);
    }
    return span;
}

constexpr std::uint8_t SmallerDistance(Square square, Square a, Square b) noexcept {
    return ToByte(std::min(ChebyshevDistance(square, a), ChebyshevDistance(square, b)));
}

}  // namespace tables

/// The files to the left and right of a file; one file for a and h.
inline constexpr LineTable<Bitboard> AdjacentFiles = [] {
    LineTable<Bitboard> table{};
    for (int file = 0; file < 8; ++file) {
        table[file] = Shift<1>(FileMasks[file]) | Shift<-1>(FileMasks[file]);
    }
    return table;
}();

/// [colour][square]: where no enemy pawn may stand for a pawn of that colour to be passed.
inline constexpr std::array<SquareTable<Bitboard>, 2> PassedMasks = {
    tables::BySquare(tables::PassedSpan<-8>), tables::BySquare(tables::PassedSpan<8>)};

/// 0 on the edge, 1 on the next ring, 2 on the next, 3 on the four central squares.
inline constexpr auto EdgeRing = tables::BySquare([](Square s) {
    const int file = std::min(FileOf(s), 7 - FileOf(s));
    const int rank = std::min(RankOf(s), 7 - RankOf(s));
    return ToByte(std::min(file, rank));
});

// clang-format off
/// King steps to the nearest corner, at most 3.
inline constexpr SquareTable<std::uint8_t> CornerNear = {{
    0, 1, 2, 3, 3, 2, 1, 0,
    1, 1, 2, 3, 3, 2, 1, 1,
    2, 2, 2, 3, 3, 2, 2, 2,
    3, 3, 3, 3, 3, 3, 3, 3,
    3, 3, 3, 3, 3, 3, 3, 3,
    2, 2, 2, 3, 3, 2, 2, 2,
    1, 1, 2, 3, 3, 2, 1, 1,
    0, 1, 2, 3, 3, 2, 1, 0,
}};
// clang-format on

/// [0]: `Distance` to the nearer dark corner (a1, h8); [1]: to the nearer light one (h1, a8).
inline constexpr std::array<SquareTable<std::uint8_t>, 2> BishopCorner = {
    tables::BySquare([](Square s) { return tables::SmallerDistance(s, A1, H8); }),
    tables::BySquare([](Square s) { return tables::SmallerDistance(s, H1, A8); })};

}  // namespace brenquil
