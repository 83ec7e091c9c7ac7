// Attack tables: what every man attacks from every square, and the geometry of the board.
//
// Sliders are looked up in fixed-shift magic bitboards: one AND, one multiplication, one load from
// a full slab per square (2 MiB for rooks, 256 KiB for bishops). The slabs and `Beyond` are built
// once before `main`, all other tables are compile-time constants; nothing is written afterwards,
// so threads share everything without locks. Bit s of a bitboard is square s; iterating from the
// lowest bit upwards is what fixes the order of generated moves.
#pragma once

#include "board/magics.h"
#include "board/table.h"
#include "board/types.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace brenquil {

inline constexpr Bitboard FileA = 0x0101010101010101;
inline constexpr Bitboard FileH = FileA << 7;
inline constexpr Bitboard Rank1 = 0xFF;
inline constexpr Bitboard Rank8 = Rank1 << 56;
inline constexpr Bitboard LightSquares = 0x55AA55AA55AA55AA;
inline constexpr Bitboard DarkSquares = ~LightSquares;  // a1 is dark

/// All squares of a set moved one step; a step off the board vanishes instead of wrapping round.
/// `Step` is one of the eight directions +8, +9, +1, -7, -8, -9, -1, +7 as a square difference.
template <int Step>
[[nodiscard]] constexpr Bitboard Shift(Bitboard set) noexcept {
    constexpr int FileStep = ((Step + 12) & 7) - 4;  // -1, 0 or +1
    static_assert(FileStep >= -1 && FileStep <= 1);
    if constexpr (FileStep > 0) {
        set &= ~FileH;
    } else if constexpr (FileStep < 0) {
        set &= ~FileA;
    }
    if constexpr (Step > 0) {
        return set << Step;
    } else {
        return set >> -Step;
    }
}

/// One step forward for all squares of a set, as that side sees it.
[[nodiscard]] constexpr Bitboard StepForward(Bitboard set, Colour colour) noexcept {
    return colour == White ? Shift<8>(set) : Shift<-8>(set);
}

/// All squares of a rank counted from that side's own first rank, 0 to 7.
[[nodiscard]] constexpr Bitboard RelativeRankMask(int rank, Colour colour) noexcept {
    assert(rank >= 0 && rank <= 7);
    return Rank1 << (8 * (colour == White ? rank : 7 - rank));
}

/// What a set of pawns of one colour attacks.
template <Colour Us>
[[nodiscard]] constexpr Bitboard PawnAttackSet(Bitboard pawns) noexcept {
    return Shift<Forward(Us) - 1>(pawns) | Shift<Forward(Us) + 1>(pawns);
}

/// The slow reference: walks the rays of a rook or bishop from `square` until the first occupied
/// square, which belongs to the result. Builds the tables below; the tests compare the lookups
/// with it.
[[nodiscard]] constexpr Bitboard WalkRays(Square square, Bitboard occupied,
                                          bool diagonal) noexcept {
    constexpr int Steps[2][4][2] = {{{0, 1}, {1, 0}, {0, -1}, {-1, 0}},
                                    {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}}};
    Bitboard attacks = 0;
    for (const auto& step : Steps[diagonal ? 1 : 0]) {
        int file = FileOf(square) + step[0];
        int rank = RankOf(square) + step[1];
        while (file >= 0 && file <= 7 && rank >= 0 && rank <= 7) {
            const Bitboard reached = BitOf(MakeSquare(file, rank));
            attacks |= reached;
            if ((occupied & reached) != 0) {
                break;
            }
            file += step[0];
            rank += step[1];
        }
    }
    return attacks;
}

namespace tables {

template <class Rule>
constexpr auto BySquare(Rule rule) noexcept {
    SquareTable<decltype(rule(A1))> table{};
    for (Square square = A1; square <= H8; ++square) {
        table[square] = rule(square);
    }
    return table;
}

constexpr Bitboard KnightMoves(Square square) noexcept {
    const Bitboard bit = BitOf(square);
    const Bitboard sideways = Shift<1>(bit) | Shift<-1>(bit);
    const Bitboard farSideways = Shift<1>(Shift<1>(bit)) | Shift<-1>(Shift<-1>(bit));
    return sideways << 16 | sideways >> 16 | farSideways << 8 | farSideways >> 8;
}

constexpr Bitboard KingMoves(Square square) noexcept {
    const Bitboard bit = BitOf(square);
    const Bitboard row = bit | Shift<1>(bit) | Shift<-1>(bit);
    return (row | Shift<8>(row) | Shift<-8>(row)) & ~bit;
}

/// A ray's last square at the edge never changes what lies before it, so it is not relevant.
constexpr Bitboard RelevantOccupancy(Square square, bool diagonal) noexcept {
    const Bitboard rank = Rank1 << (8 * RankOf(square));
    const Bitboard file = FileA << FileOf(square);
    const Bitboard edges = ((Rank1 | Rank8) & ~rank) | ((FileA | FileH) & ~file);
    return WalkRays(square, 0, diagonal) & ~edges;
}

constexpr int ChebyshevDistance(Square a, Square b) noexcept {
    const int files = FileOf(a) > FileOf(b) ? FileOf(a) - FileOf(b) : FileOf(b) - FileOf(a);
    const int ranks = RankOf(a) > RankOf(b) ? RankOf(a) - RankOf(b) : RankOf(b) - RankOf(a);
    return files > ranks ? files : ranks;
}

template <int Step>
constexpr void WalkBetween(SquareTable<SquareTable<Bitboard>>& table, Square from) noexcept {
    Bitboard passed = 0;
    Square reached = from;
    for (Bitboard bit = Shift<Step>(BitOf(from)); bit != 0; bit = Shift<Step>(bit)) {
        reached += Step;
        table[from][reached] = passed;
        passed |= bit;
    }
}

constexpr SquareTable<SquareTable<Bitboard>> MakeBetween() noexcept {
    SquareTable<SquareTable<Bitboard>> table{};
    for (Square square = A1; square <= H8; ++square) {
        WalkBetween<8>(table, square);
        WalkBetween<9>(table, square);
        WalkBetween<1>(table, square);
        WalkBetween<-7>(table, square);
        WalkBetween<-8>(table, square);
        WalkBetween<-9>(table, square);
        WalkBetween<-1>(table, square);
        WalkBetween<7>(table, square);
    }
    return table;
}

}  // namespace tables

inline constexpr auto KnightAttacks = tables::BySquare(tables::KnightMoves);
inline constexpr auto KingAttacks = tables::BySquare(tables::KingMoves);

/// [colour][square]: what a pawn of that colour on that square attacks. Read the other way round,
/// `PawnAttacks[Black][s]` holds the squares from which a white pawn attacks s.
inline constexpr std::array<SquareTable<Bitboard>, 2> PawnAttacks = {
    tables::BySquare([](Square s) { return Shift<-9>(BitOf(s)) | Shift<-7>(BitOf(s)); }),
    tables::BySquare([](Square s) { return Shift<7>(BitOf(s)) | Shift<9>(BitOf(s)); })};

/// Relevant occupancy of the slider lookups: the rays without their last square at the edge.
inline constexpr auto RookMasks =
    tables::BySquare([](Square s) { return tables::RelevantOccupancy(s, false); });
inline constexpr auto BishopMasks =
    tables::BySquare([](Square s) { return tables::RelevantOccupancy(s, true); });

/// Attacks on the empty board.
inline constexpr auto RookRays = tables::BySquare([](Square s) { return WalkRays(s, 0, false); });
inline constexpr auto BishopRays = tables::BySquare([](Square s) { return WalkRays(s, 0, true); });

inline constexpr auto QueenRays =
    tables::BySquare([](Square s) { return RookRays[s] | BishopRays[s]; });

/// [a][b]: squares strictly between two squares of a common rank, file or diagonal; empty for
/// adjacent squares, for a square and itself and for squares that share no line.
inline constexpr SquareTable<SquareTable<Bitboard>> Between = tables::MakeBetween();

inline constexpr LineTable<Bitboard> FileMasks = {
    {FileA, FileA << 1, FileA << 2, FileA << 3, FileA << 4, FileA << 5, FileA << 6, FileH}};

/// [a][b]: king steps between two squares, the larger of the file and the rank difference, 0-7.
inline constexpr auto Distance = tables::BySquare([](Square a) {
    SquareTable<std::uint8_t> row{};
    for (Square b = A1; b <= H8; ++b) {
        row[b] = static_cast<std::uint8_t>(tables::ChebyshevDistance(a, b));
    }
    return row;
});

/// Attack sets of one slider for every square and every index of its lookup. Entries that no
/// occupancy reaches stay zero and are never read. Built by the constructor of the one object of
/// each kind, before `main`, so no object of static storage may hold a `CPosition`.
template <std::size_t Size, bool Diagonal>
class CSliderSlabs {
public:
    CSliderSlabs() noexcept;

    [[nodiscard]] const std::array<Bitboard, Size>& operator[](Square square) const noexcept {
        return slabs_[square];
    }

private:
    // Zero from the start, as all of static storage: clearing it again would touch every page.
    SquareTable<std::array<Bitboard, Size>> slabs_;
};

/// [a][b]: squares of the line from `a` to `b` that lie behind `b`, up to the edge; empty for a
/// square and itself and for squares that share no line. Only a slider there can be uncovered
/// before a king on `a` by a man that leaves `b`. Built before `main` like the slabs: as a constant
/// it would make every program longer by its 32 KiB.
class CBeyondTable {
public:
    CBeyondTable() noexcept;

    [[nodiscard]] const SquareTable<Bitboard>& operator[](Square square) const noexcept {
        return squares_[square];
    }

private:
    SquareTable<SquareTable<Bitboard>> squares_{};
};

extern const CBeyondTable Beyond;

inline constexpr unsigned RookShift = 52;
inline constexpr unsigned BishopShift = 55;

extern const CSliderSlabs<4096, false> RookAttacks;
extern const CSliderSlabs<512, true> BishopAttacks;

/// What a rook on `square` attacks; the first occupied square of a ray, friend or foe, included.
[[nodiscard]] inline Bitboard RookAttacksFrom(Square square, Bitboard occupied) noexcept {
    return RookAttacks[square][(occupied & RookMasks[square]) * RookMagics[square] >> RookShift];
}

/// The same for a bishop.
[[nodiscard]] inline Bitboard BishopAttacksFrom(Square square, Bitboard occupied) noexcept {
    return BishopAttacks[square]
                        [(occupied & BishopMasks[square]) * BishopMagics[square] >> BishopShift];
}

/// The same for a queen, who has no table of her own.
[[nodiscard]] inline Bitboard QueenAttacksFrom(Square square, Bitboard occupied) noexcept {
    return RookAttacksFrom(square, occupied) | BishopAttacksFrom(square, occupied);
}

}  // namespace brenquil
