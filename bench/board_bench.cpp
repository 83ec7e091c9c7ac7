// How fast the board room is: making and taking back, generation, exchanges, reading a FEN.
//
// Items are nodes, moves, exchanges or FENs, as each program says; compare items per second.

#include "board/move_generator.h"
#include "board/position.h"
#include "board/position_text.h"
#include "board/static_exchange.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <vector>

namespace brenquil {
namespace {

constexpr std::string_view MiddleGameFen =
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";
constexpr std::string_view EndingFen = "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1";

/// Every leaf is made and taken back, as the search would.
std::uint64_t CountNodes(CPosition& position, int depth) {
    if (depth == 0) {
        return 1;
    }
    const CMoveGenerator generator(position);
    MoveList list;
    if (position.inCheck) {
        generator.GenerateEvasions(list);
    } else {
        generator.GenerateMoves(list, MoveKinds::All);
    }
    std::uint64_t nodes = 0;
    for (const Move move : list) {
        if (position.MakeMove(move)) {
            nodes += CountNodes(position, depth - 1);
            position.UndoMove(move);
        }
    }
    return nodes;
}

/// Items: leaves.
void Perft(benchmark::State& state, std::string_view fen, int depth) {
    CPosition position;
    CPositionText(position).SetFen(fen);
    std::uint64_t nodes = 0;
    for (auto _ : state) {
        nodes += CountNodes(position, depth);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(nodes));
}

/// The positions of the first two plies, so that no branch is learned by heart.
std::vector<CPosition> Neighbours() {
    std::vector<CPosition> positions;
    for (const std::string_view fen : {StartFen, MiddleGameFen, EndingFen}) {
        CPosition position;
        CPositionText(position).SetFen(fen);
        MoveList list;
        CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
        for (const Move move : list) {
            if (position.MakeMove(move)) {
                positions.push_back(position);
                position.UndoMove(move);
            }
        }
    }
    return positions;
}

/// Items: lists.
void Generate(benchmark::State& state, MoveKinds wanted) {
    const std::vector<CPosition> positions = Neighbours();
    for (auto _ : state) {
        for (const CPosition& position : positions) {
            MoveList list;
            CMoveGenerator(position).GenerateMoves(list, wanted);
            benchmark::DoNotOptimize(list.count);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(positions.size()));
}

/// Items: lists asked for a move that another position has, as killers and table moves are.
void StoredMoves(benchmark::State& state) {
    const std::vector<CPosition> positions = Neighbours();
    MoveList list;
    CMoveGenerator(positions.front()).GenerateMoves(list, MoveKinds::All);
    for (auto _ : state) {
        for (const CPosition& position : positions) {
            const CMoveGenerator generator(position);
            for (const Move move : list) {
                benchmark::DoNotOptimize(generator.IsStoredMoveValid(move));
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(positions.size()) *
                            list.count);
}

/// Items: exchanges, one for each capture.
void Exchanges(benchmark::State& state) {
    const std::vector<CPosition> positions = Neighbours();
    std::vector<MoveList> lists(positions.size());
    std::int64_t captures = 0;
    for (std::size_t i = 0; i < positions.size(); ++i) {
        CMoveGenerator(positions[i]).GenerateMoves(lists[i], MoveKinds::Captures);
        captures += lists[i].count;
    }
    for (auto _ : state) {
        for (std::size_t i = 0; i < positions.size(); ++i) {
            for (const Move move : lists[i]) {
                benchmark::DoNotOptimize(StaticExchange(positions[i], move));
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * captures);
}

/// Items: FENs.
void ReadFen(benchmark::State& state, std::string_view fen) {
    CPosition position;
    for (auto _ : state) {
        CPositionText(position).SetFen(fen);
        benchmark::DoNotOptimize(position.key);
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(Perft, Start, StartFen, 4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Perft, MiddleGame, MiddleGameFen, 3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Perft, Ending, EndingFen, 5)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Generate, Captures, MoveKinds::Captures);
BENCHMARK_CAPTURE(Generate, Quiets, MoveKinds::Quiets);
BENCHMARK_CAPTURE(Generate, All, MoveKinds::All);
BENCHMARK(StoredMoves);
BENCHMARK(Exchanges);
BENCHMARK_CAPTURE(ReadFen, Start, StartFen);
BENCHMARK_CAPTURE(ReadFen, MiddleGame, MiddleGameFen);

}  // namespace
}  // namespace brenquil
