// Speed of the Syzygy probes.
//
//     BRENQUIL_SYZYGY=FOLDER;FOLDER syzygy_bench
//
// The folders hold real tables; without them only the node that no table covers is measured. The
// positions are random, each with a table at hand for it and for all its captures, and probed over
// and over, so the tables are warm. `Load` sets the path, which looks for all 510 names.

#include "../tests/support/recording_host.h"
#include "bases/syzygy/syzygy_bases.h"
#include "bases/syzygy/tb_probe.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace brenquil;

std::string Folders() {
    const char* const folders = std::getenv("BRENQUIL_SYZYGY");
    return folders == nullptr ? "" : folders;
}

/// Tables and what asks them; the line about found tables is kept off the screen.
struct Setup {
    test::CRecordingHost host;
    CSyzygyTables tables{host};
    CSyzygyOptions options;
    CSyzygyBasesWDL base{tables, options};

    Setup() { tables.SetPath(Folders()); }
};

/// A random position of the material.
TbPosition RandomPosition(const TbCounts& counts, std::mt19937_64& random) {
    TbPosition position;
    Bitboard* const boards[] = {nullptr,           &position.pawns, &position.knights,
                                &position.bishops, &position.rooks, &position.queens,
                                &position.kings};
    for (unsigned code = TbPawn; code < TbCodes; ++code) {
        for (unsigned i = 0; i < counts[code]; ++i) {
            Bitboard bit = 0;
            do {
                bit = std::uint64_t{1} << random() % 64;
            } while ((bit & position.Occupied()) != 0);
            *boards[code & 7U] |= bit;
            ((code & TbBlackBit) != 0 ? position.black : position.white) |= bit;
        }
    }
    position.turn = random() % 2 == 0;
    return position;
}

/// Positions of this many men that the tables answer.
std::vector<TbPosition> AnsweredPositions(CSyzygyTables& tables, int men, std::size_t count) {
    std::mt19937_64 random(11);
    std::vector<TbCounts> materials;
    for (const std::string& name : AllTableNames()) {
        const TbCounts counts = CountsOfName(name);
        if (static_cast<int>(name.size()) - 1 == men) {
            materials.push_back(counts);
        }
    }
    std::vector<TbPosition> positions;
    for (int tries = 0; tries < 4000000 && positions.size() < count; ++tries) {
        const TbPosition position = RandomPosition(materials[random() % materials.size()], random);
        TbSuccess success = TbSuccess::Failed;
        if (TbIsValid(position)) {
            (void)TbProbeWdl(tables, position, success);
        }
        if (success != TbSuccess::Failed) {
            positions.push_back(position);
        }
    }
    return positions;
}

void ProbeWdl(benchmark::State& state) {
    const auto setup = std::make_unique<Setup>();
    const auto positions =
        AnsweredPositions(setup->tables, static_cast<int>(state.range(0)), 16384);
    if (positions.empty()) {
        state.SkipWithError("no tables; set BRENQUIL_SYZYGY");
        return;
    }
    std::size_t i = 0;
    for (auto _ : state) {
        TbSuccess success = TbSuccess::Found;
        benchmark::DoNotOptimize(TbProbeWdl(setup->tables, positions[i], success));
        i = i + 1 == positions.size() ? 0 : i + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(ProbeWdl)->Arg(3)->Arg(4)->Arg(5);

/// What a node with more men than any table pays.
void ProbeSearchUncovered(benchmark::State& state) {
    const auto setup = std::make_unique<Setup>();
    const CPosition position;
    IBase* const base = &setup->base;
    Score score = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(base->ProbeSearch(score, position, 5, 5));
    }
}

BENCHMARK(ProbeSearchUncovered);

void Load(benchmark::State& state) {
    const auto setup = std::make_unique<Setup>();
    for (auto _ : state) {
        (void)setup->tables.SyzygyInit(Folders());
    }
    state.counters["tables"] = static_cast<double>(setup->tables.Count());
}

BENCHMARK(Load)->Unit(benchmark::kMillisecond);

}  // namespace
