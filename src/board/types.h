// The vocabulary of the engine: squares, colours, pieces, bitboards, moves and scores.
//
// Squares and scores are plain integers, because arithmetic on them is the point. Colours, piece
// types and pieces are enumerations that convert to an integer (they index arrays) but never back
// by accident. Everything here is trivially copyable and costs what the bare integer costs.
#pragma once

#include <cassert>
#include <cstdint>
#include <type_traits>

namespace brenquil {

/// 0 to 63, rank by rank from White's side: a1 = 0, b1 = 1, h1 = 7, a2 = 8, h8 = 63.
/// `SquareNone` says that there is no square (no en passant square, no king).
using Square = int;

// clang-format off
enum : Square {
    A1, B1, C1, D1, E1, F1, G1, H1,
    A2, B2, C2, D2, E2, F2, G2, H2,
    A3, B3, C3, D3, E3, F3, G3, H3,
    A4, B4, C4, D4, E4, F4, G4, H4,
    A5, B5, C5, D5, E5, F5, G5, H5,
    A6, B6, C6, D6, E6, F6, G6, H6,
    A7, B7, C7, D7, E7, F7, G7, H7,
    A8, B8, C8, D8, E8, F8, G8, H8,
    SquareNone
};

// clang-format on

[[nodiscard]] constexpr int FileOf(Square square) noexcept {
    return square & 7;
}

[[nodiscard]] constexpr int RankOf(Square square) noexcept {
    return square >> 3;
}

/// File and rank count from 0 to 7.
[[nodiscard]] constexpr Square MakeSquare(int file, int rank) noexcept {
    assert(file >= 0 && file <= 7 && rank >= 0 && rank <= 7);
    return rank * 8 + file;
}

/// Black comes first, so that arrays by colour hold Black at index 0 and the position's
/// `sideToMove` is non-zero for White. The pieces' numbering rests on this order.
enum Colour : std::uint8_t { Black = 0, White = 1 };

[[nodiscard]] constexpr Colour operator~(Colour colour) noexcept {
    return static_cast<Colour>(colour ^ 1U);
}

/// The square difference of a step forward as that side sees it: +8 for White, -8 for Black.
[[nodiscard]] constexpr int Forward(Colour colour) noexcept {
    return colour * 16 - 8;
}

/// The rank of a square as that side sees it: 0 is the side's own first rank.
[[nodiscard]] constexpr int RelativeRank(Square square, Colour colour) noexcept {
    return colour == White ? RankOf(square) : 7 - RankOf(square);
}

/// The rank on which the side's king and rooks start.
[[nodiscard]] constexpr int HomeRank(Colour colour) noexcept {
    return colour == White ? 0 : 7;
}

/// The square mirrored top to bottom, where it is for the other side what it was for this one.
[[nodiscard]] constexpr Square FlipRank(Square square) noexcept {
    return square ^ 56;
}

enum PieceType : std::uint8_t { Pawn, Knight, Bishop, Rook, Queen, King };

/// Type * 2 + colour: the low bit is the colour, and flipping it gives the same man of the other
/// side. The order is that of the opening book format's key table.
enum Piece : std::uint8_t {
    BlackPawn,
    WhitePawn,
    BlackKnight,
    WhiteKnight,
    BlackBishop,
    WhiteBishop,
    BlackRook,
    WhiteRook,
    BlackQueen,
    WhiteQueen,
    BlackKing,
    WhiteKing,
    PieceNone
};

inline constexpr int PieceCodes = 12;  ///< real pieces; `PieceNone` is the code after the last

[[nodiscard]] constexpr Piece MakePiece(PieceType type, Colour colour) noexcept {
    return static_cast<Piece>(type * 2 + colour);
}

[[nodiscard]] constexpr Colour ColourOf(Piece piece) noexcept {
    return static_cast<Colour>(piece & 1U);
}

/// For `PieceNone` the value is 6, one past `King`.
[[nodiscard]] constexpr PieceType TypeOf(Piece piece) noexcept {
    return static_cast<PieceType>(piece >> 1U);
}

/// A set of squares: bit s stands for square s.
using Bitboard = std::uint64_t;

[[nodiscard]] constexpr Bitboard BitOf(Square square) noexcept {
    assert(square >= A1 && square <= H8);
    return Bitboard{1} << square;
}

inline constexpr Bitboard AllSquares = ~Bitboard{0};

/// A score in units of which a pawn is worth 100 by default. See `board/score.h` for the mate band.
using Score = int;

/// What a move does beyond carrying a man from one square to another.
enum class MoveKind : std::uint8_t { Normal, Castling, EnPassant, Promotion };

/// Order of the promotion index inside a move word.
enum PromotionIndex : std::uint8_t { PromoteRook, PromoteBishop, PromoteKnight, PromoteQueen };

/// Order of the four castling rights, in a move word and in `CPosition::castling`.
enum CastlingIndex : std::uint8_t { WhiteKingSide, WhiteQueenSide, BlackKingSide, BlackQueenSide };

inline constexpr int CastlingRightsCount = 4;

/// One move in a 32-bit word.
///
/// | bits  | width | meaning                                                            |
/// |-------|-------|--------------------------------------------------------------------|
/// | 0-5   | 6     | from; in castling the king's square                                |
/// | 6-11  | 6     | to; in castling the king's destination, never the rook's square    |
/// | 12-13 | 2     | `MoveKind`                                                         |
/// | 14-15 | 2     | `PromotionIndex` or `CastlingIndex`; 0 for the other kinds         |
/// | 16-31 | 16    | signed sort key or score of a list entry; no part of the identity  |
///
/// The word 0 (a1 to a1) is "no move": it can never be generated. Two moves are the same move
/// when their low halves are equal, whatever their sort keys say, which is what `SameMove` tests.
/// The type is trivial so that a list of moves costs nothing to set up.
struct Move {
    std::uint32_t word;

    [[nodiscard]] static constexpr Move
    Make(Square from, Square to, MoveKind kind = MoveKind::Normal, unsigned index = 0) noexcept {
        assert(from >= A1 && from <= H8 && to >= A1 && to <= H8 && index <= 3);
        return Move{static_cast<std::uint32_t>(from) | static_cast<std::uint32_t>(to) << 6U |
                    static_cast<std::uint32_t>(kind) << 12U | index << 14U};
    }

    [[nodiscard]] constexpr Square From() const noexcept { return word & 63U; }

    [[nodiscard]] constexpr Square To() const noexcept { return word >> 6U & 63U; }

    [[nodiscard]] constexpr MoveKind Kind() const noexcept {
        return static_cast<MoveKind>(word >> 12U & 3U);
    }

    /// `PromotionIndex` or `CastlingIndex`, by kind.
    [[nodiscard]] constexpr unsigned Index() const noexcept { return word >> 14U & 3U; }

    /// The 16 bits that make the move, as the hash table and the killers keep it.
    [[nodiscard]] constexpr std::uint16_t Identity() const noexcept {
        return static_cast<std::uint16_t>(word);
    }

    [[nodiscard]] constexpr std::int16_t Order() const noexcept {
        return static_cast<std::int16_t>(word >> 16U);
    }

    constexpr void SetOrder(int order) noexcept {
        word = (word & 0xFFFFU) | static_cast<std::uint32_t>(order) << 16U;
    }

    [[nodiscard]] constexpr bool IsNone() const noexcept { return word == 0; }
};

static_assert(sizeof(Move) == 4 && std::is_trivial_v<Move>);

inline constexpr Move NoMove{0};

[[nodiscard]] constexpr bool SameMove(Move a, Move b) noexcept {
    return a.Identity() == b.Identity();
}

/// The keys are the signed upper halves: setting the lower half makes "higher" strict.
[[nodiscard]] constexpr bool HasHigherKey(Move move, Move than) noexcept {
    return static_cast<std::int32_t>(move.word) > static_cast<std::int32_t>(than.word | 0xFFFFU);
}

/// The man that a promotion makes, by `PromotionIndex`.
[[nodiscard]] constexpr PieceType PromotionType(unsigned index) noexcept {
    constexpr PieceType Types[] = {Rook, Bishop, Knight, Queen};
    assert(index <= PromoteQueen);
    return Types[index];
}

}  // namespace brenquil
