// Speed of the static evaluation: a few hundred positions of random games with six men or more, one
// call each in turn. Items per second are calls per second.

#include "board/move_generator.h"
#include "board/position.h"
#include "board/position_text.h"
#include "board/score.h"
#include "eval/evaluation.h"
#include "eval/kpk_bitbase.h"

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace brenquil {
namespace {

constexpr std::size_t PositionCount = 256;
constexpr std::size_t FewPawnEntries = 1;
constexpr std::size_t ManyPawnEntries = 209715;  // those of 64 MiB

bool PlayRandomMove(CPosition& position, std::mt19937_64& generator) {
    MoveList moves;
    CMoveGenerator(position).GenerateMoves(moves, MoveKinds::All);
    while (moves.count > 0) {
        const auto index =
            static_cast<std::int32_t>(generator() % static_cast<unsigned>(moves.count));
        if (position.MakeMove(moves[index])) {
            return true;
        }
        moves[index] = moves[moves.count - 1];
        moves.RemoveLast();
    }
    return false;
}

std::vector<CPosition> MakePositions() {
    std::mt19937_64 generator(43);
    std::vector<CPosition> positions;
    CPosition position;
    while (positions.size() < PositionCount) {
        CPositionText(position).SetFen(StartFen);
        for (int ply = 0; ply < 80 && PlayRandomMove(position, generator); ++ply) {
            if (ply % 10 == 9 && position.MenCount() > 5 && positions.size() < PositionCount) {
                positions.push_back(position);
            }
        }
    }
    return positions;
}

/// One evaluation for each position, as each thread has one for its own.
class CWorkload {
public:
    explicit CWorkload(std::size_t pawnEntries) : positions_(MakePositions()) {
        hasRoom_ = pawnHash_.Resize(pawnEntries);
        for (const CPosition& position : positions_) {
            evaluations_.push_back(
                std::make_unique<CEvaluation>(position, options_, pawnHash_, bitbase_));
        }
    }

    void Run(benchmark::State& state, Score alpha, Score beta) {
        if (!hasRoom_) {
            state.SkipWithError("no memory for the pawn hash");
        }
        for (auto _ : state) {
            for (const auto& evaluation : evaluations_) {
                benchmark::DoNotOptimize(evaluation->Evaluate(alpha, beta));
            }
        }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(PositionCount));
    }

private:
    std::vector<CPosition> positions_;
    CEvaluationOptions options_;
    CPawnHash pawnHash_;
    CKpkBitbase bitbase_;
    std::vector<std::unique_ptr<CEvaluation>> evaluations_;
    bool hasRoom_ = false;
};

void PawnHashHits(benchmark::State& state) {
    CWorkload(ManyPawnEntries).Run(state, -MateScore, MateScore);
}

BENCHMARK(PawnHashHits);

void PawnHashMisses(benchmark::State& state) {
    CWorkload(FewPawnEntries).Run(state, -MateScore, MateScore);
}

BENCHMARK(PawnHashMisses);

void LazyExits(benchmark::State& state) {
    CWorkload(ManyPawnEntries).Run(state, MateScore - 1, MateScore);
}

BENCHMARK(LazyExits);

void BitbaseBuild(benchmark::State& state) {
    for (auto _ : state) {
        const CKpkBitbase bitbase;
        benchmark::DoNotOptimize(bitbase.BitAt(12345));
    }
}

BENCHMARK(BitbaseBuild);

}  // namespace
}  // namespace brenquil
