// Counting nodes, and the lines that tell of it.

#include "../collecting_sink.h"
#include "../varying_figures.h"
#include "interface/console/perft.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace brenquil {
namespace {

struct CPerftFixture : testing::Test {
    CCollectingSink sink;
    std::unique_ptr<CPerft> perft = std::make_unique<CPerft>(sink, CastlingNotation::KingTarget);

    void Set(const char* fen) { CPositionText(perft->position).SetFen(fen); }
};

using Perft = CPerftFixture;

TEST_F(Perft, CountsFromTheStartPosition) {
    EXPECT_EQ(perft->CountNodes(0), 1U);
    EXPECT_EQ(perft->CountNodes(1), 20U);
    EXPECT_EQ(perft->CountNodes(3), 8902U);
}

TEST_F(Perft, CountsAPositionInCheck) {
    Set("8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67");
    EXPECT_EQ(perft->CountNodes(2), 279U);
    Set("4k3/8/8/8/8/8/4r3/4K3 w - - 0 1");
    EXPECT_EQ(perft->CountNodes(1), 3U);
}

TEST_F(Perft, PrintsOneLineForEachDepthWithATrailingBlank) {
    EXPECT_EQ(perft->Perft(3), 8902U);
    const std::vector<std::string> lines = sink.Take();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(WithoutVaryingFigures(lines[0]), "depth 1 nodes 20 ");
    EXPECT_EQ(WithoutVaryingFigures(lines[1]), "depth 2 nodes 400 ");
    EXPECT_EQ(WithoutVaryingFigures(lines[2]), "depth 3 nodes 8902 ");
    EXPECT_GT(std::stoull(lines[2].substr(lines[2].find("nps ") + 4)), 0U);
}

TEST_F(Perft, DivideNumbersTheLegalMovesInListOrder) {
    perft->PerftDivide(1);
    const std::vector<std::string> lines = sink.Take();
    ASSERT_EQ(lines.size(), 25U);
    EXPECT_EQ(lines[0], "");
    EXPECT_EQ(lines[1], " 1  a2a3 - 1");
    EXPECT_EQ(lines[9], " 9  a2a4 - 1");
    EXPECT_EQ(lines[10], "10  b2b4 - 1");
    EXPECT_EQ(lines[20], "20  g1h3 - 1");
    EXPECT_EQ(lines[21], "");
    EXPECT_EQ(lines[22], "nodes: 20");
    EXPECT_TRUE(lines[23].starts_with("time:  ")) << lines[23];
    EXPECT_LT(std::stod(lines[23].substr(7)), 10.0);
    EXPECT_TRUE(lines[24].starts_with("nps:   ")) << lines[24];
    EXPECT_GT(std::stoull(lines[24].substr(7)), 0U);
}

TEST_F(Perft, DivideCountsBehindEachMove) {
    perft->PerftDivide(3);
    const std::vector<std::string> lines = sink.Take();
    EXPECT_EQ(lines[1], " 1  a2a3 - 380");
    EXPECT_EQ(lines[22], "nodes: 8902");
}

TEST_F(Perft, SplitOfAGreatDepthCountsTheSameAndLooksUpOnTheWay) {
    Set("8/8/8/p3k3/8/4K3/7P/8 w - - 0 1");
    constexpr std::int32_t Depth = 7;
    int calls = 0;
    perft->onLongWork = [&calls] { ++calls; };
    perft->PerftSplit(Depth);
    EXPECT_EQ(sink.Take().back(), "Nodes searched: " + std::to_string(perft->CountNodes(Depth)));
    EXPECT_GT(calls, 50);
}

TEST_F(Perft, DivideSpellsCastlingInItsNotation) {
    perft = std::make_unique<CPerft>(sink, CastlingNotation::KingTakesRook);
    Set("4k3/8/8/8/8/8/8/4K2R w K - 0 1");
    perft->PerftDivide(1);
    bool found = false;
    for (const std::string& line : sink.Take()) {
        found = found || line.find(" e1h1 - 1") != std::string::npos;
    }
    EXPECT_TRUE(found);
}

TEST_F(Perft, DepthsOutsideTheListsDoNothing) {
    for (const std::int32_t depth : {-1, -2147483647 - 1, 256, 2147483647}) {
        EXPECT_EQ(perft->CountNodes(depth), 0U);
        EXPECT_EQ(perft->Perft(depth), 0U);
        perft->PerftDivide(depth);
    }
    EXPECT_TRUE(sink.Take().empty());
}

TEST_F(Perft, DepthZeroPrintsNothing) {
    EXPECT_EQ(perft->Perft(0), 0U);
    perft->PerftDivide(0);
    EXPECT_TRUE(sink.Take().empty());
}

TEST_F(Perft, DeepestListIsReachedInAPositionWithoutMoves) {
    Set("7k/5Q2/8/8/8/8/8/K7 b - - 0 1");
    EXPECT_EQ(perft->CountNodes(255), 0U);
}

TEST_F(Perft, FullUndoStackEndsTheCountInsteadOfOverrunningIt) {
    Set("4k3/8/8/8/8/8/8/4K3 w - - 0 250");
    ASSERT_EQ(perft->position.ply, 498);
    EXPECT_EQ(perft->CountNodes(1), 5U);
    EXPECT_EQ(perft->CountNodes(4), 0U);
    Set("4k3/8/8/8/8/8/8/4K3 w - - 0 100000");
    EXPECT_EQ(perft->CountNodes(1), 0U);
}

TEST_F(Perft, LeavesThePositionAsItWas) {
    const std::string before = CPositionText(perft->position).GetFen();
    (void)perft->CountNodes(3);
    perft->PerftDivide(2);
    EXPECT_EQ(CPositionText(perft->position).GetFen(), before);
}

}  // namespace
}  // namespace brenquil
