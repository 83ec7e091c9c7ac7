#include "bases/syzygy/tb_index.h"
#include "bases/syzygy/tb_index_tables.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace brenquil {
namespace {

TEST(TbIndexTables, CountCombinations) {
    EXPECT_EQ(BinomialTable[0][5], 5);
    EXPECT_EQ(BinomialTable[1][5], 10);
    EXPECT_EQ(BinomialTable[4][63], 7028847);
    EXPECT_EQ(BinomialTable[2][2], 0);
    EXPECT_EQ(BinomialTable[1][0], 0);
}

TEST(TbIndexTables, FoldTheBoardIntoTenClasses) {
    constexpr int Classes[] = {6, 0, 1, 2, 0, 7, 3, 4, 1, 3, 8, 5, 2, 4, 5, 9};
    for (int rank = 0; rank < 4; ++rank) {
        for (int file = 0; file < 4; ++file) {
            const int wanted = Classes[rank * 4 + file];
            EXPECT_EQ(TriangleClass[MakeSquare(file, rank)], wanted);
            EXPECT_EQ(TriangleClass[MakeSquare(7 - file, rank)], wanted);
            EXPECT_EQ(TriangleClass[MakeSquare(file, 7 - rank)], wanted);
        }
    }
}

TEST(TbIndexTables, NumberTheHalfBoardAndTheDiagonals) {
    EXPECT_EQ(LowerHalf[B1], 0);
    EXPECT_EQ(LowerHalf[A2], 0);
    EXPECT_EQ(LowerHalf[H1], 6);
    EXPECT_EQ(LowerHalf[C2], 7);
    EXPECT_EQ(LowerHalf[H7], 27);
    EXPECT_EQ(LowerHalf[A1], 28);
    EXPECT_EQ(LowerHalf[H8], 35);
    EXPECT_EQ(DiagonalClass[D4], 3);
    EXPECT_EQ(DiagonalClass[H1], 8);
    EXPECT_EQ(DiagonalClass[A8], 15);
    EXPECT_EQ(DiagonalClass[B1], 0);
    EXPECT_EQ(OffDiagonal[A2], 1);
    EXPECT_EQ(OffDiagonal[B1], -1);
    EXPECT_EQ(OffDiagonal[C3], 0);
    EXPECT_EQ(DiagonalFlip[B1], A2);
    EXPECT_EQ(LeadPawnOrder[A2], 0);
    EXPECT_EQ(LeadPawnOrder[H7], 5);
    EXPECT_EQ(LeadPawnOrder[E7], 23);
    EXPECT_EQ(LeadPawnOrder[C1], 0);
}

TEST(TbIndexTables, NumberThePairsOfKings) {
    std::set<int> numbers;
    for (std::size_t c = 0; c < 10; ++c) {
        for (Square s = A1; s <= H8; ++s) {
            const int number = KingPairIndex[c][s];
            if (number >= 0) {
                EXPECT_TRUE(numbers.insert(number).second);
                EXPECT_EQ(number >= KingPairsOffDiagonal, c >= 6 && FileOf(s) == RankOf(s));
            }
        }
    }
    EXPECT_EQ(numbers.size(), 462U);
    EXPECT_EQ(*numbers.rbegin(), 461);
    EXPECT_EQ(KingPairIndex[0][B1], -1);
    EXPECT_EQ(KingPairIndex[0][C2], -1);
    EXPECT_EQ(KingPairIndex[0][D1], 0);
    EXPECT_EQ(KingPairIndex[6][C3], 441);
}

TEST(TbShapes, TellTheEncodingOfAName) {
    EXPECT_EQ(ShapeOfName("KQvK").encodingType, 0);
    EXPECT_EQ(ShapeOfName("KQvKR").encodingType, 0);
    EXPECT_EQ(ShapeOfName("KNNvK").encodingType, 2);
    EXPECT_EQ(ShapeOfName("KNNvKQ").encodingType, 0);
    EXPECT_EQ(ShapeOfName("KNNvKNN").encodingType, 2);
    EXPECT_TRUE(ShapeOfName("KNNvKNN").symmetric);
    EXPECT_FALSE(ShapeOfName("KNNvKN").symmetric);
    EXPECT_EQ(ShapeOfName("KNNvKN").men, 5);
}

TEST(TbShapes, LeadWithTheSideThatHasFewerPawns) {
    using Pawns = std::array<std::uint8_t, 2>;
    EXPECT_EQ(ShapeOfName("KPvK").pawnCount, (Pawns{1, 0}));
    EXPECT_EQ(ShapeOfName("KQvKP").pawnCount, (Pawns{1, 0}));
    EXPECT_EQ(ShapeOfName("KPPvKP").pawnCount, (Pawns{1, 2}));
    EXPECT_EQ(ShapeOfName("KPvKP").pawnCount, (Pawns{1, 1}));
    EXPECT_EQ(ShapeOfName("KPPPvK").pawnCount, (Pawns{3, 0}));
}

TbLayout LayoutOf(const TbShape& shape, std::initializer_list<int> codes, unsigned file,
                  unsigned order, unsigned secondOrder = TbNoSecondOrder) {
    TbLayout layout;
    std::copy(codes.begin(), codes.end(), layout.pieceCodes.begin());
    EXPECT_TRUE(LayOutGroups(shape, file, order, secondOrder, layout));
    return layout;
}

TEST(TbIndex, AGroupWithoutAPlaceIsRefused) {
    const TbShape shape = ShapeOfName("KQvKR");
    TbLayout layout;
    layout.pieceCodes = {6, 14, 5, 12, 0, 0};
    EXPECT_TRUE(LayOutGroups(shape, 0, 1, TbNoSecondOrder, layout));
    EXPECT_FALSE(LayOutGroups(shape, 0, 2, TbNoSecondOrder, layout));
    const TbShape pawns = ShapeOfName("KPvKP");
    layout.pieceCodes = {1, 9, 6, 14, 0, 0};
    EXPECT_TRUE(LayOutGroups(pawns, 0, 3, 0, layout));
    EXPECT_FALSE(LayOutGroups(pawns, 0, 1, 1, layout));
}

/// All reflections of a board without pawns.
TbSquares Reflected(TbSquares squares, unsigned men, int reflection) {
    for (unsigned i = 0; i < men; ++i) {
        squares[i] ^= (reflection & 1) != 0 ? H1 : A1;
        squares[i] ^= (reflection & 2) != 0 ? A8 : A1;
        squares[i] = (reflection & 4) != 0 ? DiagonalFlip[squares[i]] : squares[i];
    }
    return squares;
}

/// Numbers all placements of three men; equal numbers must be reflections of each other.
TEST(TbIndex, ThreeDifferentMenHaveANumberEach) {
    const TbShape shape = ShapeOfName("KQvK");
    const TbLayout layout = LayoutOf(shape, {6, 14, 5}, 0, 0);
    EXPECT_EQ(layout.size, 31332U);
    std::map<std::uint64_t, std::set<TbSquares>> byNumber;
    for (Square a = A1; a <= H8; ++a) {
        for (Square b = A1; b <= H8; ++b) {
            for (Square c = A1; c <= H8; ++c) {
                if (a != b && b != c && a != c) {
                    TbSquares squares = {a, b, c};
                    byNumber[EncodePiece(shape, layout, squares)].insert({a, b, c});
                }
            }
        }
    }
    EXPECT_EQ(byNumber.size(), 31332U);
    EXPECT_EQ(byNumber.rbegin()->first, 31331U);
    for (const auto& [number, placements] : byNumber) {
        for (int reflection = 0; reflection < 8; ++reflection) {
            ASSERT_TRUE(placements.contains(Reflected(*placements.begin(), 3, reflection)))
                << number;
        }
        ASSERT_LE(placements.size(), 8U);
    }
}

TEST(TbIndex, TwoKingsAndAThirdManHaveANumberEach) {
    TbShape shape = ShapeOfName("KQvK");
    shape.encodingType = 1;
    TbLayout layout;
    layout.groupSizes = {3};
    layout.groupFactors = {1};
    std::map<std::uint64_t, std::set<TbSquares>> byNumber;
    for (Square a = A1; a <= H8; ++a) {
        for (Square b = A1; b <= H8; ++b) {
            for (Square c = A1; c <= H8; ++c) {
                if (tables::ChebyshevDistance(a, b) > 1 && b != c && a != c) {
                    TbSquares squares = {a, b, c};
                    byNumber[EncodePiece(shape, layout, squares)].insert({a, b, c});
                }
            }
        }
    }
    EXPECT_LE(byNumber.rbegin()->first, 28055U);
    for (const auto& [number, placements] : byNumber) {
        for (int reflection = 0; reflection < 8; ++reflection) {
            ASSERT_TRUE(placements.contains(Reflected(*placements.begin(), 3, reflection)))
                << number;
        }
        ASSERT_LE(placements.size(), 8U);
    }
}

/// One man on a1 and five like men on sets of the squares left: the number is the rank of the set
/// when sets are ordered by their highest men.
TEST(TbIndex, FiveLikePiecesUseTheFifthRow) {
    TbShape shape = ShapeOfName("KQvK");
    shape.men = 6;
    shape.encodingType = 2;
    TbLayout layout;
    layout.groupSizes = {1, 5};
    layout.groupFactors = {0, 1};
    std::mt19937_64 random(5);
    for (int round = 0; round < 20000; ++round) {
        std::set<Square> chosen;
        while (chosen.size() < 5) {
            chosen.insert(static_cast<Square>(1 + random() % 63));
        }
        TbSquares squares = {A1};
        std::copy(chosen.begin(), chosen.end(), squares.begin() + 1);
        std::shuffle(squares.begin() + 1, squares.end(), random);
        std::uint64_t rank = 0;
        std::int64_t k = 1;
        for (const Square square : chosen) {
            std::int64_t ways = 1;
            for (std::int64_t i = 0; i < k; ++i) {
                ways = ways * (square - 1 - i) / (i + 1);
            }
            rank += static_cast<std::uint64_t>(ways);
            ++k;
        }
        // The board may have been folded along its diagonal: that is another set.
        TbSquares folded = squares;
        const std::uint64_t number = EncodePiece(shape, layout, folded);
        std::set<Square> after(folded.begin() + 1, folded.end());
        if (after == chosen) {
            ASSERT_EQ(number, rank);
        }
        ASSERT_LT(number, 7028847U);
    }
}

class LeadPawns : public testing::TestWithParam<unsigned> {};

/// Every set of leading pawns has a number of its own in its file group, and none is left out.
TEST_P(LeadPawns, HaveANumberEach) {
    const unsigned pawns = GetParam();
    TbShape shape = ShapeOfName("KPvK");
    shape.men = static_cast<std::uint8_t>(pawns);
    shape.pawnCount = {static_cast<std::uint8_t>(pawns), 0};
    TbLayout layout;
    layout.groupSizes = {static_cast<std::uint8_t>(pawns)};
    layout.groupFactors = {1};
    std::array<std::vector<std::uint8_t>, 4> seen;
    for (std::size_t file = 0; file < 4; ++file) {
        seen[file].resize(static_cast<std::size_t>(LeadPawnFactor[pawns - 1][file]));
    }
    std::size_t sets = 0;
    std::array<Square, 5> chosen{};
    const auto choose = [&](const auto& self, unsigned man) -> void {
        if (man == pawns) {
            TbSquares squares{};
            std::copy(chosen.begin(), chosen.begin() + pawns, squares.begin());
            const unsigned file = LeadPawnToFront(pawns, squares);
            const std::uint64_t number = EncodePawn(shape, layout, squares);
            ASSERT_LT(number, seen[file].size());
            // A set and its mirror image have the same number.
            ASSERT_LE(++seen[file][number], 2);
            ++sets;
            return;
        }
        for (Square s = man == 0 ? A2 : chosen[man - 1] + 1; s <= H7; ++s) {
            chosen[man] = s;
            self(self, man + 1);
        }
    };
    choose(choose, 0);
    EXPECT_EQ(sets, static_cast<std::size_t>(BinomialTable[pawns - 1][48]));
    for (const auto& numbers : seen) {
        EXPECT_TRUE(std::all_of(numbers.begin(), numbers.end(), [](int n) { return n > 0; }));
    }
}

INSTANTIATE_TEST_SUITE_P(OneToFour, LeadPawns, testing::Values(1U, 2U, 3U, 4U));

TEST(TbIndex, ASecondGroupOfPawnsUsesTheSquaresLeft) {
    const TbShape shape = ShapeOfName("KPvKP");
    std::set<std::uint64_t> numbers;
    for (unsigned file = 0; file < 4; ++file) {
        const TbLayout layout = LayoutOf(shape, {1, 9, 6, 14}, file, 0, 1);
        EXPECT_EQ(layout.size, 6U * 47 * 62 * 61);
    }
    const TbLayout layout = LayoutOf(shape, {1, 9, 6, 14}, 0, 0, 1);
    for (int rank = 1; rank < 7; ++rank) {
        for (Square other = A2; other <= H7; ++other) {
            TbSquares squares = {MakeSquare(0, rank), other, A1, C1};
            if (other != squares[0]) {
                numbers.insert(EncodePawn(shape, layout, squares));
            }
        }
    }
    EXPECT_EQ(numbers.size(), 6U * 47);
}

/// Whatever the place of the leading group, the numbers are those of a mixed-radix system.
TEST(TbIndex, TheOrderOfTheGroupsIsFree) {
    const TbShape shape = ShapeOfName("KQvKR");
    const TbLayout first = LayoutOf(shape, {6, 14, 5, 12}, 0, 0);
    const TbLayout last = LayoutOf(shape, {6, 14, 5, 12}, 0, 1);
    EXPECT_EQ(first.size, last.size);
    EXPECT_EQ(first.groupFactors[0], 1U);
    EXPECT_EQ(first.groupFactors[3], 31332U);
    EXPECT_EQ(last.groupFactors[0], 61U);
    EXPECT_EQ(last.groupFactors[3], 1U);
    TbSquares a = {C1, F6, D4, H3};
    TbSquares b = a;
    const std::uint64_t inFirst = EncodePiece(shape, first, a);
    const std::uint64_t inLast = EncodePiece(shape, last, b);
    EXPECT_EQ(inFirst % 31332, inLast / 61);
    EXPECT_EQ(inFirst / 31332, inLast % 61);
}

}  // namespace
}  // namespace brenquil
