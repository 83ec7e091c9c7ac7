// The rules of the game once more, slowly: a mailbox, loops over files and ranks, no bitboards and
// no tables. The tests hold the board room, the book's keys and the solver of endings against it,
// so it is independent on purpose: it shares nothing with them but the numbering of squares, pieces
// and move words. (Its counterpart for games played over pipes is tools/chess_rules.py.)
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <array>
#include <cstdint>
#include <vector>

namespace brenquil {

struct SlowPosition {
    struct Right {
        bool held;
        int kingFrom;
        int rookFrom;
    };

    /// An empty board, White to move.
    SlowPosition();

    /// The start of the game.
    [[nodiscard]] static SlowPosition AtStart();

    /// Takes over the men, the side, the en passant square, the clock and who castles from where.
    explicit SlowPosition(const CPosition& position);

    [[nodiscard]] bool IsSquareAttacked(int square, int by) const;
    [[nodiscard]] bool IsAnyKingAttacked(int colour) const;

    /// The squares of the men of `by` that attack a square.
    [[nodiscard]] std::vector<int> Attackers(int square, int by) const;

    /// Pseudo-legal moves in the order of the engine's generator, without a limit to their number.
    [[nodiscard]] std::vector<std::uint32_t> Moves(bool captures, bool quiets,
                                                   std::uint64_t fromMask = ~std::uint64_t{0},
                                                   std::uint64_t toMask = ~std::uint64_t{0}) const;

    /// The order of all moves, those kept that could answer a check.
    [[nodiscard]] std::vector<std::uint32_t> Evasions() const;

    /// Plays a move. False if it leaves a king of the mover attacked; the position must not be used
    /// after that.
    [[nodiscard]] bool Make(std::uint32_t word);

    /// The castling rights as bits.
    [[nodiscard]] unsigned RightsBits() const;

    std::array<int, 64> board;
    int side;
    int enPassant;
    std::int64_t clock;
    std::array<Right, 4> rights;

private:
    void AddPawnCaptures(std::vector<std::uint32_t>& moves, std::uint64_t fromMask,
                         std::uint64_t toMask) const;
    void AddPawnSteps(std::vector<std::uint32_t>& moves, std::uint64_t fromMask,
                      std::uint64_t toMask) const;
    void AddPieceMoves(std::vector<std::uint32_t>& moves, int type, int from, bool captures,
                       bool quiets, std::uint64_t toMask) const;
    void AddCastling(std::vector<std::uint32_t>& moves, int king, int index) const;
    [[nodiscard]] std::array<bool, 64> Reach(int type, int from) const;
    [[nodiscard]] bool IsMan(int square, int type, int colour) const;
};

}  // namespace brenquil
