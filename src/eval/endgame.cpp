#include "eval/endgame.h"

#include "board/attacks.h"
#include "board/score.h"
#include "eval/geometry.h"
#include "eval/pawn_structure.h"
#include "platform/bits.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
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
    CEnding(const CPosition& position, const Material& material, Colour strong,
            const CKpkBitbase& bitbase) noexcept
        : position_(position),
          bitbase_(bitbase),
          strong_(strong),
          strongKing_(material.kingSquare[strong]),
          weakKing_(material.kingSquare[~strong]),
          materialDifference_(
              std::abs(WideScore{material.value[White]} - WideScore{material.value[Black]})) {}

    /// A value of the strong side as the side to move sees it.
    [[nodiscard]] Score Result(WideScore value) const noexcept {
        return static_cast<Score>(position_.sideToMove == strong_ ? value : -value);
    }

    [[nodiscard]] WideScore Draw() const noexcept { return DrawScore; }

    [[nodiscard]] WideScore Edge() const noexcept { return EdgeBonus[EdgeRing[weakKing_]]; }

    [[nodiscard]] WideScore KingsNear() const noexcept {
        return KingsNearBonus[Distance[strongKing_][weakKing_]];
    }

    /// The common drive: bring the kings together and the weak one to the edge.
    [[nodiscard]] WideScore Drive() const noexcept {
        return KingsNear() + materialDifference_ + Edge();
    }

    [[nodiscard]] WideScore DriveAndAdvance() const noexcept { return Drive() + PawnAdvance(); }

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
        return IsWrongRookPawn() ? WideScore{DrawScore} : DriveAndAdvance();
    }

    [[nodiscard]] WideScore PawnAlone() const noexcept {
        // The bitbase knows White's pawn on the left half of the board.
        const Square pawn = SquareOf(Pawn);
        const Square flip = (strong_ == White ? 0 : 56) ^ (FileOf(pawn) < 4 ? 0 : 7);
        const bool strongToMove = position_.sideToMove == strong_;
        if (!bitbase_.IsWin(strongKing_ ^ flip, weakKing_ ^ flip, pawn ^ flip, strongToMove)) {
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
    const CKpkBitbase& bitbase_;
    Colour strong_;
    Square strongKing_;
    Square weakKing_;
    WideScore materialDifference_;
};

/// Who counts as the strong side.
enum class Strong : std::uint8_t {
    MoreMaterial,  ///< by the piece values; at equal material Black
    HeavierMan     ///< whatever the piece values say
};

struct KnownEnding {
    unsigned men;  ///< `Versus`
    WideScore (CEnding::*score)() const noexcept;
    Strong strong = Strong::MoreMaterial;
};

constexpr KnownEnding KnownEndings[] = {
    {Versus("K", "K"), &CEnding::Draw},
    {Versus("KB", "K"), &CEnding::Draw},
    {Versus("KN", "K"), &CEnding::Draw},
    {Versus("KNN", "K"), &CEnding::Draw},
    {Versus("KQ", "KQ"), &CEnding::Draw},
    {Versus("KR", "KR"), &CEnding::Draw},
    {Versus("KB", "KB"), &CEnding::Draw},
    {Versus("KB", "KN"), &CEnding::Draw},
    {Versus("KN", "KN"), &CEnding::Draw},
    {Versus("KP", "K"), &CEnding::PawnAlone},
    {Versus("KQ", "K"), &CEnding::Drive},
    {Versus("KR", "K"), &CEnding::Drive},
    {Versus("KQQ", "K"), &CEnding::Drive},
    {Versus("KQR", "K"), &CEnding::Drive},
    {Versus("KQB", "K"), &CEnding::Drive},
    {Versus("KQN", "K"), &CEnding::Drive},
    {Versus("KRR", "K"), &CEnding::Drive},
    {Versus("KRB", "K"), &CEnding::Drive},
    {Versus("KRN", "K"), &CEnding::Drive},
    {Versus("KQ", "KR"), &CEnding::Drive},
    {Versus("KQ", "KB"), &CEnding::Drive},
    {Versus("KQ", "KN"), &CEnding::Drive},
    {Versus("KQP", "K"), &CEnding::DriveAndAdvance},
    {Versus("KRP", "K"), &CEnding::DriveAndAdvance},
    {Versus("KNP", "K"), &CEnding::DriveAndAdvance},
    {Versus("KBB", "K"), &CEnding::TwoBishops},
    {Versus("KBN", "K"), &CEnding::BishopAndKnight},
    {Versus("KBP", "K"), &CEnding::BishopAndPawn},
    {Versus("KR", "KB"), &CEnding::RookAgainstBishop},
    {Versus("KR", "KN"), &CEnding::RookAgainstKnight},
    {Versus("KQ", "KP"), &CEnding::QueenAgainstPawn, Strong::HeavierMan},
    {Versus("KB", "KP"), &CEnding::PieceAgainstPawn, Strong::HeavierMan},
    {Versus("KN", "KP"), &CEnding::PieceAgainstPawn, Strong::HeavierMan},
    {Versus("KQ", "KRR"), &CEnding::Edge},
    {Versus("KQ", "KRB"), &CEnding::Edge},
    {Versus("KQ", "KRN"), &CEnding::Edge},
    {Versus("KR", "KBB"), &CEnding::Edge},
    {Versus("KR", "KRB"), &CEnding::Edge},
    {Versus("KR", "KRN"), &CEnding::Edge},
    {Versus("KB", "KBB"), &CEnding::Edge},
};

/// A row behind another one of the same men would never be found.
constexpr bool AreAllDifferent() noexcept {
    for (const KnownEnding& known : KnownEndings) {
        const auto hasTheSameMen = [&](const KnownEnding& other) { return other.men == known.men; };
        if (std::count_if(std::begin(KnownEndings), std::end(KnownEndings), hasTheSameMen) != 1) {
            return false;
        }
    }
    return true;
}

static_assert(AreAllDifferent());

/// No ending with more men beside the kings is known.
constexpr int MostMen = 3;

}  // namespace

EndingNumber FindEnding(const CPosition& position) noexcept {
    const int kings = position.pieceCount[WhiteKing] + position.pieceCount[BlackKing];
    if (position.MenCount() - kings > MostMen) {
        return UnknownEnding;
    }
    const unsigned men = Versus(MenOf(position, White), MenOf(position, Black));
    EndingNumber number = UnknownEnding;
    for (const KnownEnding& known : KnownEndings) {
        ++number;
        if (known.men == men) {
            return number;
        }
    }
    return UnknownEnding;
}

std::optional<Score> EvaluateEnding(EndingNumber number, const CPosition& position,
                                    const Material& material, const CKpkBitbase& bitbase) noexcept {
    assert(number == FindEnding(position));
    if (number == UnknownEnding || position.pieceCount[WhiteKing] != 1 ||
        position.pieceCount[BlackKing] != 1) {
        return std::nullopt;
    }
    const KnownEnding& known = KnownEndings[number - 1];
    const bool isWhiteStrong = known.strong == Strong::HeavierMan
                                 ? MenOf(position, White) > MenOf(position, Black)
                                 : material.value[White] > material.value[Black];
    const CEnding ending(position, material, isWhiteStrong ? White : Black, bitbase);
    return ending.Result((ending.*known.score)());
}

}  // namespace brenquil
