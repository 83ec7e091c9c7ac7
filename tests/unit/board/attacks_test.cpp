// The attack tables against walks over files and ranks.

#include "board/attacks.h"
#include "board_checks.h"
#include "squares_that.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

bool IsOnBoard(int file, int rank) {
    return file >= 0 && file < 8 && rank >= 0 && rank < 8;
}

/// A ray walk of the tests' own: the four lines of a rook or bishop up to the first man.
Bitboard Walk(int square, Bitboard occupied, bool diagonal) {
    Bitboard reached = 0;
    for (int fileStep = -1; fileStep <= 1; ++fileStep) {
        for (int rankStep = -1; rankStep <= 1; ++rankStep) {
            if ((fileStep != 0 && rankStep != 0) != diagonal || (fileStep == 0 && rankStep == 0)) {
                continue;
            }
            for (int i = 1; IsOnBoard(square % 8 + i * fileStep, square / 8 + i * rankStep); ++i) {
                const Bitboard bit = std::uint64_t{1} << (square + i * (fileStep + 8 * rankStep));
                reached |= bit;
                if ((occupied & bit) != 0) {
                    break;
                }
            }
        }
    }
    return reached;
}

TEST(SliderLookup, EqualsTheRayWalkForEverySubsetOfEveryMask) {
    for (int square = 0; square < 64; ++square) {
        for (const bool diagonal : {false, true}) {
            const Bitboard mask = diagonal ? BishopMasks[square] : RookMasks[square];
            Bitboard subset = 0;
            do {
                const Bitboard seen =
                    diagonal ? BishopAttacksFrom(square, subset) : RookAttacksFrom(square, subset);
                ASSERT_EQ(seen, Walk(square, subset, diagonal)) << SquareToText(square) << subset;
                subset = (subset - mask) & mask;
            } while (subset != 0);
        }
    }
}

TEST(SliderLookup, EqualsTheRayWalkForRandomOccupancies) {
    CRandom random(11);
    for (int i = 0; i < 200000; ++i) {
        const int square = random.Below(64);
        const Bitboard occupied = random.OneIn(2) ? random.Word() : random.Word() & random.Word();
        const Bitboard rook = Walk(square, occupied, false);
        const Bitboard bishop = Walk(square, occupied, true);
        ASSERT_EQ(RookAttacksFrom(square, occupied), rook);
        ASSERT_EQ(BishopAttacksFrom(square, occupied), bishop);
        ASSERT_EQ(QueenAttacksFrom(square, occupied), rook | bishop);
    }
}

TEST(SliderLookup, ReadsTheSlabsByTheFixedShifts) {
    CRandom random(12);
    for (int i = 0; i < 20000; ++i) {
        const int square = random.Below(64);
        const Bitboard occupied = random.Word();
        EXPECT_EQ(RookAttacks[square][(occupied & RookMasks[square]) * RookMagics[square] >> 52],
                  Walk(square, occupied, false));
        EXPECT_EQ(
            BishopAttacks[square][(occupied & BishopMasks[square]) * BishopMagics[square] >> 55],
            Walk(square, occupied, true));
    }
}

TEST(SliderLookup, KnowsEverySetOfMenOnTheRelevantSquares) {
    for (int square = 0; square < 64; ++square) {
        for (const bool diagonal : {false, true}) {
            const Bitboard mask = diagonal ? BishopMasks[square] : RookMasks[square];
            Bitboard occupied = mask;
            do {
                occupied = (occupied - 1) & mask;
                ASSERT_EQ(diagonal ? BishopAttacksFrom(square, occupied)
                                   : RookAttacksFrom(square, occupied),
                          Walk(square, occupied, diagonal));
            } while (occupied != mask);
        }
    }
}

TEST(SliderLookup, SeesFourteenSquaresFromACornerOfTheEmptyBoardAndTwoOnAFullOne) {
    EXPECT_EQ(RookAttacksFrom(A1, 0),
              SquaresThat(A1, [](int f, int r) { return (f == 0) != (r == 0); }));
    EXPECT_EQ(std::popcount(RookAttacksFrom(A1, 0)), 14);
    EXPECT_EQ(RookAttacksFrom(A1, AllSquares), BitOf(B1) | BitOf(A2));
}

TEST(SliderLookup, OfABishopOnTheEmptyBoardIsItsRays) {
    EXPECT_EQ(BishopAttacksFrom(D4, 0), BishopRays[D4]);
}

TEST(SliderMasks, AreTheRaysWithoutTheirLastSquares) {
    for (int square = 0; square < 64; ++square) {
        for (const bool diagonal : {false, true}) {
            // A square is relevant if a man on it hides another square.
            Bitboard relevant = 0;
            for (int other = 0; other < 64; ++other) {
                if (Walk(square, std::uint64_t{1} << other, diagonal) !=
                    Walk(square, 0, diagonal)) {
                    relevant |= std::uint64_t{1} << other;
                }
            }
            EXPECT_EQ(diagonal ? BishopMasks[square] : RookMasks[square], relevant);
            EXPECT_EQ(diagonal ? BishopRays[square] : RookRays[square], Walk(square, 0, diagonal));
        }
    }
}

TEST(StepTables, HoldTheMovesOfKnightKingAndPawn) {
    for (int square = 0; square < 64; ++square) {
        EXPECT_EQ(KnightAttacks[square],
                  SquaresThat(square, [](int f, int r) { return std::abs(f * r) == 2; }));
        EXPECT_EQ(KingAttacks[square], SquaresThat(square, [](int f, int r) {
                      return std::max(std::abs(f), std::abs(r)) == 1;
                  }));
        EXPECT_EQ(PawnAttacks[White][square],
                  SquaresThat(square, [](int f, int r) { return std::abs(f) == 1 && r == 1; }));
        EXPECT_EQ(PawnAttacks[Black][square],
                  SquaresThat(square, [](int f, int r) { return std::abs(f) == 1 && r == -1; }));
    }
}

TEST(StepTables, KeepPawnAttacksOnTheBoard) {
    EXPECT_EQ(PawnAttacks[White][A2], BitOf(B3));
    EXPECT_EQ(PawnAttacks[Black][H7], BitOf(G6));
    for (int square = A8; square <= H8; ++square) {
        EXPECT_EQ(PawnAttacks[White][square], 0U);
        EXPECT_EQ(PawnAttacks[Black][square - A8], 0U);
    }
}

TEST(BetweenTable, IsEmptyWithoutALineOrASquareBetween) {
    for (int square = 0; square < 64; ++square) {
        EXPECT_EQ(Between[square][square], 0U);
    }
    EXPECT_EQ(Between[A1][B3], 0U);
    EXPECT_EQ(Between[A1][A2], 0U);
    EXPECT_EQ(Between[H4][A5], 0U);
    EXPECT_EQ(Between[A1][H8],
              BitOf(B2) | BitOf(C3) | BitOf(D4) | BitOf(E5) | BitOf(F6) | BitOf(G7));
}

TEST(BetweenTable, HoldsWhatASliderOnEachSideSeesOfALine) {
    for (int a = 0; a < 64; ++a) {
        for (int b = 0; b < 64; ++b) {
            Bitboard expected = 0;
            for (const bool diagonal : {false, true}) {
                if ((Walk(a, 0, diagonal) >> b & 1U) != 0) {
                    // Seen from both ends with a man on the other end, the crossing lines cut out.
                    for (int c = 0; c < 64; ++c) {
                        const int file = (c % 8 - a % 8) * (b / 8 - a / 8);
                        const int rank = (c / 8 - a / 8) * (b % 8 - a % 8);
                        const int dot =
                            (c % 8 - a % 8) * (c % 8 - b % 8) + (c / 8 - a / 8) * (c / 8 - b / 8);
                        expected |= file == rank && dot < 0 ? std::uint64_t{1} << c : 0;
                    }
                }
            }
            ASSERT_EQ(Between[a][b], expected) << SquareToText(a) << SquareToText(b);
        }
    }
}

TEST(BeyondTable, HoldsTheSquaresFromWhichASquareLiesBetween) {
    for (Square a = A1; a <= H8; ++a) {
        for (Square b = A1; b <= H8; ++b) {
            Bitboard expected = 0;
            for (Square c = A1; c <= H8; ++c) {
                expected |= (Between[a][c] & BitOf(b)) != 0 ? BitOf(c) : 0;
            }
            ASSERT_EQ(Beyond[a][b], expected) << SquareToText(a) << SquareToText(b);
        }
    }
    EXPECT_EQ(Beyond[A1][F6], BitOf(G7) | BitOf(H8));
}

TEST(FileMasksTable, HoldsTheSquaresOfEachFile) {
    for (int file = 0; file < 8; ++file) {
        EXPECT_EQ(FileMasks[file], SquaresThat(file, [](int f, int) { return f == 0; }));
    }
}

TEST(Forward, IsUpTheBoardForWhiteAndDownForBlack) {
    EXPECT_EQ(E2 + Forward(White), E3);
    EXPECT_EQ(E7 + Forward(Black), E6);
    EXPECT_EQ(StepForward(BitOf(A8) | BitOf(H2), White), BitOf(H3));
    EXPECT_EQ(StepForward(BitOf(A1) | BitOf(H7), Black), BitOf(H6));
}

TEST(RelativeRank, CountsFromTheOwnSide) {
    for (Square square = A1; square <= H8; ++square) {
        EXPECT_EQ(RelativeRank(square, White), square / 8);
        EXPECT_EQ(RelativeRank(square, Black), 7 - square / 8);
        EXPECT_EQ(RelativeRank(FlipRank(square), Black), RelativeRank(square, White));
        for (const Colour colour : {White, Black}) {
            const int rank = RelativeRank(square, colour);
            EXPECT_NE(RelativeRankMask(rank, colour) & BitOf(square), 0U);
            EXPECT_EQ(RankOf(square) == HomeRank(colour), rank == 0);
        }
    }
}

TEST(PawnAttackSet, JoinsTheAttacksOfItsPawns) {
    CRandom random(17);
    for (int i = 0; i < 1000; ++i) {
        const Bitboard pawns = random.Word();
        Bitboard white = 0;
        Bitboard black = 0;
        for (Bitboard rest = pawns; rest != 0; rest &= rest - 1) {
            white |= PawnAttacks[White][std::countr_zero(rest)];
            black |= PawnAttacks[Black][std::countr_zero(rest)];
        }
        EXPECT_EQ(PawnAttackSet<White>(pawns), white);
        EXPECT_EQ(PawnAttackSet<Black>(pawns), black);
    }
}

/// Steps of a king on the empty board, counted by spreading from his square.
int KingSteps(int from, int to) {
    Bitboard reached = std::uint64_t{1} << from;
    int steps = 0;
    for (; (reached >> to & 1U) == 0; ++steps) {
        Bitboard next = reached;
        for (int square = 0; square < 64; ++square) {
            if ((reached >> square & 1U) != 0) {
                next |= SquaresThat(square, [](int f, int r) { return f * f <= 1 && r * r <= 1; });
            }
        }
        reached = next;
    }
    return steps;
}

TEST(DistanceTables, CountTheStepsOfAKing) {
    for (int a = 0; a < 64; ++a) {
        for (int b = a; b < 64; b += 3) {
            ASSERT_EQ(Distance[a][b], KingSteps(a, b));
            ASSERT_EQ(Distance[b][a], Distance[a][b]);
        }
    }
}

TEST(SquareShades, PutA1AmongTheDarkSquares) {
    for (int square = 0; square < 64; ++square) {
        const bool isDark = (square % 8 + square / 8) % 2 == 0;
        EXPECT_EQ((DarkSquares >> square & 1U) != 0, isDark);
        EXPECT_EQ((LightSquares >> square & 1U) != 0, !isDark);
    }
}

TEST(ShiftOfASet, LosesWhatLeavesTheBoard) {
    CRandom random(13);
    const auto moved = [](Bitboard set, int fileStep, int rankStep) {
        Bitboard result = 0;
        for (int square = 0; square < 64; ++square) {
            const int file = square % 8 + fileStep;
            const int rank = square / 8 + rankStep;
            if ((set >> square & 1U) != 0 && IsOnBoard(file, rank)) {
                result |= std::uint64_t{1} << (rank * 8 + file);
            }
        }
        return result;
    };
    for (int i = 0; i < 100; ++i) {
        const Bitboard set = i == 0 ? AllSquares : random.Word();
        EXPECT_EQ(Shift<8>(set), moved(set, 0, 1));
        EXPECT_EQ(Shift<9>(set), moved(set, 1, 1));
        EXPECT_EQ(Shift<1>(set), moved(set, 1, 0));
        EXPECT_EQ(Shift<-7>(set), moved(set, 1, -1));
        EXPECT_EQ(Shift<-8>(set), moved(set, 0, -1));
        EXPECT_EQ(Shift<-9>(set), moved(set, -1, -1));
        EXPECT_EQ(Shift<-1>(set), moved(set, -1, 0));
        EXPECT_EQ(Shift<7>(set), moved(set, -1, 1));
    }
}

}  // namespace
}  // namespace brenquil
