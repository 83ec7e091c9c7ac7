// What the parts of a search cost, one row each: making and taking back a move, generating captures
// and quiet moves in their order, the sign of an exchange, an evaluation, a probe of the table.
//
// All but the probe work on the positions of the bench and those that a few of their moves lead to.
// Items are moves, lists, exchanges, evaluations and probes; compare items per second. To see what
// a part costs in a real search, weigh it by how often a search asks for it; `tools/compare_speed`
// measures the whole.

#include "board/move_generator.h"
#include "board/position.h"
#include "board/position_text.h"
#include "board/score.h"
#include "board/static_exchange.h"
#include "eval/evaluation.h"
#include "eval/kpk_bitbase.h"
#include "interface/program/bench_positions.h"
#include "search/hash_table.h"
#include "search/move_picker.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace brenquil {
namespace {

constexpr std::int32_t SuccessorsOfEach = 4;
constexpr std::uint32_t TableMegabytes = 64;

/// Positions, and the legal moves of each.
struct Workload {
    std::vector<CPosition> positions;
    std::vector<std::vector<Move>> moves;

    Workload() {
        for (const std::string_view fen : BenchPositions) {
            CPosition position;
            CPositionText(position).SetFen(fen);
            positions.push_back(position);
            const std::vector<Move> legal = LegalMoves(position);
            for (std::size_t i = 0; i < legal.size() && i < SuccessorsOfEach; ++i) {
                const Move move = legal[i * legal.size() / SuccessorsOfEach];
                if (position.MakeMove(move)) {
                    positions.push_back(position);
                    position.UndoMove(move);
                }
            }
        }
        for (CPosition& position : positions) {
            moves.push_back(LegalMoves(position));
        }
    }

    static std::vector<Move> LegalMoves(CPosition& position) {
        MoveList list;
        CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
        std::vector<Move> legal;
        for (const Move move : list) {
            if (position.MakeMove(move)) {
                position.UndoMove(move);
                legal.push_back(move);
            }
        }
        return legal;
    }
};

Workload& TheWorkload() {
    static Workload workload;
    return workload;
}

void MakeAndUndo(benchmark::State& state) {
    Workload& workload = TheWorkload();
    std::int64_t made = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < workload.positions.size(); ++i) {
            CPosition& position = workload.positions[i];
            for (const Move move : workload.moves[i]) {
                benchmark::DoNotOptimize(position.MakeMove(move));
                position.UndoMove(move);
            }
            made += static_cast<std::int64_t>(workload.moves[i].size());
        }
    }
    state.SetItemsProcessed(made);
}

void Captures(benchmark::State& state) {
    const Workload& workload = TheWorkload();
    for (auto _ : state) {
        for (const CPosition& position : workload.positions) {
            MoveList list;
            CMoveGenerator(position).GenerateCaptures(list);
            benchmark::DoNotOptimize(list.count);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(workload.positions.size()));
}

void Quiets(benchmark::State& state) {
    const Workload& workload = TheWorkload();
    const auto history = std::make_unique<HistoryTable>();
    const auto list = std::make_unique<CQuietList>();
    for (auto _ : state) {
        for (const CPosition& position : workload.positions) {
            GenerateQuiets(*list, position, *history);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(workload.positions.size()));
}

/// Exchanges of the captures that the search asks about.
void Exchange(benchmark::State& state) {
    const Workload& workload = TheWorkload();
    std::int64_t asked = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < workload.positions.size(); ++i) {
            const CPosition& position = workload.positions[i];
            for (const Move move : workload.moves[i]) {
                if (position.board[move.To()] != PieceNone && NeedsExchangeTest(move, position)) {
                    benchmark::DoNotOptimize(LosesExchange(position, move));
                    ++asked;
                }
            }
        }
    }
    state.SetItemsProcessed(asked);
}

/// The least that an evaluation takes: every position is in the caches of its thread.
void Evaluation(benchmark::State& state) {
    Workload& workload = TheWorkload();
    static const CKpkBitbase bitbase;
    const CEvaluationOptions options;
    CHashTable table;
    if (!table.Resize(TableMegabytes)) {
        state.SkipWithError("no memory");
        return;
    }
    std::vector<std::unique_ptr<CEvaluation>> evaluations;
    for (const CPosition& position : workload.positions) {
        evaluations.push_back(
            std::make_unique<CEvaluation>(position, options, table.pawnHash, bitbase));
    }
    for (auto _ : state) {
        for (const auto& evaluation : evaluations) {
            benchmark::DoNotOptimize(evaluation->Evaluate(-MateScore, MateScore));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(evaluations.size()));
}

/// Probes of keys in no order, so nearly each needs a line of memory that no cache holds.
void Probe(benchmark::State& state) {
    CHashTable table;
    if (!table.Resize(TableMegabytes)) {
        state.SkipWithError("no memory");
        return;
    }
    std::mt19937_64 random(5);
    std::vector<std::uint64_t> keys(1U << 16U);
    for (std::uint64_t& key : keys) {
        key = random();
        table.Store(key, 0, 1, Bound::Exact, NoMove);
    }
    for (auto _ : state) {
        for (const std::uint64_t key : keys) {
            benchmark::DoNotOptimize(table.Probe(key));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(keys.size()));
}

BENCHMARK(MakeAndUndo);
BENCHMARK(Captures);
BENCHMARK(Quiets);
BENCHMARK(Exchange);
BENCHMARK(Evaluation);
BENCHMARK(Probe);

}  // namespace
}  // namespace brenquil
