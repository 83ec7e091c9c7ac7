// Pseudo-legal move generation.
//
// The moves it writes may leave the mover's own king attacked, and `CPosition::MakeMove` refuses
// those. Castling is the exception: its whole test, attacked squares included, is done here. One
// generator serves all purposes: the caller names the kinds of moves and may limit their squares by
// two masks. The order of the output is fixed and part of the engine's behaviour, because ties of
// the move ordering fall back on it. Pawn moves are produced set-wise by shifts; nothing is
// allocated.
#pragma once

#include "board/move_list.h"
#include "board/position.h"
#include "board/types.h"

#include <cstdint>

namespace brenquil {

/// Which moves to generate.
enum class MoveKinds : std::uint8_t {
    Captures = 1,  ///< captures, en passant and all promotions, capturing or not
    Quiets = 2,    ///< everything else, castling (never in check) included
    All = 3
};

/// Generates on the position it is bound to. Each thread uses its own; there is no other state.
class CMoveGenerator {
public:
    explicit CMoveGenerator(const CPosition& position) noexcept : position_(&position) {}

    /// Appends moves of the side to move, of the kinds that `wanted` names.
    /// `fromMask` limits the squares of the moving men, kings included. `toMask` limits the targets
    /// of pawns, knights, bishops, rooks and queens, but not of king moves, castling and en
    /// passant: a king can step away from a check, and an en passant capture can answer one.
    ///
    /// Order: pawns (captures towards the a-file, captures towards the h-file, the same two for
    /// promotions, promoting pushes, en passant, single steps, double steps), knights, bishops,
    /// rooks, queens, kings with their castling, each in ascending order of origin and target. A
    /// promotion stands as queen, knight, bishop, rook.
    void GenerateMoves(MoveList& list, MoveKinds wanted, Bitboard fromMask = AllSquares,
                       Bitboard toMask = AllSquares) const noexcept;

    /// Fills an empty list with the moves of `GenerateMoves(list, MoveKinds::Captures)`, with the
    /// keys of `ScoreCaptures`, and makes the first selection on the way: the best move stands
    /// first, and the others stand as `CSelectionList::Take` would have left them.
    void GenerateCaptures(MoveList& list) const noexcept;

    /// Appends the moves that may answer a check: king moves, and moves that take a checking man
    /// or step between. Double checks are not told apart; `MakeMove` sorts them out.
    void GenerateEvasions(MoveList& list) const noexcept;

    /// Appends the castling of one right if king, rights, empty and unattacked squares allow it.
    void GenerateCastling(MoveList& list, Square kingSquare, CastlingIndex index) const noexcept;

    /// Would the generator produce this move here? For moves that come from elsewhere: hash table,
    /// killers, book. Only the low half of the word counts. Castling onto the square of the own
    /// rook is refused, so it is played only from a fresh list.
    [[nodiscard]] bool IsStoredMoveValid(Move move) const noexcept;

    /// The same with castling onto the square of the own rook allowed, so it holds of every move
    /// that the generator writes and of no other. For a move that was made for another position: of
    /// the same men with other castling rooks, as after `CPosition::CopyFrom`, or of a line.
    [[nodiscard]] bool IsPseudoLegal(Move move) const noexcept;

private:
    [[nodiscard]] bool IsCastlingPossible(Move move) const noexcept;
    [[nodiscard]] bool CanCastle(Square kingSquare, CastlingIndex index) const noexcept;

    const CPosition* position_;
};

}  // namespace brenquil
