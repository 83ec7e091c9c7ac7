// One chess position: bitboards and mailbox, counts, keys, castling data and the undo stack.
//
// Moves are made pseudo-legally: `MakeMove` performs the move, tests whether the mover's king is
// attacked and takes the move back by itself when it is; the only other test of legality in the
// engine is `RefuseAtOnce`, which gives some refusals sooner. Chess960 and normal chess are one
// case, told apart only by where the castling records say that king and rook stand. Nothing is
// recomputed or allocated along the way: keys and counts are kept up to date, and taking back
// restores the saved keys.
//
// Any text can be set up as a position (no king, ten kings, pawns on the edge) and every operation
// stays within its arrays. A position belongs to one thread.
#pragma once

#include "board/attacks.h"
#include "board/men_key.h"
#include "board/polyglot_keys.h"
#include "board/table.h"
#include "board/types.h"

#include <array>
#include <cassert>
#include <cstdint>

namespace brenquil {

/// One castling right: who goes where, and what has to be free and safe for it.
struct CastlingRecord {
    Square kingFrom = SquareNone;
    Square kingTo = SquareNone;
    Square rookFrom = SquareNone;
    Square rookTo = SquareNone;
    Bitboard emptyMask = 0;  ///< squares that must be empty, king and castling rook left out
    Bitboard kingPath = 0;   ///< squares that must not be attacked: the king's way and its target
    char letter = 0;         ///< how the FEN named this right; 0 if it was not named
};

/// The part of a position that a move overwrites and taking back restores as a whole, in one copy.
struct ReversibleState {
    std::uint64_t key = 0;                ///< of everything; addresses Polyglot books
    std::uint64_t pawnKingKey = 0;        ///< of pawns and kings alone
    std::int32_t halfmoveClock = 0;       ///< half-moves since a capture or pawn move
    std::uint8_t enPassant = SquareNone;  ///< only ever set if a pawn can capture there
    std::uint8_t castlingRights = 0;      ///< bit i: right `CastlingIndex` i is held
    bool inCheck = false;                 ///< the side to move has an attacked king
    std::uint8_t padding = 0;             ///< named, so that a copy moves three whole words
};

/// What it takes to reverse a move: the state before it, and the men that it moved. 32 bytes, so
/// that the repetition walk through the stack sees two records per cache line.
struct UndoRecord : ReversibleState {
    Move move{0};
    Piece movedPiece = PieceNone;
    Piece capturedPiece = PieceNone;  ///< stays `PieceNone` for en passant
    bool tookEnPassant = false;       ///< there was a victim: a set-up square may have none
};

static_assert(sizeof(ReversibleState) == 24 && sizeof(UndoRecord) == 32);

class CPosition : public ReversibleState {
public:
    /// Capacity of the undo stack. A game (or a FEN's full-move number) can bring `ply` up to it
    /// and beyond; `MakeMove` then refuses every move.
    static constexpr int UndoCapacity = 500;

    /// The start position.
    CPosition();

    /// Empties everything but the undo stack: records of an earlier game stay below a later
    /// position's `ply`, where the repetition walk of the search meets them. That is deliberate.
    void Clear() noexcept;

    /// Rebuilds bitboards, counts, keys and `inCheck` from the mailbox, the side to move, the en
    /// passant square and the castling data, into a position that `Clear` has just emptied. Drops
    /// an en passant square that no pawn of the side to move can use.
    void SetupDerived() noexcept;

    /// Takes over the other position without its history. The castling rights are found afresh
    /// from the outermost rooks, even where the other held one of an inner rook: that keeps scratch
    /// copies simple and is intended. Plain assignment copies everything, history included.
    void CopyFrom(const CPosition& other) noexcept;

    /// Plays a pseudo-legal move of the side to move. False, with nothing changed, if it leaves a
    /// king of the mover attacked or if the undo stack is full.
    [[nodiscard]] bool MakeMove(Move move) noexcept;

    /// Takes back the last made move; the word must be the one that was made. Nothing happens when
    /// no move has been made since the position was set up.
    void UndoMove(Move move) noexcept;

    /// `MakeMove` for the leaves of a count of moves, where nothing asks for keys, counts, rights,
    /// clock and check: of a normal move only bitboards and mailbox follow. An accepted move is
    /// taken back by `UndoLeaf` before anything else happens.
    [[nodiscard]] bool MakeLeaf(Move move) noexcept;
    void UndoLeaf(Move move) noexcept;

    /// The cheap part of `MakeMove`, in check only: refuses a move that plainly leaves the check
    /// unanswered, as a man other than the king goes to a square of no help. True if it is refused;
    /// the record at `ply` is then the one that a refusal by `MakeMove` leaves. False, with nothing
    /// changed, for a move that takes a closer look.
    [[nodiscard]] bool RefuseAtOnce(Move move) noexcept;

    /// Makes room on the undo stack: forgets the records that neither repetition nor the fifty-move
    /// rule can need, so that a game of any length goes on. What is forgotten cannot be taken back.
    /// @return by how much `ply` has fallen, an even number
    int ForgetHistory() noexcept;

    /// Passes the turn. The side to move is not in check, and there is room on the undo stack. The
    /// saved keys, `inCheck` and the move of the record it takes stay as they were; see
    /// `UndoNullMove` for what does not come back.
    void MakeNullMove() noexcept;

    /// Takes a null move back, except for the en passant file in `key`: after a null move tried in
    /// a position with an en passant square the key lacks that number until the regular `UndoMove`
    /// of the move before restores it. Required behaviour, which the hash table's contents show.
    void UndoNullMove() noexcept;

    /// The men of that colour that attack the square when the board is occupied as given. The
    /// occupancy decides how far sliders see; men that it leaves out are still among the answer.
    [[nodiscard]] Bitboard AttackersTo(Square square, Colour by, Bitboard occupied) const noexcept {
        const Bitboard queens = PiecesOf(Queen, by);
        return (PawnAttacks[~by][square] & PiecesOf(Pawn, by)) |
               (KnightAttacks[square] & PiecesOf(Knight, by)) |
               (KingAttacks[square] & PiecesOf(King, by)) |
               (BishopAttacksFrom(square, occupied) & (PiecesOf(Bishop, by) | queens)) |
               (RookAttacksFrom(square, occupied) & (PiecesOf(Rook, by) | queens));
    }

    /// Where men other than the king can answer a check: a checking man's square or one between it
    /// and the king. Empty if there is no check.
    [[nodiscard]] Bitboard EvasionTargets() const noexcept;

    /// Is the square attacked by the men of that colour.
    [[nodiscard]] bool IsSquareAttacked(Square square, Colour by) const noexcept;

    /// Is any king of that colour attacked; false if the colour has no king.
    [[nodiscard]] bool IsKingAttacked(Colour colour) const noexcept;

    /// Sets the right that a rook standing on `rookSquare` gives, if a rook of the rank's colour
    /// stands there, on rank 1 or 8, and the colour's first king (from the a-file) on the same rank
    /// beside it. `letter` is kept for the FEN. Anything else is ignored.
    void AddCastlingRook(Square rookSquare, char letter) noexcept;

    /// Sets right `index` with the outermost rook on its side of the king, if there is one.
    void AddCastlingByLetter(CastlingIndex index, char letter) noexcept;

    /// The key that a move of the normal kind will lead to, as long as it makes no en passant
    /// capture possible. For looking ahead where a wrong guess does no harm: it costs next to
    /// nothing.
    [[nodiscard]] std::uint64_t LikelyKeyAfter(Move move) const noexcept {
        const Square from = move.From();
        const Square to = move.To();
        const Piece moved = board[from];
        const Piece captured = board[to];
        const unsigned lostRights = castlingRights & ~(rightsMask[from] & rightsMask[to]);
        std::uint64_t likely =
            key ^ SideKey ^ PieceKey(moved, from) ^ PieceKey(moved, to) ^ CastlingKeys[lostRights];
        if (captured != PieceNone) {
            likely ^= PieceKey(captured, to);
        }
        if (enPassant != SquareNone) [[unlikely]] {
            likely ^= EnPassantKey(enPassant);
        }
        return likely;
    }

    [[nodiscard]] Bitboard Occupied() const noexcept { return colours[Black] | colours[White]; }

    [[nodiscard]] Piece PieceOn(Square square) const noexcept { return board[square]; }

    [[nodiscard]] Bitboard PiecesOf(PieceType type, Colour colour) const noexcept {
        return pieces[MakePiece(type, colour)];
    }

    /// The men of that colour that attack along lines.
    [[nodiscard]] Bitboard SlidersOf(Colour colour) const noexcept {
        return PiecesOf(Bishop, colour) | PiecesOf(Rook, colour) | PiecesOf(Queen, colour);
    }

    /// Is castling right `CastlingIndex` held.
    [[nodiscard]] bool HasRight(unsigned index) const noexcept {
        assert(index < CastlingRightsCount);
        return (castlingRights >> index & 1U) != 0;
    }

    [[nodiscard]] int MenCount() const noexcept { return colourCount[Black] + colourCount[White]; }

    int ply;  ///< index of the undo stack and game ply; from 1
    Colour sideToMove;

private:
    /// Each side has one king, the side that is not to move is not attacked and an en passant
    /// square is empty. True of every position that play can reach, and moves keep it true; then a
    /// move can expose a king only along a line that it opens, and both attack tests of `MakeMove`
    /// need only a fraction of the look-ups. Other positions that are set up take the general
    /// tests.
    bool isRegular_;

public:
    std::array<Bitboard, PieceCodes> pieces;  ///< by `Piece`
    std::array<Bitboard, 2> colours;          ///< occupancy by `Colour`, Black first
    SquareTable<Piece> board;                 ///< the mailbox
    SquareTable<std::uint8_t> rightsMask;     ///< rights that survive a move touching a square
    std::array<int, 2> colourCount;           ///< men of a colour, kings included
    std::array<int, PieceCodes> pieceCount;
    MenKey menKey;  ///< the men but kings, in one number
    std::array<CastlingRecord, CastlingRightsCount> castling;
    Table<UndoRecord, UndoCapacity> undo;  ///< the records below `ply` are in use

private:
    /// How a man other than the king answers a check.
    struct CheckMasks {
        Bitboard helpful;  ///< the checking men and what lies between them and the king
        Bitboard legal;    ///< the same for a single check; nothing answers a double one
    };

    template <Colour Us>
    bool Make(Move move) noexcept;
    template <Colour Us>
    bool MakeInAnyPosition(Move move) noexcept;
    template <Colour Us>
    [[gnu::always_inline]] inline bool MakeRegular(Move move) noexcept;
    template <Colour Us>
    bool MakeSpecial(Move move) noexcept;
    template <Colour Us>
    void Undo(Move move) noexcept;
    void ToggleMen(Piece piece, Bitboard squares) noexcept;
    std::uint64_t RemoveMan(Piece piece, Colour colour, Square square) noexcept;
    void RestoreMan(Piece piece, Colour colour, Square square) noexcept;

    /// For assertions: a man of the side to move stands on the move's first square.
    [[nodiscard]] bool IsOwnMove(Move move) const noexcept {
        return (colours[sideToMove] & BitOf(move.From())) != 0;
    }

    [[nodiscard]] bool IsMadeWhole(Move move) const noexcept {
        return !isRegular_ || move.Kind() != MoveKind::Normal;
    }

    void ToggleLeaf(Move move, Piece moved, Piece captured) noexcept;
    UndoRecord& SaveState(Move move, Piece moved, Piece captured) noexcept;
    [[nodiscard, gnu::always_inline]] inline Piece CapturedBy(Move move) const noexcept;
    template <Colour Us, bool IsRegular>
    [[gnu::always_inline]] inline void Play(Move move) noexcept;
    void MoveCastlingRook(const CastlingRecord& record, Colour colour) noexcept;
    void PromotePawn(Move move, Colour colour) noexcept;
    void PlaySpecial(Move move, Colour us, UndoRecord& record) noexcept;
    void UndoSpecial(Move move, Colour us, const UndoRecord& record) noexcept;
    [[nodiscard]] bool IsSliderAttacking(Square square, Colour by, Bitboard occupied,
                                         Bitboard sliders) const noexcept;
    [[nodiscard]] bool IsLeaperAttacking(Square square, Colour by) const noexcept;
    template <Colour Us>
    [[nodiscard, gnu::always_inline]] inline bool LeavesKingAttacked(Move move) const noexcept;
    [[nodiscard]] bool IsAttackedWithout(Bitboard king, Square square, Colour by) const noexcept;
    [[nodiscard]] bool LeavesKingAttackedBySpecial(Move move, Colour us) const noexcept;
    template <Colour Us>
    [[nodiscard, gnu::always_inline]] inline bool GivesCheck(Move move) const noexcept;
    void NoteCheck() noexcept;

    [[nodiscard]] const CheckMasks& CheckMasksNow() const noexcept {
        return checkMasks_[ply & CheckMaskIndexMask];
    }

    [[nodiscard]] bool LooksRegular() const noexcept;

    /// `ply` as the position was set up: the records below were not written by moves made here.
    int bottom_;
    Bitboard rightsSquares_;  ///< where `rightsMask` takes a right away

    /// By `ply`, filled while a regular position is in check, so that taking back restores nothing.
    /// Moves can be made on fewer plies than there are elements; the index wraps because a set-up
    /// `ply` can be any number.
    static constexpr int CheckMaskIndexMask = 511;
    static_assert(CheckMaskIndexMask > UndoCapacity);
    Table<CheckMasks, CheckMaskIndexMask + 1> checkMasks_;
};

}  // namespace brenquil
