#include "bases/syzygy/tb_index.h"

#include "bases/syzygy/tb_index_tables.h"
#include "platform/bits.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace brenquil {

namespace {

/// Ways to place `count` like men on `squares` squares. The products are made in 32 bits, as the
/// format has them.
[[nodiscard]] std::uint64_t Placements(unsigned count, unsigned squares) noexcept {
    std::uint32_t ways = squares;
    std::int32_t divisor = 1;
    for (unsigned i = 1; i < count; ++i) {
        ways *= squares - i;
        divisor *= i + 1;
    }
    const std::int32_t dividend = ways;  // negative where the product has passed 31 bits
    return dividend / divisor;
}

/// Sizes of the groups: the leading ones by the shape, the others by runs of like men.
void SetGroupSizes(const TbShape& shape, TbLayout& layout) noexcept {
    layout.groupSizes.fill(0);
    std::size_t i = 0;
    if (shape.hasPawns) {
        layout.groupSizes[0] = shape.pawnCount[0];
        i = shape.pawnCount[0];
        if (shape.pawnCount[1] != 0) {
            layout.groupSizes[i] = shape.pawnCount[1];
            i += shape.pawnCount[1];
        }
    } else if (shape.encodingType == 0) {
        i = layout.groupSizes[0] = 3;
    } else if (shape.encodingType == 2) {
        i = layout.groupSizes[0] = 2;
    } else {
        i = layout.groupSizes[0] = ToByte(shape.encodingType - 1);
    }
    while (i < shape.men) {
        std::uint8_t run = 1;
        while (i + run < shape.men && layout.pieceCodes[i + run] == layout.pieceCodes[i]) {
            ++run;
        }
        layout.groupSizes[i] = run;
        i += run;
    }
}

/// Exchanges files, ranks or both in all squares.
void Reflect(TbSquares& squares, unsigned men, Square mask) noexcept {
    std::for_each_n(squares.begin(), men, [=](Square& square) { square ^= mask; });
}

/// Brings a board without pawns into the triangle a1-d1-d4, as far as the leading men decide it.
void FoldBoard(const TbShape& shape, unsigned leaders, TbSquares& squares) noexcept {
    if (FileOf(squares[0]) > 3) {
        Reflect(squares, shape.men, H1);
    }
    if (RankOf(squares[0]) > 3) {
        Reflect(squares, shape.men, A8);
    }
    const auto* const decider =
        std::find_if(squares.begin(), squares.begin() + shape.men,
                     [](Square square) { return OffDiagonal[square] != 0; });
    if (decider < squares.begin() + leaders && OffDiagonal[*decider] > 0) {
        std::for_each_n(squares.begin(), shape.men,
                        [](Square& square) { square = DiagonalFlip[square]; });
    }
}

/// Three different men: 31332 placements.
[[nodiscard]] int ThreeMenIndex(const TbSquares& squares) noexcept {
    constexpr int SecondOffDiagonal = 6 * 63 * 62;
    constexpr int ThirdOffDiagonal = SecondOffDiagonal + 4 * 28 * 62;
    constexpr int AllOnDiagonal = ThirdOffDiagonal + 4 * 7 * 28;
    const Square first = squares[0];
    const Square second = squares[1];
    const Square third = squares[2];
    const int skipSecond = second > first ? 1 : 0;
    const int skipThird = (third > first ? 1 : 0) + (third > second ? 1 : 0);

    if (OffDiagonal[first] != 0) {
        return TriangleClass[first] * 63 * 62 + (second - skipSecond) * 62 + third - skipThird;
    }
    if (OffDiagonal[second] != 0) {
        return SecondOffDiagonal + DiagonalClass[first] * 28 * 62 + LowerHalf[second] * 62 + third -
               skipThird;
    }
    if (OffDiagonal[third] != 0) {
        return ThirdOffDiagonal + DiagonalClass[first] * 7 * 28 +
               (DiagonalClass[second] - skipSecond) * 28 + LowerHalf[third];
    }
    return AllOnDiagonal + DiagonalClass[first] * 7 * 6 + (DiagonalClass[second] - skipSecond) * 6 +
           DiagonalClass[third] - skipThird;
}

/// Two kings and a third man, numbered together: 28056 placements.
[[nodiscard]] int KingsAndManIndex(const TbSquares& squares) noexcept {
    const int pair = KingPairIndex[TriangleClass[squares[0]]][squares[1]];
    const Square third = squares[2];
    const int skip = (third > squares[0] ? 1 : 0) + (third > squares[1] ? 1 : 0);
    if (pair < KingPairsOffDiagonal) {
        return pair + KingPairsOffDiagonal * (third - skip);
    }
    const int onDiagonal = OffDiagonal[third] == 0 ? skip : 0;
    return KingPairsOffDiagonal * 62 + pair - KingPairsOffDiagonal +
           21 * (LowerHalf[third] - onDiagonal);
}

/// The number of one group of like men among the squares that the men before it leave.
/// @param lowest  the first square on which these men can stand
[[nodiscard]] std::uint64_t GroupIndex(TbSquares& squares, std::size_t start, std::size_t count,
                                       Square lowest) noexcept {
    auto* const first = squares.begin() + start;
    std::sort(first, first + count);
    std::uint64_t sum = 0;
    for (std::size_t m = 0; m < count; ++m) {
        const Square square = squares[start + m];
        const auto earlier =
            std::count_if(squares.begin(), first, [=](Square other) { return other < square; });
        sum += BinomialTable[m][square - lowest - earlier];
    }
    return sum;
}

/// Adds the groups from man `i` on to the number.
[[nodiscard]] std::uint64_t AddGroups(const TbShape& shape, const TbLayout& layout,
                                      TbSquares& squares, std::size_t i,
                                      std::uint64_t index) noexcept {
    while (i < shape.men) {
        index += GroupIndex(squares, i, layout.groupSizes[i], A1) * layout.groupFactors[i];
        i += layout.groupSizes[i];
    }
    return index;
}

}  // namespace

TbShape ShapeOfName(std::string_view name) {
    TbShape shape;
    shape.counts = CountsOfName(name);
    shape.key = MaterialKey(shape.counts, false);
    shape.mirrorKey = MaterialKey(shape.counts, true);
    shape.symmetric = shape.key == shape.mirrorKey;
    int single = 0;
    std::uint8_t fewest = TbCodes;
    for (const std::uint8_t count : shape.counts) {
        shape.men = ToByte(shape.men + count);
        single += count == 1 ? 1 : 0;
        fewest = count > 1 ? std::min(fewest, count) : fewest;
    }
    const std::uint8_t first = shape.counts[TbPawn];
    const std::uint8_t second = shape.counts[TbPawn + TbBlackBit];
    shape.hasPawns = first + second != 0;
    if (shape.hasPawns) {
        // The leading group comes from the side with fewer pawns, if it has any.
        const bool secondLeads = second != 0 && (first == 0 || first > second);
        shape.pawnCount = {secondLeads ? second : first, secondLeads ? first : second};
    } else if (single >= 3) {
        shape.encodingType = 0;
    } else if (single == 2) {
        shape.encodingType = 2;
    } else {
        shape.encodingType = ToByte(fewest + 1);
    }
    return shape;
}

std::uint64_t LeadingPlacements(const TbShape& shape, unsigned file) noexcept {
    return shape.hasPawns ? LeadPawnFactor[shape.pawnCount[0] - 1U][file]
                          : PivotFactors[shape.encodingType];
}

bool LayOutGroups(const TbShape& shape, unsigned file, unsigned order, unsigned secondOrder,
                  TbLayout& layout) noexcept {
    assert(file <= 3 && (file == 0 || shape.hasPawns));
    if (shape.encodingType >= PivotFactors.size()) {
        return false;  // a material without two kings
    }
    SetGroupSizes(shape, layout);
    layout.groupFactors.fill(0);
    const unsigned leaders = layout.groupSizes[0];
    const bool hasSecond = shape.hasPawns && secondOrder < TbNoSecondOrder;
    unsigned i = leaders + (hasSecond ? layout.groupSizes[leaders] : 0U);
    unsigned squares = 64 - i;
    std::uint64_t factor = 1;
    bool leadersDone = false;
    bool secondDone = !hasSecond;
    for (unsigned k = 0; i < shape.men || k == order || (hasSecond && k == secondOrder); ++k) {
        if (k == order) {
            layout.groupFactors[0] = factor;
            factor *= LeadingPlacements(shape, file);
            leadersDone = true;
        } else if (hasSecond && k == secondOrder) {
            layout.groupFactors[leaders] = factor;
            factor *= Placements(layout.groupSizes[leaders], 48 - leaders);
            secondDone = true;
        } else {
            const unsigned count = layout.groupSizes[i];
            layout.groupFactors[i] = factor;
            factor *= Placements(count, squares);
            squares -= count;
            i += count;
        }
    }
    layout.size = factor;
    return leadersDone && secondDone;
}

std::uint64_t EncodePiece(const TbShape& shape, const TbLayout& layout,
                          TbSquares& squares) noexcept {
    FoldBoard(shape, shape.encodingType == 0 ? 3 : 2, squares);
    int leading = 0;
    switch (shape.encodingType) {
    case 0: leading = ThreeMenIndex(squares); break;
    case 1: leading = KingsAndManIndex(squares); break;
    default: leading = KingPairIndex[TriangleClass[squares[0]]][squares[1]]; break;
    }
    const std::uint64_t index = leading * layout.groupFactors[0];
    return AddGroups(shape, layout, squares, layout.groupSizes[0], index);
}

std::uint64_t EncodePawn(const TbShape& shape, const TbLayout& layout,
                         TbSquares& squares) noexcept {
    if (FileOf(squares[0]) > 3) {
        Reflect(squares, shape.men, H1);
    }
    const std::size_t leaders = layout.groupSizes[0];
    std::sort(squares.begin() + 1, squares.begin() + leaders,
              [](Square a, Square b) { return PawnTwist[a] > PawnTwist[b]; });
    std::uint32_t leading = LeadPawnIndex[leaders - 1][LeadPawnOrder[squares[0]]];
    for (std::size_t i = leaders - 1; i > 0; --i) {
        leading += BinomialTable[leaders - 1 - i][PawnTwist[squares[i]]];
    }
    std::uint64_t index = leading * layout.groupFactors[0];
    std::size_t i = leaders;
    if (shape.pawnCount[1] != 0) {
        const std::size_t count = layout.groupSizes[i];
        index += GroupIndex(squares, i, count, A2) * layout.groupFactors[i];
        i += count;
    }
    return AddGroups(shape, layout, squares, i, index);
}

unsigned LeadPawnToFront(unsigned pawns, TbSquares& squares) noexcept {
    assert(pawns >= 1 && pawns <= squares.size());
    for (unsigned i = 1; i < pawns; ++i) {
        if (LeadPawnOrder[squares[i]] < LeadPawnOrder[squares[0]]) {
            std::swap(squares[0], squares[i]);
        }
    }
    return LeadPawnOrder[squares[0]] / 6U;
}

}  // namespace brenquil
