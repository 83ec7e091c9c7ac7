// The solver on which the tests of the tables rest, against mates that everybody knows.

#include "../../../support/nalimov_solver.h"

#include <gtest/gtest.h>

namespace brenquil::test {
namespace {

int LongestMate(CEndgameSolver& solver, const std::string& name) {
    return (solver.Ending(name).Longest() + 1) / 2;
}

TEST(NalimovSolver, LongestMatesOfThreeMenAreTheKnownOnes) {
    CEndgameSolver solver;
    EXPECT_EQ(LongestMate(solver, "kqk"), 10);
    EXPECT_EQ(LongestMate(solver, "krk"), 16);
    EXPECT_EQ(LongestMate(solver, "kpk"), 28);
    EXPECT_EQ(LongestMate(solver, "kbk"), 0);
    EXPECT_EQ(LongestMate(solver, "knk"), 0);
}

TEST(NalimovSolverProof, LongestMatesOfFourMenAreTheKnownOnes) {
    CEndgameSolver solver;
    EXPECT_EQ(LongestMate(solver, "kbbk"), 19);
    EXPECT_EQ(LongestMate(solver, "kbnk"), 33);
    EXPECT_EQ(LongestMate(solver, "kqkr"), 35);
}

TEST(NalimovSolver, SinglePositions) {
    CEndgameSolver solver;
    const CSolvedEnding& queen = solver.Ending("kqk");
    EXPECT_EQ(queen.Value({F6, H8, G7}, Black, false), 0) << "mated";
    EXPECT_EQ(queen.Value({F6, H8, G5}, White, false), 1) << "mate in one";
    EXPECT_EQ(queen.Value({C1, A1, B3}, Black, false), CSolvedEnding::Draw) << "stalemate";
    EXPECT_EQ(queen.Value({F6, H8, G7}, White, false), CSolvedEnding::Impossible);
    EXPECT_EQ(queen.Value({D1, A1, B2}, Black, false), CSolvedEnding::Draw) << "queen is lost";
}

}  // namespace
}  // namespace brenquil::test
