// Pseudo-legal move generation.
//
// The moves it writes may leave the mover's own king attacked, and `CPosition::MakeMove` refuses
// those. Castling is the exception: its whole test, attacked squares included, is done here. One
// generator serves all purposes: the caller names the kinds of moves and may limit their squares by
// two masks. The order of the output is fixed and part of the engine's behaviour, because ties of
// the move ordering fall back on it. Pawn moves are produced set-wise by shifts; nothing is
// allocated.
#pragma once

#include "board/attacks.h"
#include "board/move_list.h"
#include "board/position.h"
#include "board/types.h"
#include "platform/bits.h"

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

    /// Fills an empty list with the moves of `GenerateMoves(list, MoveKinds::Captures)` and the
    /// keys of `ScoreCaptures`, and makes the first selection along the way: the best move comes
    /// first, and the others are where `TakeBest` would have left them.
    void GenerateCaptures(MoveList& list) const noexcept;

    /// Hands the moves of `GenerateMoves` in its order to a sink instead, which can arrange them as
    /// they come:
    ///
    ///     sink.Man(type, from, targets);   // each target of a man that is not a pawn
    ///     sink.Pawn(from, to);             // a pawn's move that does not promote
    ///     sink.Special(move);              // a promotion, en passant or castling
    template <MoveKinds Wanted, class Sink>
    void Visit(Sink& sink, Bitboard fromMask = AllSquares,
               Bitboard toMask = AllSquares) const noexcept {
        if (position_->sideToMove == White) {
            VisitColour<White, Wanted>(sink, fromMask, toMask);
        } else {
            VisitColour<Black, Wanted>(sink, fromMask, toMask);
        }
    }

    /// Appends the moves that may answer a check: king moves, and moves that take a checking man
    /// or step between. Double checks are not told apart; `MakeMove` sorts them out.
    void GenerateEvasions(MoveList& list) const noexcept;

    /// Appends the castling of one right if king, rights, empty and unattacked squares allow it.
    /// For callers that ask for one castling alone; `Visit` hands castling to its sink itself.
    void GenerateCastling(MoveList& list, Square kingSquare, CastlingIndex index) const noexcept;

    /// Would the generator produce this move here? For moves that come from elsewhere: hash table,
    /// killers, book. Only the low half of the word counts. Castling that lands on the king's own
    /// rook is refused, so it is played only from a fresh list.
    [[nodiscard]] bool IsStoredMoveValid(Move move) const noexcept;

    /// The same with castling onto the rook's square allowed, so it is true of every move that the
    /// generator writes and of no other. For a move found in another position: one with the same
    /// men and other castling rooks, as after `CPosition::CopyFrom`, or an earlier one of a line.
    [[nodiscard]] bool IsPseudoLegal(Move move) const noexcept;

private:
    static constexpr bool Includes(MoveKinds wanted, MoveKinds kind) noexcept {
        return (static_cast<unsigned>(wanted) & static_cast<unsigned>(kind)) != 0;
    }

    template <Colour Us, MoveKinds Wanted, class Sink>
    void VisitColour(Sink& sink, Bitboard fromMask, Bitboard toMask) const noexcept;
    template <Colour Us, class Sink>
    void VisitPawnCaptures(Sink& sink, Bitboard pawns, Bitboard toMask) const noexcept;
    template <Colour Us, class Sink>
    void VisitPawnSteps(Sink& sink, Bitboard pawns, Bitboard toMask) const noexcept;
    [[nodiscard]] bool IsCastlingPossible(Move move) const noexcept;
    [[nodiscard]] bool CanCastle(Square kingSquare, CastlingIndex index) const noexcept;

    const CPosition* position_;
};

namespace move_generator_detail {

/// Everything about pawns that depends on their colour.
template <Colour Us>
struct PawnGeometry {
    static constexpr int Up = Forward(Us);
    static constexpr int TowardsA = Up - 1;
    static constexpr int TowardsH = Up + 1;
    static constexpr Bitboard SecondRank = RelativeRankMask(1, Us);
    static constexpr Bitboard SeventhRank = RelativeRankMask(6, Us);
};

/// The pawns that all take the same step, by their targets.
template <int Step, class Sink>
inline void VisitPawns(Sink& sink, Bitboard targets) noexcept {
    while (targets != 0) {
        const Square to = PopLowestBit(targets);
        sink.Pawn(to - Step, to);
    }
}

template <int Step, class Sink>
inline void VisitPromotions(Sink& sink, Bitboard targets) noexcept {
    while (targets != 0) {
        const Square to = PopLowestBit(targets);
        for (const PromotionIndex index :
             {PromoteQueen, PromoteKnight, PromoteBishop, PromoteRook}) {
            sink.Special(Move::Make(to - Step, to, MoveKind::Promotion, index));
        }
    }
}

}  // namespace move_generator_detail

template <Colour Us, class Sink>
inline void CMoveGenerator::VisitPawnCaptures(Sink& sink, Bitboard pawns,
                                              Bitboard toMask) const noexcept {
    using namespace move_generator_detail;
    using Geometry = PawnGeometry<Us>;
    const Bitboard enemy = position_->colours[~Us] & toMask;
    const Bitboard ordinary = pawns & ~Geometry::SeventhRank;
    const Bitboard promoting = pawns & Geometry::SeventhRank;

    VisitPawns<Geometry::TowardsA>(sink, Shift<Geometry::TowardsA>(ordinary) & enemy);
    VisitPawns<Geometry::TowardsH>(sink, Shift<Geometry::TowardsH>(ordinary) & enemy);
    if (promoting != 0) {
        const Bitboard empty = ~position_->Occupied() & toMask;
        VisitPromotions<Geometry::TowardsA>(sink, Shift<Geometry::TowardsA>(promoting) & enemy);
        VisitPromotions<Geometry::TowardsH>(sink, Shift<Geometry::TowardsH>(promoting) & enemy);
        VisitPromotions<Geometry::Up>(sink, Shift<Geometry::Up>(promoting) & empty);
    }
    if (position_->enPassant != SquareNone) {
        const Bitboard target = BitOf(position_->enPassant);
        for (const Bitboard origin :
             {Shift<-Geometry::TowardsA>(target), Shift<-Geometry::TowardsH>(target)}) {
            if ((origin & pawns) != 0) {
                sink.Special(
                    Move::Make(LowestBit(origin), position_->enPassant, MoveKind::EnPassant));
            }
        }
    }
}

template <Colour Us, class Sink>
inline void CMoveGenerator::VisitPawnSteps(Sink& sink, Bitboard pawns,
                                           Bitboard toMask) const noexcept {
    using namespace move_generator_detail;
    using Geometry = PawnGeometry<Us>;
    const Bitboard empty = ~position_->Occupied();
    const Bitboard single = Shift<Geometry::Up>(pawns & ~Geometry::SeventhRank) & empty;
    const Bitboard first = Shift<Geometry::Up>(pawns & Geometry::SecondRank) & empty;
    const Bitboard twice = Shift<Geometry::Up>(first) & empty;
    VisitPawns<Geometry::Up>(sink, single & toMask);
    VisitPawns<2 * Geometry::Up>(sink, twice & toMask);
}

template <Colour Us, MoveKinds Wanted, class Sink>
inline void CMoveGenerator::VisitColour(Sink& sink, Bitboard fromMask,
                                        Bitboard toMask) const noexcept {
    constexpr bool Captures = Includes(Wanted, MoveKinds::Captures);
    constexpr bool Quiets = Includes(Wanted, MoveKinds::Quiets);
    const CPosition& position = *position_;
    const Bitboard occupied = position.Occupied();
    const Bitboard targets =
        (Captures ? position.colours[~Us] : 0) | (Quiets ? ~occupied : Bitboard{0});
    const Bitboard pieceTargets = targets & toMask;

    if (const Bitboard pawns = position.PiecesOf(Pawn, Us) & fromMask; pawns != 0) {
        if constexpr (Captures) {
            VisitPawnCaptures<Us>(sink, pawns, toMask);
        }
        if constexpr (Quiets) {
            VisitPawnSteps<Us>(sink, pawns, toMask);
        }
    }
    for (Bitboard men = position.PiecesOf(Knight, Us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        sink.Man(Knight, from, KnightAttacks[from] & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(Bishop, Us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        sink.Man(Bishop, from, BishopAttacksFrom(from, occupied) & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(Rook, Us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        sink.Man(Rook, from, RookAttacksFrom(from, occupied) & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(Queen, Us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        sink.Man(Queen, from, QueenAttacksFrom(from, occupied) & pieceTargets);
    }
    for (Bitboard men = position.PiecesOf(King, Us) & fromMask; men != 0;) {
        const Square from = PopLowestBit(men);
        sink.Man(King, from, KingAttacks[from] & targets);
        if (Quiets && !position.inCheck && position.castlingRights != 0) {
            for (const CastlingIndex index : {Us == White ? WhiteKingSide : BlackKingSide,
                                              Us == White ? WhiteQueenSide : BlackQueenSide}) {
                if (CanCastle(from, index)) {
                    sink.Special(Move::Make(from, position.castling[index].kingTo,
                                            MoveKind::Castling, index));
                }
            }
        }
    }
}

}  // namespace brenquil
