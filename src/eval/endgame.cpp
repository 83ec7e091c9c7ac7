#include "eval/endgame.h"

#include "board/attacks.h"
#include "board/score.h"
#include "eval/geometry.h"
#include "eval/pawn_structure.h"
#include "platform/bits.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace brenquil {

namespace {

/// Scores inside the scorers: material follows options that can hold any number.
using WideScore = std::int64_t;

constexpr std::array<int, 8> KingsNearBonus = {120, 105, 90, 70, 50, 30, 10, 0};  // by `Distance`
constexpr std::array<int, 4> EdgeBonus = {60, 50, 40, 30};                        // by `EdgeRing`
constexpr std::array<int, 8> CornerBonus = {60, 50, 40, 30, 20, 10, 5, 0};  // by distance to it

/// `BishopCorner` index of the light corners a8 and h1.
constexpr std::size_t LightCorners = 1;

/// The men of one side beside its king: two bits of count for each type, pawn to queen from the low
/// end. Only for sides with at most three of them.
using Men = unsigned;

constexpr unsigned BitsPerType = 2;
constexpr unsigned BitsPerSide = 5 * BitsPerType;

constexpr Men OneOf(PieceType type) noexcept {
    return 1U << (type * BitsPerType);
}

/// "KQR" and the like; the king's letter counts nothing.
constexpr Men NamedMen(std::string_view letters) noexcept {
    constexpr std::string_view Letters = "PNBRQ";
    Men men = 0;
    for (const char letter : letters) {
        if (letter != 'K') {
            men += OneOf(static_cast<PieceType>(Letters.find(letter)));
        }
    }
    return men;
}

Men MenOf(const CPosition& position, Colour colour) noexcept {
    Men men = 0;
    for (const PieceType type : {Pawn, Knight, Bishop, Rook, Queen}) {
        men += OneOf(type) * position.pieceCount[MakePiece(type, colour)];
    }
    return men;
}

/// A constellation, whichever colour has which men.
constexpr unsigned Versus(Men one, Men other) noexcept {
    return one > other ? one << BitsPerSide | other : other << BitsPerSide | one;
}

constexpr unsigned Versus(std::string_view one, std::string_view other) noexcept {
    return Versus(NamedMen(one), NamedMen(other));
}

constexpr std::size_t SquareColour(Square square) noexcept {
    return (LightSquares >> square & 1U) != 0 ? 1 : 0;
}

/// One ending with one of the sides taken as the strong one. The terms are from that side's view.
class CEnding {
public:
    CEnding(const CPosition& position, const Material& material, Colour strong) noexcept
        : position_(position),
          strong_(strong),
          strongKing_(material.kingSquare[strong]),
          weakKing_(material.kingSquare[~strong]),
          materialDifference_(
              std::abs(WideScore{material.value[White]} - WideScore{material.value[Black]})) {}

    /// A value of the strong side as the side to move sees it.
    [[nodiscard]] Score Result(WideScore value) const noexcept {
        return static_cast<Score>(position_.sideToMove == strong_ ? value : -value);
    }

    [[nodiscard]] WideScore Edge() const noexcept { return EdgeBonus[EdgeRing[weakKing_]]; }

    [[nodiscard]] WideScore KingsNear() const noexcept {
        return KingsNearBonus[Distance[strongKing_][weakKing_]];
    }

    /// The common drive: bring the kings together and the weak one to the edge.
    [[nodiscard]] WideScore Drive() const noexcept {
        return KingsNear() + materialDifference_ + Edge();
    }

    /// What the strong side's pawns have gained by advancing.
    [[nodiscard]] WideScore PawnAdvance() const noexcept {
        WideScore sum = 0;
        for (Bitboard pawns = position_.PiecesOf(Pawn, strong_); pawns != 0;) {
            sum += PassedBonus[RelativeRank(PopLowestBit(pawns), strong_)].Endgame();
        }
        return sum;
    }

    [[nodiscard]] WideScore TwoBishops() const noexcept {
        return KingsNear() + materialDifference_ + CornerBonus[CornerNear[weakKing_]];
    }

    /// Mate is possible only in a corner of the bishop's colour.
    [[nodiscard]] WideScore BishopAndKnight() const noexcept {
        const std::size_t corners = SquareColour(SquareOf(Bishop));
        return KingsNear() + materialDifference_ + CornerBonus[BishopCorner[corners][weakKing_]];
    }

    [[nodiscard]] WideScore RookAgainstBishop() const noexcept {
        // Always the light corners, whatever the bishop's colour: deliberate.
        return Edge() - CornerBonus[BishopCorner[LightCorners][weakKing_]];
    }

    [[nodiscard]] WideScore RookAgainstKnight() const noexcept {
        return Edge() - KingsNearBonus[Distance[weakKing_][SquareOf(Knight)]];
    }

    /// The strong side has the piece, and yet it is the pawn that counts.
    [[nodiscard]] WideScore PieceAgainstPawn() const noexcept {
        return -PassedBonus[RelativeRank(SquareOf(Pawn), ~strong_)].Endgame();
    }

    /// A pawn about to promote on the a-, c-, f- or h-file with its king beside it draws. Neither
    /// the queen's king nor the turn is looked at: deliberate.
    [[nodiscard]] WideScore QueenAgainstPawn() const noexcept {
        constexpr Bitboard DrawingFiles = FileMasks[0] | FileMasks[2] | FileMasks[5] | FileMasks[7];
        const Square pawn = SquareOf(Pawn);
        const bool isOnDrawingFile = (DrawingFiles & BitOf(pawn)) != 0;
        const bool isOnSeventh = RelativeRank(pawn, ~strong_) == 6;
        if (isOnDrawingFile && isOnSeventh && Distance[weakKing_][pawn] == 1) {
            return DrawScore;
        }
        return Drive();
    }

    [[nodiscard]] WideScore BishopAndPawn() const noexcept {
        return IsWrongRookPawn() ? WideScore{DrawScore} : Drive() + PawnAdvance();
    }

    [[nodiscard]] WideScore PawnAlone(const CKpkBitbase& bitbase) const noexcept {
        // The bitbase knows White's pawn on the left half of the board.
        const Square pawn = SquareOf(Pawn);
        const Square flip = (strong_ == White ? 0 : 56) ^ (FileOf(pawn) < 4 ? 0 : 7);
        const bool strongToMove = position_.sideToMove == strong_;
        if (!bitbase.IsWin(strongKing_ ^ flip, weakKing_ ^ flip, pawn ^ flip, strongToMove)) {
            return DrawScore;
        }
        return KingsNear() + materialDifference_ + PawnAdvance();
    }

private:
    /// The square of the one man of that type, of either colour.
    [[nodiscard]] Square SquareOf(PieceType type) const noexcept {
        return LowestBit(position_.PiecesOf(type, White) | position_.PiecesOf(type, Black));
    }

    /// A rook pawn whose promotion square the bishop cannot control and the weak king holds.
    [[nodiscard]] bool IsWrongRookPawn() const noexcept {
        const Square pawn = SquareOf(Pawn);
        if (FileOf(pawn) != 0 && FileOf(pawn) != 7) {
            return false;
        }
        const Square promotion =
            MakeSquare(FileOf(pawn), position_.PieceOn(pawn) == WhitePawn ? 7 : 0);
        return SquareColour(SquareOf(Bishop)) != SquareColour(promotion) &&
               Distance[weakKing_][promotion] <= 1;
    }

    const CPosition& position_;
    Colour strong_;
    Square strongKing_;
    Square weakKing_;
    WideScore materialDifference_;
};

}  // namespace

std::optional<Score> ScoreKnownEnding(const CPosition& position, const Material& material,
                                      const CKpkBitbase& bitbase) noexcept {
    assert(position.MenCount() <= 5);
    assert(position.pieceCount[WhiteKing] == 1 && position.pieceCount[BlackKing] == 1);
    // At equal material Black counts as strong.
    const Colour strong = material.value[White] > material.value[Black] ? White : Black;
    const CEnding ending(position, material, strong);

    // In three of the endings the heavier man decides who is strong, whatever the piece values say.
    const Men white = MenOf(position, White);
    const Men black = MenOf(position, Black);
    const CEnding heavierEnding(position, material, white > black ? White : Black);

    switch (Versus(white, black)) {
    case Versus("K", "K"):
    case Versus("KB", "K"):
    case Versus("KN", "K"):
    case Versus("KNN", "K"):
    case Versus("KQ", "KQ"):
    case Versus("KR", "KR"):
    case Versus("KB", "KB"):
    case Versus("KB", "KN"):
    case Versus("KN", "KN"): return DrawScore;

    case Versus("KP", "K"): return ending.Result(ending.PawnAlone(bitbase));

    case Versus("KQ", "K"):
    case Versus("KR", "K"):
    case Versus("KQQ", "K"):
    case Versus("KQR", "K"):
    case Versus("KQB", "K"):
    case Versus("KQN", "K"):
    case Versus("KRR", "K"):
    case Versus("KRB", "K"):
    case Versus("KRN", "K"):
    case Versus("KQ", "KR"):
    case Versus("KQ", "KB"):
    case Versus("KQ", "KN"): return ending.Result(ending.Drive());

    case Versus("KQP", "K"):
    case Versus("KRP", "K"):
    case Versus("KNP", "K"): return ending.Result(ending.Drive() + ending.PawnAdvance());

    case Versus("KBB", "K"): return ending.Result(ending.TwoBishops());
    case Versus("KBN", "K"): return ending.Result(ending.BishopAndKnight());
    case Versus("KBP", "K"): return ending.Result(ending.BishopAndPawn());

    case Versus("KR", "KB"): return ending.Result(ending.RookAgainstBishop());
    case Versus("KR", "KN"): return ending.Result(ending.RookAgainstKnight());

    case Versus("KQ", "KP"): return heavierEnding.Result(heavierEnding.QueenAgainstPawn());
    case Versus("KB", "KP"):
    case Versus("KN", "KP"): return heavierEnding.Result(heavierEnding.PieceAgainstPawn());

    case Versus("KQ", "KRR"):
    case Versus("KQ", "KRB"):
    case Versus("KQ", "KRN"):
    case Versus("KR", "KBB"):
    case Versus("KR", "KRB"):
    case Versus("KR", "KRN"):
    case Versus("KB", "KBB"): return ending.Result(ending.Edge());

    default: return std::nullopt;
    }
}

}  // namespace brenquil
