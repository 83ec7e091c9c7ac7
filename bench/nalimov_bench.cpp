// How fast the Nalimov tables answer: probes from the cache, index calculators, decoding of blocks,
// the question of a node that the tables are not to answer, and the registration of nothing.
//
// Items are probes, indices, blocks or questions. The contents of the files do not matter here, so
// they are random.

#include "../tests/support/nalimov_test_folder.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace brenquil {
namespace {

using test::Bytes;
using test::TablePosition;

/// Something like a table: few values, in runs.
Bytes TableLike(std::uint64_t size) {
    std::mt19937 random(1);
    Bytes bytes(static_cast<std::size_t>(size));
    std::uint8_t last = 100;
    for (std::uint8_t& byte : bytes) {
        last = random() % 5 == 0 ? static_cast<std::uint8_t>(100 + random() % 10) : last;
        byte = last;
    }
    return bytes;
}

/// Some thousand positions of one side, spread over the whole table.
std::vector<TablePosition> SomePositions(int table, int side, std::uint64_t stride) {
    std::vector<TablePosition> positions;
    std::uint64_t count = 0;
    test::CTableEnumerator(table, side).Visit([&](const TablePosition& position) {
        if (count++ % stride == 0) {
            positions.push_back(position);
        }
    });
    std::shuffle(positions.begin(), positions.end(), std::mt19937(2));
    return positions;
}

void FillFolder(const test::CTestFolder& folder, std::string_view name) {
    for (const int side : {0, 1}) {
        const int table = test::TableNumber(name);
        folder.Write(std::string(name) + (side == 0 ? ".nbw.emd" : ".nbb.emd"),
                     test::Compressed(TableLike(NalimovCalculator(table, side).Positions())));
    }
}

void ProbeFromCache(benchmark::State& state, const char* name, int side) {
    const test::CTestFolder folder;
    FillFolder(folder, name);
    test::NalimovEngine engine;
    engine.options.SetOption("Nalimov Usage", "InSearch");
    engine.options.SetOption("NalimovPath", folder.Name());
    std::vector<CPosition> positions(500);
    const auto men = SomePositions(test::TableNumber(name), side, 1009);
    for (std::size_t index = 0; index < positions.size(); ++index) {
        test::SetUp(positions[index], men[index], side, index % 2 == 1);
    }
    Score sum = 0;
    std::int64_t probes = 0;
    for (auto _ : state) {
        for (const CPosition& position : positions) {
            Score score = 0;
            sum += engine.bases.ProbeSearch(score, position, 99, 1) ? score : 0;
        }
        probes += static_cast<std::int64_t>(positions.size());
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(probes);
}

BENCHMARK_CAPTURE(ProbeFromCache, kqkr, "kqkr", 0);
BENCHMARK_CAPTURE(ProbeFromCache, knpk, "knpk", 1);

void Index(benchmark::State& state, const char* name, int side, std::uint64_t stride) {
    const int table = test::TableNumber(name);
    const std::vector<TablePosition> positions = SomePositions(table, side, stride);
    const CNalimovCalculator& calculator = NalimovCalculator(table, side);
    std::uint64_t sum = 0;
    std::int64_t indices = 0;
    for (auto _ : state) {
        for (const TablePosition& position : positions) {
            sum += calculator(position.first, position.second, position.epSquare, false);
        }
        indices += static_cast<std::int64_t>(positions.size());
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(indices);
}

BENCHMARK_CAPTURE(Index, kqkr, "kqkr", 0, std::uint64_t{1009});
BENCHMARK_CAPTURE(Index, kppkp, "kppkp", 1, std::uint64_t{100003});

void DecodeBlocks(benchmark::State& state) {
    const Bytes file = test::Compressed(TableLike(1 << 20));
    std::unique_ptr<DataCompInfo> info;
    if (DataCompParse(&info, file) != DataCompOk) {
        state.SkipWithError("bad file");
        return;
    }
    Bytes target(info->blockSize + DataCompSpareBytes);
    std::int64_t blocks = 0;
    for (auto _ : state) {
        for (std::uint32_t block = 0; block < info->blocks; ++block) {
            const std::uint32_t start = DataCompBlockStart(*info, block);
            DecodeState decoding;
            decoding.cookie = DecodeState::Cookie;
            decoding.target = target.data();
            decoding.stored = file.data() + start;
            decoding.storedSize = DataCompBlockStart(*info, block + 1) - start;
            decoding.size = info->blockSize;
            if (!DataCompDecode(*info, decoding, decoding.size)) {
                state.SkipWithError("bad block");
                return;
            }
        }
        blocks += info->blocks;
    }
    state.SetItemsProcessed(blocks);
    state.SetBytesProcessed(blocks * NalimovBlockSize);
}

BENCHMARK(DecodeBlocks);

/// What a node pays while the tables answer at the root only and their men are few enough.
void QuestionOfNodeOnRoot(benchmark::State& state) {
    const test::CTestFolder folder;
    FillFolder(folder, "kqk");
    test::NalimovEngine engine;
    engine.options.SetOption("NalimovPath", folder.Name());
    CPosition position;
    test::SetUp(position, SomePositions(test::TableNumber("kqk"), 0, 5003).front(), 0, false);
    IBase* base = &engine.bases;
    Score score = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(base);  // asked as the search asks, through the interface
        benchmark::DoNotOptimize(base->ProbeSearch(score, position, 10, 5));
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(QuestionOfNodeOnRoot);

/// What the start of the program costs: the cache, and registration with nothing to find.
void DefaultStart(benchmark::State& state) {
    for (auto _ : state) {
        test::NalimovEngine engine;
        benchmark::DoNotOptimize(engine.bases.Tables().menLoaded.Load());
    }
}

BENCHMARK(DefaultStart)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace brenquil
