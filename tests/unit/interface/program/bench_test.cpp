// The bench: its list and its report.
// ctest: threads

#include "../collecting_sink.h"
#include "board/move_generator.h"
#include "board/position_text.h"
#include "interface/move_notation.h"
#include "interface/program/bench.h"
#include "interface/program/bench_positions.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace brenquil {
namespace {

TEST(BenchPositions, AreDistinctAndVaried) {
    const std::set<std::string_view> distinct(BenchPositions.begin(), BenchPositions.end());
    EXPECT_EQ(distinct.size(), BenchPositions.size());
    EXPECT_GE(distinct.size(), 40U);
    const auto chess960 =
        std::count_if(BenchPositions.begin(), BenchPositions.end(), HasFileLetterCastling);
    EXPECT_GE(chess960, 4);
}

TEST(BenchPositions, AreReadWithoutLossAndCanBePlayed) {
    const auto position = std::make_unique<CPosition>();
    for (const std::string_view fen : BenchPositions) {
        CPositionText text(*position);
        text.SetFen(fen);
        EXPECT_EQ(text.GetFen(), fen);
        EXPECT_FALSE(position->IsKingAttacked(~position->sideToMove)) << fen;
        MoveList moves;
        CMoveGenerator(*position).GenerateMoves(moves, MoveKinds::All);
        EXPECT_TRUE(std::any_of(moves.begin(), moves.end(), [&position](Move move) {
            return position->MakeMove(move);
        })) << fen;
    }
}

TEST(Bench, PrintsALineAPositionAndTheTotalTheFrameworksRead) {
    CCollectingSink sink;
    const std::uint64_t nodes = RunBench(sink, {1});
    const std::vector<std::string> lines = sink.Take();
    ASSERT_EQ(lines.size(), BenchPositions.size() + 3);

    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < BenchPositions.size(); ++i) {
        sum += std::stoull(lines[i]);
        EXPECT_TRUE(lines[i].ends_with(BenchPositions[i])) << lines[i];
    }
    EXPECT_EQ(nodes, sum);
    EXPECT_EQ(lines[lines.size() - 3], "nodes: " + std::to_string(nodes));
    EXPECT_TRUE(lines[lines.size() - 2].starts_with("time:  "));
    const std::string head = std::to_string(nodes) + " nodes ";
    ASSERT_TRUE(lines.back().starts_with(head)) << lines.back();
    std::size_t digits = 0;
    EXPECT_GT(std::stoull(lines.back().substr(head.size()), &digits), 0U);
    EXPECT_EQ(lines.back().substr(head.size() + digits), " nps");
}

TEST(Bench, CountsTheSameNodesEachTimeAndMoreAtMoreDepth) {
    CCollectingSink sink;
    const std::uint64_t nodes = RunBench(sink, {2});
    EXPECT_EQ(RunBench(sink, {2}), nodes);
    EXPECT_GT(RunBench(sink, {3}), nodes);
}

}  // namespace
}  // namespace brenquil
