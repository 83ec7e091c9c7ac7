// The board on which the Syzygy probes look ahead: a small record, copied for every move.
//
// A probe follows captures and single moves of positions with few men. It needs no keys, no history
// and no castling, so a copy of 66 bytes with its moves made by masks is all there is; nothing of
// CPosition is touched. Attacks come from the tables of the board room.
//
// The order of generated moves is fixed: kings, queens, rooks, bishops, knights, pawns; origins
// ascending, destinations ascending, captures and other moves of one man mixed. The choice among
// equal moves at the root rests on it.
#pragma once

#include "board/types.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace brenquil {

/// Occupancies by colour and by type; a man stands in one of each.
struct TbPosition {
    Bitboard white = 0;
    Bitboard black = 0;
    Bitboard kings = 0;
    Bitboard queens = 0;
    Bitboard rooks = 0;
    Bitboard bishops = 0;
    Bitboard knights = 0;
    Bitboard pawns = 0;
    std::uint8_t rule50 = 0;  ///< half-moves since the last capture or pawn move
    std::uint8_t ep = 0;      ///< en passant square, 0 for none; only with a pawn ready to take
    bool turn = true;         ///< White is to move

    [[nodiscard]] Bitboard Own() const noexcept { return turn ? white : black; }

    [[nodiscard]] Bitboard Enemy() const noexcept { return turn ? black : white; }

    [[nodiscard]] Bitboard Occupied() const noexcept { return white | black; }
};

/// The men of one kind, for a table by kind.
using TbMen = Bitboard TbPosition::*;

/// Promotion code of a `TbMove` and of the result word of a root probe.
enum TbPromotion : std::uint8_t {
    TbPromoteNone,
    TbPromoteQueen,
    TbPromoteRook,
    TbPromoteBishop,
    TbPromoteKnight
};

/// One move in 16 bits: destination in bits 0 to 5, origin in 6 to 11, promotion in 12 to 14.
struct TbMove {
    std::uint16_t word;

    [[nodiscard]] static constexpr TbMove Make(Square from, Square to,
                                               TbPromotion promotion = TbPromoteNone) noexcept {
        assert(from >= A1 && from <= H8 && to >= A1 && to <= H8);
        return TbMove{static_cast<std::uint16_t>(to | from << 6 | promotion << 12)};
    }

    [[nodiscard]] constexpr Square To() const noexcept { return word & 63; }

    [[nodiscard]] constexpr Square From() const noexcept { return word >> 6 & 63; }

    [[nodiscard]] constexpr TbPromotion Promotion() const noexcept {
        return static_cast<TbPromotion>(word >> 12 & 7);
    }

    friend constexpr bool operator==(TbMove, TbMove) = default;
};

/// No move at all; as an answer of the root probe it means failure.
inline constexpr TbMove TbMoveNone{0};
/// Answers of the root probe for a position in which there is nothing to choose.
inline constexpr TbMove TbMoveCheckmate{0xFFFE};
inline constexpr TbMove TbMoveStalemate{0xFFFF};

/// Moves in the order of their generation. What finds no room is dropped; positions of up to six
/// men never come near the limit.
class TbMoveList {
public:
    static constexpr std::size_t Capacity = 256;

    void Append(TbMove move) noexcept {
        if (count_ < Capacity) [[likely]] {
            moves_[count_++] = move;
        }
    }

    [[nodiscard]] std::size_t size() const noexcept { return count_; }

    [[nodiscard]] const TbMove* begin() const noexcept { return moves_.data(); }

    [[nodiscard]] const TbMove* end() const noexcept { return moves_.data() + count_; }

private:
    std::size_t count_ = 0;
    std::array<TbMove, Capacity> moves_;  // filled as far as count_ says
};

/// All pseudo-legal moves, en passant captures included.
void TbGenMoves(const TbPosition& position, TbMoveList& list) noexcept;

/// Captures of all men, en passant captures and all promotions, capturing or not.
void TbGenCaptures(const TbPosition& position, TbMoveList& list) noexcept;

/// Pawn moves straight ahead, by one or two squares, promotions included.
void TbGenPawnQuiets(const TbPosition& position, TbMoveList& list) noexcept;

/// En passant captures.
void TbGenEp(const TbPosition& position, TbMoveList& list) noexcept;

/// Is the pseudo-legal move an en passant capture.
[[nodiscard]] bool TbIsEnPassant(const TbPosition& position, TbMove move) noexcept;

/// Sets `to` to the position after the pseudo-legal move.
/// @return whether the move was legal: the mover has a king and it cannot be captured now
bool TbDoMove(TbPosition& to, const TbPosition& from, TbMove move) noexcept;

/// Can the king of the side to move be captured; false when it has none.
[[nodiscard]] bool TbInCheck(const TbPosition& position) noexcept;

/// Has the side to move a legal move. `exceptEp` leaves en passant captures out of the count.
[[nodiscard]] bool TbHasLegalMove(const TbPosition& position, bool exceptEp) noexcept;

/// Is the side to move checkmated.
[[nodiscard]] bool TbIsCheckmate(const TbPosition& position) noexcept;

/// Is this a position of the game: one king each, every man in one place, no pawn on the first or
/// last rank, and the side not to move not in check.
[[nodiscard]] bool TbIsValid(const TbPosition& position) noexcept;

/// Has each side one king and no pawn a place on the first or last rank. Less than `TbIsValid`:
/// what the tables' index needs to make sense.
[[nodiscard]] bool TbFitsTables(const TbPosition& position) noexcept;

}  // namespace brenquil
