#include "eval/piece_terms.h"

#include "board/attacks.h"
#include "eval/piece_square.h"
#include "platform/bits.h"

#include <array>
#include <cassert>

namespace brenquil {

namespace {

/// The same value in the middlegame and in the endgame.
constexpr TermPair Both(int value) noexcept {
    return {value, value};
}

/// By the number of squares reached.
constexpr std::array<TermPair, 9> KnightMobility = {
    {Both(-30), Both(-26), Both(-16), Both(0), Both(16), Both(26), Both(30), Both(33), Both(35)}};
constexpr std::array<TermPair, 14> BishopMobility = {
    {Both(-45), Both(-36), Both(-24), Both(-8), Both(8), Both(24), Both(36), Both(45), Both(52),
     Both(57), Both(61), Both(65), Both(67), Both(69)}};
constexpr std::array<TermPair, 15> RookMobility = {{{-44, -59},
                                                    {-39, -50},
                                                    {-33, -37},
                                                    {-24, -17},
                                                    {-13, 6},
                                                    {0, 28},
                                                    {13, 44},
                                                    {24, 55},
                                                    {33, 62},
                                                    {39, 68},
                                                    {44, 71},
                                                    {48, 74},
                                                    {51, 77},
                                                    {53, 78},
                                                    {55, 80}}};

constexpr TermPair OpenFileBonus = Both(8);
constexpr TermPair HalfOpenFileBonus = Both(4);

/// b5 to g5, c4 to f4, d3 and e3, and Black's mirror of them; by colour.
constexpr Bitboard WhiteOutposts = 0x0000007E3C180000;
constexpr std::array<Bitboard, 2> OutpostSquares = {ReverseBytes(WhiteOutposts), WhiteOutposts};

/// What the terms of both colours look at; arrays are by colour.
struct PieceScene {
    const CPosition& position;
    Bitboard occupied;
    std::array<Bitboard, 2> pawnAttacks;
    /// Squares that count as reached: not held by an own man and not attacked by an enemy pawn.
    std::array<Bitboard, 2> mobilityArea;
};

[[gnu::always_inline]] inline PieceScene SetScene(const CPosition& position) noexcept {
    const Bitboard whitePawns = position.PiecesOf(Pawn, White);
    const Bitboard blackPawns = position.PiecesOf(Pawn, Black);
    const Bitboard whiteAttacks = PawnAttackSet<White>(whitePawns);
    const Bitboard blackAttacks = PawnAttackSet<Black>(blackPawns);
    return {position,
            position.Occupied(),
            {blackAttacks, whiteAttacks},
            {~(whiteAttacks | position.colours[Black]), ~(blackAttacks | position.colours[White])}};
}

/// Whether a knight's square earns it the outpost bonus, 10 in both sums. The mobility area leaves
/// out the own men's squares, a knight's own among them, so none ever does; the condition is kept
/// in this form on purpose.
template <Colour Us>
[[maybe_unused]] bool IsOutpost(const PieceScene& scene, Square square) noexcept {
    return (BitOf(square) & scene.pawnAttacks[Us] & OutpostSquares[Us] & scene.mobilityArea[Us]) !=
           0;
}

template <Colour Us, bool HardwareCount>
TermPair KnightTerms(const PieceScene& scene) noexcept {
    TermPair terms;
    for (Bitboard knights = scene.position.PiecesOf(Knight, Us); knights != 0;) {
        const Square square = PopLowestBit(knights);
        const Bitboard reached = KnightAttacks[square] & scene.mobilityArea[Us];
        terms += PieceSquare[MakePiece(Knight, Us)][square];
        terms += KnightMobility[PopCount<HardwareCount>(reached)];
        assert(!IsOutpost<Us>(scene, square));
    }
    return terms;
}

template <Colour Us, bool HardwareCount>
TermPair BishopTerms(const PieceScene& scene) noexcept {
    TermPair terms;
    for (Bitboard bishops = scene.position.PiecesOf(Bishop, Us); bishops != 0;) {
        const Square square = PopLowestBit(bishops);
        const Bitboard reached = BishopAttacksFrom(square, scene.occupied) & scene.mobilityArea[Us];
        terms += PieceSquare[MakePiece(Bishop, Us)][square];
        terms += BishopMobility[PopCount<HardwareCount>(reached)];
    }
    return terms;
}

template <Colour Us>
TermPair RookFileTerm(const CPosition& position, Square square) noexcept {
    const Bitboard file = FileMasks[FileOf(square)];
    if ((file & position.PiecesOf(Pawn, Us)) != 0) {
        return {};
    }
    return (file & position.PiecesOf(Pawn, ~Us)) == 0 ? OpenFileBonus : HalfOpenFileBonus;
}

template <Colour Us, bool HardwareCount>
TermPair RookTerms(const PieceScene& scene) noexcept {
    TermPair terms;
    for (Bitboard rooks = scene.position.PiecesOf(Rook, Us); rooks != 0;) {
        const Square square = PopLowestBit(rooks);
        const Bitboard reached = RookAttacksFrom(square, scene.occupied) & scene.mobilityArea[Us];
        terms += PieceSquare[MakePiece(Rook, Us)][square];
        terms += RookMobility[PopCount<HardwareCount>(reached)];
        terms += RookFileTerm<Us>(scene.position, square);
    }
    return terms;
}

template <Colour Us>
TermPair QueenTerms(const PieceScene& scene) noexcept {
    TermPair terms;
    for (Bitboard queens = scene.position.PiecesOf(Queen, Us); queens != 0;) {
        terms += PieceSquare[MakePiece(Queen, Us)][PopLowestBit(queens)];
    }
    return terms;
}

template <Colour Us, bool HardwareCount>
TermPair ColourTerms(const PieceScene& scene) noexcept {
    return KnightTerms<Us, HardwareCount>(scene) + BishopTerms<Us, HardwareCount>(scene) +
           RookTerms<Us, HardwareCount>(scene) + QueenTerms<Us>(scene);
}

template <bool HardwareCount>
TermPair CountedPieceTerms(const CPosition& position) noexcept {
    const PieceScene scene = SetScene(position);
    return ColourTerms<White, HardwareCount>(scene) - ColourTerms<Black, HardwareCount>(scene);
}

}  // namespace

TermPair PieceTerms(const CPosition& position) noexcept {
    return HasPopcount ? CountedPieceTerms<true>(position) : CountedPieceTerms<false>(position);
}

}  // namespace brenquil
