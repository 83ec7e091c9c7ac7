// Positions and moves as text: FEN in both castling forms, and moves in coordinates.
//
// The parser is lenient: it never reports an error and never refuses a text. What it cannot read it
// skips or takes a default for, so a malformed FEN gives a strange position, on which every
// operation of `CPosition` is still safe. There is no standard algebraic notation.
#pragma once

#include "board/position.h"
#include "board/types.h"

#include <string>
#include <string_view>

namespace brenquil {

inline constexpr std::string_view StartFen =
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

/// How a castling move is written.
enum class CastlingNotation {
    KingTarget,     ///< e1g1: normal chess
    KingTakesRook,  ///< e1h1: Chess960
    Name,           ///< O-O and O-O-O: Chess960, for front ends that set KQkq positions
};

/// "a1" to "h8"; "-" for `SquareNone`.
[[nodiscard]] std::string SquareToText(Square square);

/// The FEN letter; empty for `PieceNone`.
[[nodiscard]] std::string PieceToText(Piece piece);

/// Reads and writes one position. Used on the command thread, while no search uses the position.
class CPositionText {
public:
    explicit CPositionText(CPosition& position) noexcept : position_(&position) {}

    /// Replaces the position; an empty text means the start position. Up to six fields, separated
    /// by any number of blanks; a missing field leaves the default. Castling rights are read from
    /// K, Q, k, q (the outermost rook) and from file letters (Chess960), in any mixture.
    void SetFen(std::string_view text);

    /// The six fields. Castling letters come back as they were read.
    [[nodiscard]] std::string GetFen() const;

    /// The FEN of the same position with colours exchanged and the board mirrored top to bottom.
    /// Works on the text alone and keeps its first six fields.
    [[nodiscard]] static std::string FlipFen(std::string_view text);

    /// Coordinate text of a move. `position` is the one before the move: castling falls back to
    /// `KingTarget` when its right is no longer held.
    [[nodiscard]] static std::string MoveToText(Move move, const CPosition& position,
                                                CastlingNotation castling);

    /// The pseudo-legal move that the text names, or `NoMove`. With `chess960` castling answers to
    /// king takes rook and to its name, without it to the king's target. Letter case counts.
    [[nodiscard]] static Move TextToMove(std::string_view text, const CPosition& position,
                                         bool chess960);

    /// Whether a text has the form of a move at all.
    [[nodiscard]] static bool IsMoveTextForm(std::string_view text) noexcept;

private:
    void SetBoard(std::string_view text);
    void SetCastling(std::string_view text);

    CPosition* position_;
};

}  // namespace brenquil
