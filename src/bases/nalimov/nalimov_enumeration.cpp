#include "bases/nalimov/nalimov_enumeration.h"

#include "board/attacks.h"

#include <cassert>
#include <cstddef>
#include <memory>

namespace brenquil {

namespace {

constexpr std::array<NalimovKind, NalimovKinds> AllKinds = {RestingPawnKind, PawnKind, KnightKind,
                                                            BishopKind,      RookKind, QueenKind};

/// The squares that the rules of the board leave to a kind.
Bitboard SquaresOfKind(NalimovKind kind) noexcept {
    return kind == RestingPawnKind || kind == PawnKind ? ~(Rank1 | Rank8) : AllSquares;
}

/// The squares from which a man of the kind gives check to a king on `king` without a distance.
Bitboard TouchingChecks(NalimovKind kind, Square king) noexcept {
    switch (kind) {
    case RestingPawnKind: return 0;
    case PawnKind: return PawnAttacks[Black][king];
    case KnightKind: return KnightAttacks[king];
    case BishopKind: return KingAttacks[king] & BishopRays[king];
    case RookKind: return KingAttacks[king] & RookRays[king];
    case QueenKind: return KingAttacks[king];
    }
    return 0;
}

bool IsInTriangle(Square square) noexcept {
    return FileOf(square) <= 3 && RankOf(square) <= FileOf(square);
}

bool MayStandTogether(Square k1, Square k2) noexcept {
    return Distance[k1][k2] > 1;
}

/// Placements of `count` equal men on `squares` squares.
std::uint32_t Choose(std::uint32_t squares, std::size_t count) noexcept {
    switch (count) {
    case 0: return 1;
    case 1: return squares;
    case 2: return squares * (squares - 1) / 2;
    default: return squares * (squares - 1) * (squares - 2) / 6;
    }
}

}  // namespace

const CNalimovEnumeration& CNalimovEnumeration::Instance() {
    // Never destroyed: a search may be looking at it while the program ends.
    static const CNalimovEnumeration& shared =
        *std::unique_ptr<CNalimovEnumeration>(new CNalimovEnumeration).release();
    return shared;
}

CNalimovEnumeration::CNalimovEnumeration() {
    EnumerateSquares();
    EnumerateKings();
    BuildBases();
}

void CNalimovEnumeration::EnumerateSquares() {
    for (const NalimovKind kind : AllKinds) {
        for (Square king = A1; king <= H8; ++king) {
            const Bitboard allowed =
                SquaresOfKind(kind) & ~TouchingChecks(kind, king) & ~BitOf(king);
            std::uint8_t ordinal = 0;
            for (Square square = A1; square <= H8; ++square) {
                const bool isAllowed = (allowed & BitOf(square)) != 0;
                squareEnum[kind][king][square] = isAllowed ? ordinal++ : NotAllowed;
            }
            squareCount[kind][king] = ordinal;
        }
    }
}

void CNalimovEnumeration::EnumerateKings() {
    std::uint16_t pawnPairs = 0;
    std::uint16_t freePairs = 0;
    for (Square k1 = A1; k1 <= H8; ++k1) {
        for (Square k2 = A1; k2 <= H8; ++k2) {
            pawnKingPair[k1][k2] = NoPair;
            freeKingPair[k1][k2] = NoPair;
            if (!MayStandTogether(k1, k2)) {
                continue;
            }
            if (FileOf(k1) <= 3) {
                pawnKingPair[k1][k2] = pawnPairs++;
                pairs_[1].push_back({k1, k2});
            }
            const bool onDiagonal = FileOf(k1) == RankOf(k1);
            if (IsInTriangle(k1) && (!onDiagonal || FileOf(k2) >= RankOf(k2))) {
                freeKingPair[k1][k2] = freePairs++;
                pairs_[0].push_back({k1, k2});
            }
        }
    }
    assert(pawnPairs == PawnKingPairs && freePairs == FreeKingPairs);
}

void CNalimovEnumeration::BuildBases() {
    // A resting pawn is enumerated only where the side to move has nothing but its king.
    std::vector<NalimovKind> restingPawns;
    for (int count = 1; count <= 3; ++count) {
        restingPawns.push_back(RestingPawnKind);
        BuildBase(true, restingPawns);
    }
    for (const bool pawns : {false, true}) {
        BuildBase(pawns, {});
        const int lowest = pawns ? PawnKind : KnightKind;
        for (int a = lowest; a <= QueenKind; ++a) {
            BuildBase(pawns, {AllKinds[a]});
            for (int b = lowest; b <= a; ++b) {
                BuildBase(pawns, {AllKinds[a], AllKinds[b]});
                for (int c = lowest; c <= b; ++c) {
                    BuildBase(pawns, {AllKinds[a], AllKinds[b], AllKinds[c]});
                }
            }
        }
    }
}

void CNalimovEnumeration::BuildBase(bool pawns, const std::vector<NalimovKind>& kinds) {
    NalimovBase& base = bases_[pawns ? 1 : 0][kinds];
    for (const KingPair& pair : pairs_[pawns ? 1 : 0]) {
        base.entry.push_back(base.total);
        std::uint32_t placements = 1;
        for (std::size_t first = 0; first < kinds.size();) {
            std::size_t next = first;
            while (next < kinds.size() && kinds[next] == kinds[first]) {
                ++next;
            }
            const int squares = Rest(pair.k1, pair.k2, kinds[first]);
            placements *= Choose(squares, next - first);
            first = next;
        }
        base.total += placements;
    }
}

const NalimovBase& CNalimovEnumeration::BaseOf(bool pawns,
                                               std::span<const NalimovKind> kinds) const {
    return bases_[pawns ? 1 : 0].at(std::vector<NalimovKind>(kinds.begin(), kinds.end()));
}

}  // namespace brenquil
