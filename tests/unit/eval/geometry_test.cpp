#include "../board/squares_that.h"
#include "eval/geometry.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

TEST(AdjacentFilesTable, HoldsTheFilesOnBothSides) {
    for (int file = 0; file < 8; ++file) {
        EXPECT_EQ(AdjacentFiles[file],
                  SquaresThat(file, [](int f, int) { return std::abs(f) == 1; }));
    }
}

TEST(PassedMasksTable, HoldsAllSquaresAheadOnThreeFiles) {
    for (int square = 0; square < 64; ++square) {
        EXPECT_EQ(PassedMasks[White][square],
                  SquaresThat(square, [](int f, int r) { return std::abs(f) <= 1 && r > 0; }));
        EXPECT_EQ(PassedMasks[Black][square],
                  SquaresThat(square, [](int f, int r) { return std::abs(f) <= 1 && r < 0; }));
    }
}

TEST(DistanceTables, MeasureFromTheCornersOfEachShade) {
    for (int square = 0; square < 64; ++square) {
        EXPECT_EQ(BishopCorner[0][square], std::min(Distance[square][A1], Distance[square][H8]));
        EXPECT_EQ(BishopCorner[1][square], std::min(Distance[square][H1], Distance[square][A8]));
    }
}

TEST(DistanceTables, CountTheRingsFromTheEdge) {
    for (int square = 0; square < 64; ++square) {
        // The ring is the number of squares free on the tightest of the four sides.
        const int file = square % 8;
        const int rank = square / 8;
        EXPECT_EQ(EdgeRing[square], std::min({file, 7 - file, rank, 7 - rank}));
    }
    EXPECT_EQ(EdgeRing[A5], 0);
    EXPECT_EQ(EdgeRing[B7], 1);
    EXPECT_EQ(EdgeRing[F3], 2);
    EXPECT_EQ(EdgeRing[E5], 3);
}

TEST(DistanceTables, HoldTheNearnessToACorner) {
    // A king's steps to the nearest corner, cut at 3, is the whole rule.
    for (int square = 0; square < 64; ++square) {
        int nearest = 7;
        for (const int corner : {A1, H1, A8, H8}) {
            nearest = std::min(nearest, int{Distance[square][corner]});
        }
        EXPECT_EQ(CornerNear[square], std::min(nearest, 3)) << square;
    }
}

}  // namespace
}  // namespace brenquil
