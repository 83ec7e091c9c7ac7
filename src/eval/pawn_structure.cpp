#include "eval/pawn_structure.h"

#include "board/attacks.h"
#include "eval/piece_square.h"
#include "platform/bits.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace brenquil {

namespace {

/// By file, a to h, for both colours as it is. The negative entries at the edges are subtracted
/// like the others and so reward the pawn: deliberate.
constexpr LineTable<TermPair> DoubledPenalty = {
    {{36, 46}, {9, 25}, {2, 31}, {23, 24}, {18, 21}, {20, 19}, {0, 29}, {26, 44}}};
constexpr LineTable<TermPair> IsolatedPenalty = {
    {{1, 5}, {5, 13}, {14, 21}, {13, 26}, {22, 22}, {14, 16}, {14, 10}, {20, 6}}};
constexpr LineTable<TermPair> BackwardPenalty = {
    {{-4, 2}, {3, 7}, {2, 13}, {21, 14}, {8, 7}, {7, 1}, {13, 1}, {-1, 3}}};

/// Danger on one file, by the rank of the lowest pawn seen from the king's side, 0 to 7.
constexpr std::array<int, 8> ShelterOwn = {0, 0, 2, 2, 2, 2, 4, 0};
constexpr std::array<int, 8> ShelterStorm = {0, 3, 2, 1, 0, 0, 0, 0};
constexpr int ShelterMissing = 6;

/// The same by all ranks that have a pawn, a bit each: one look, where a search for the lowest
/// would take branches that nothing foretells.
using DangerByRanks = std::array<std::uint8_t, 256>;

constexpr DangerByRanks SpreadDanger(const std::array<int, 8>& byLowest, int none) noexcept {
    DangerByRanks dangers{};
    dangers[0] = static_cast<std::uint8_t>(none);
    for (unsigned ranks = 1; ranks < dangers.size(); ++ranks) {
        dangers[ranks] = static_cast<std::uint8_t>(byLowest[LowestBit(ranks)]);
    }
    return dangers;
}

constexpr DangerByRanks OwnDanger = SpreadDanger(ShelterOwn, ShelterMissing);
constexpr DangerByRanks StormDanger = SpreadDanger(ShelterStorm, 0);

/// The ranks that have a pawn on the a-file. The product puts the eight bits side by side.
constexpr std::size_t RanksOnFileA(Bitboard pawns) noexcept {
    return (pawns & FileA) * 0x0102040810204080 >> 56;
}

constexpr Bitboard Neighbours(Bitboard set) noexcept {
    return Shift<1>(set) | Shift<-1>(set);
}

/// All squares behind those of the set on their files, seen from `Us`.
template <Colour Us>
constexpr Bitboard FillBehind(Bitboard set) noexcept {
    if constexpr (Us == White) {
        set >>= 8;
        set |= set >> 8;
        set |= set >> 16;
        return set | set >> 32;
    } else {
        set <<= 8;
        set |= set << 8;
        set |= set << 16;
        return set | set << 32;
    }
}

/// The whole files of the set.
constexpr Bitboard FillFiles(Bitboard set) noexcept {
    return set | FillBehind<White>(set) | FillBehind<Black>(set);
}

/// The pawns of one colour that a term applies to. Each is found for all pawns at once, so that the
/// loops below visit the few that it applies to.
struct PawnFeatures {
    Bitboard passed;  ///< no enemy pawn ahead on its own and the neighbouring files
    Bitboard
        doubled;  ///< an own pawn ahead on its file: the rear pawn pays, the front one does not
    Bitboard isolated;  ///< no own pawn on the neighbouring files
    /// Nothing defends it, its next square is free and an enemy pawn attacks that square. A pawn on
    /// its last rank has no next square.
    Bitboard backward;
};

template <Colour Us>
constexpr PawnFeatures FindFeatures(Bitboard own, Bitboard enemy) noexcept {
    constexpr int Up = Forward(Us);
    const Bitboard heldBack = Shift<Up>(own) & PawnAttackSet<~Us>(enemy) & ~(own | enemy);
    return {own & ~FillBehind<Us>(enemy | Neighbours(enemy)), own & FillBehind<Us>(own),
            own & ~Neighbours(FillFiles(own)), Shift<-Up>(heldBack) & ~PawnAttackSet<Us>(own)};
}

TermPair SumByFile(Bitboard pawns, const LineTable<TermPair>& values) noexcept {
    TermPair sum;
    while (pawns != 0) {
        sum += values[FileOf(PopLowestBit(pawns))];
    }
    return sum;
}

template <Colour Us>
PawnSums SumColour(const CPosition& position) noexcept {
    const Bitboard own = position.PiecesOf(Pawn, Us);
    const PawnFeatures features = FindFeatures<Us>(own, position.PiecesOf(Pawn, ~Us));
    PawnSums sums;
    for (Bitboard pawns = own; pawns != 0;) {
        sums.terms += PieceSquare[MakePiece(Pawn, Us)][PopLowestBit(pawns)];
    }
    for (Bitboard pawns = features.passed; pawns != 0;) {
        const Square square = PopLowestBit(pawns);
        sums.terms += PassedBonus[RelativeRank(square, Us)];
    }
    sums.terms -= SumByFile(features.doubled, DoubledPenalty);
    sums.terms -= SumByFile(features.isolated, IsolatedPenalty);
    sums.terms -= SumByFile(features.backward, BackwardPenalty);
    for (Bitboard kings = position.PiecesOf(King, Us); kings != 0;) {
        const Square square = PopLowestBit(kings);
        sums.terms += PieceSquare[MakePiece(King, Us)][square];
        sums.shelterDanger += ShelterDanger(position, square, Us);
    }
    return sums;
}

void StoreSums(PawnEntry& entry, Colour colour, const PawnSums& sums) noexcept {
    entry.middlegame[colour] = sums.terms.Middlegame();
    entry.endgame[colour] = sums.terms.Endgame();
    entry.shelterDanger[colour] = sums.shelterDanger;
}

/// The key goes first, with sums of zero, and the sums follow when they are known; another thread
/// that reads between the two uses a partial entry. That order is wanted.
[[gnu::noinline]] void FillPawnEntry(PawnEntry& entry, const CPosition& position) noexcept {
    StoreSums(entry, White, PawnSums());
    StoreSums(entry, Black, PawnSums());
    entry.key = position.pawnKingKey;
    StoreSums(entry, White, SumColour<White>(position));
    StoreSums(entry, Black, SumColour<Black>(position));
}

}  // namespace

int ShelterDanger(const CPosition& position, Square kingSquare, Colour colour) noexcept {
    assert(kingSquare >= A1 && kingSquare <= H8);
    Bitboard own = position.PiecesOf(Pawn, colour);
    Bitboard enemy = position.PiecesOf(Pawn, ~colour);
    if (colour == Black) {
        own = ReverseBytes(own);
        enemy = ReverseBytes(enemy);
    }

    // A king on an edge file is seen as one beside it; its place within the three files is ignored.
    const int leftmost = std::clamp(FileOf(kingSquare), 1, 6) - 1;
    own >>= leftmost;
    enemy >>= leftmost;
    const auto dangerOn = [&](int file) {
        return OwnDanger[RanksOnFileA(own >> file)] + StormDanger[RanksOnFileA(enemy >> file)];
    };
    return dangerOn(0) + dangerOn(1) + dangerOn(2);
}

PawnSums SumPawns(const CPosition& position, Colour colour) noexcept {
    return colour == White ? SumColour<White>(position) : SumColour<Black>(position);
}

const PawnEntry& GetPawnEntry(const CPosition& position, CPawnHash& pawnHash,
                              PawnEntry& localEntry) noexcept {
    if (!pawnHash.HasMemory()) {
        FillPawnEntry(localEntry, position);
        return localEntry;
    }
    PawnEntry& entry = pawnHash.Slot(position.pawnKingKey);
    if (entry.key != position.pawnKingKey) {
        FillPawnEntry(entry, position);
    }
    return entry;
}

}  // namespace brenquil
