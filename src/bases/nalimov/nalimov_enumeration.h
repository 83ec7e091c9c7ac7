// The numberings on which all table indices rest: where a man may stand, which king pairs there are
// and where the placements of each king pair begin.
//
// A man of the side to move may not stand where it would touch the other king with its attack: such
// a position cannot arise, and the files leave no room for it. What is left is numbered in
// ascending order of squares. Sliders are excluded only next to the king: a distant check is not
// looked at, so some impossible positions do have a place in the files.
//
// Everything is built once, on first use, in about a millisecond; afterwards it is read-only and
// shared by all threads. 0.5 MiB, of which one table uses two rows.
#pragma once

#include "board/table.h"
#include "board/types.h"

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace brenquil {

/// How a man is enumerated. The first six are the piece types with one addition: a pawn whose
/// checks do not matter, because its own king is not the one to move.
enum NalimovKind : std::uint8_t {
    RestingPawnKind,  ///< a pawn of the side that is not to move
    PawnKind,
    KnightKind,
    BishopKind,
    RookKind,
    QueenKind
};

inline constexpr int NalimovKinds = 6;

/// The placements of one set of men for all king pairs, end to end.
struct NalimovBase {
    std::vector<std::uint32_t> entry;  ///< by king pair: the number of placements before its first
    std::uint32_t total = 0;           ///< placements of all pairs
};

/// The shared numberings.
class CNalimovEnumeration {
public:
    static constexpr std::uint8_t NotAllowed = 255;  ///< `SquareEnum`: no such man there
    static constexpr std::uint16_t NoPair = 4000;  ///< an entry that is not a pair of the numbering
    static constexpr int PawnKingPairs = 1806;
    static constexpr int FreeKingPairs = 462;

    /// The one object.
    [[nodiscard]] static const CNalimovEnumeration& Instance();

    CNalimovEnumeration(const CNalimovEnumeration&) = delete;
    CNalimovEnumeration& operator=(const CNalimovEnumeration&) = delete;
    ~CNalimovEnumeration() = default;

    /// Squares left for a man of the kind that moves with king `k1` against king `k2`.
    [[nodiscard]] int Rest(Square k1, Square k2, NalimovKind kind) const noexcept {
        return squareCount[kind][k2] - (squareEnum[kind][k2][k1] != NotAllowed ? 1 : 0);
    }

    /// The base table of a set of up to three kinds, the highest first, with equal kinds side by
    /// side. `pawns` chooses the numbering of king pairs. The empty set has the pairs themselves.
    [[nodiscard]] const NalimovBase& BaseOf(bool pawns, std::span<const NalimovKind> kinds) const;

    /// [kind][square of the other king][square]: the ordinal of the square, `NotAllowed` if the man
    /// would stand on the king, on a square that it cannot reach, or give check from beside it.
    std::array<SquareTable<SquareTable<std::uint8_t>>, NalimovKinds> squareEnum{};

    /// [kind][square of the other king]: how many ordinals there are.
    std::array<SquareTable<std::uint8_t>, NalimovKinds> squareCount{};

    /// [king of the side to move][other king], the first on files a to d.
    SquareTable<SquareTable<std::uint16_t>> pawnKingPair{};

    /// The same for tables without pawns: the first king in the triangle a1-d1-d4, and where that
    /// leaves the reflection in the long diagonal open, the second king not above the diagonal.
    SquareTable<SquareTable<std::uint16_t>> freeKingPair{};

private:
    struct KingPair {
        Square k1;
        Square k2;
    };

    CNalimovEnumeration();
    void EnumerateSquares();
    void EnumerateKings();
    void BuildBases();
    void BuildBase(bool pawns, const std::vector<NalimovKind>& kinds);

    std::array<std::vector<KingPair>, 2> pairs_;  // [with pawns], in order of number
    std::array<std::map<std::vector<NalimovKind>, NalimovBase>, 2> bases_;
};

}  // namespace brenquil
