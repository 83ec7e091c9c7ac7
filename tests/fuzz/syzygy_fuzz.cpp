// Feeds the readers of Syzygy tables with files that nobody made, and probes what they accept.
//
//     tools/fuzz --runs 2000000 syzygy
//
// The low half of an input's first byte chooses a material and the kind of table, the high half the
// positions that are looked up; the rest is the file. It lies in memory of its exact size, so that
// AddressSanitizer sees any step outside it. One input in 256, chosen by its own bytes, is also
// written to a file and goes through mapping, first use and root probe, which must come to an end.
//
// A damaged file may have blocks of 65536 values, and a look-up walks through one. This is where
// the time of an input goes, so there are only two look-ups.
//
// The fuzzer begins with the small tables in corpus/syzygy, which the tests' writer has made.
// BRENQUIL_SYZYGY_SEEDS names a folder into which these and larger ones are put at the start, and
// small real ones when BRENQUIL_DATA names the shared data. Neither is needed.

#include "../support/recording_host.h"
#include "bases/syzygy/tb_entry.h"
#include "bases/syzygy/tb_lookup.h"
#include "bases/syzygy/tb_probe.h"
#include "private_folder.h"
#include "syzygy_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace brenquil;
namespace support = brenquil::testing_support;

constexpr std::array<const char*, 8> Names = {"KQvK",  "KPvK",  "KNNvK",  "KNvKN",
                                              "KPvKP", "KQvKP", "KPPPvK", "KRRvKB"};
constexpr std::size_t LargestSeed = 16384;

/// Some positions of a material, legal or not.
std::vector<TbPosition> MakePositions(const std::string& name) {
    constexpr std::size_t Count = 8;
    std::mt19937_64 random(name.size());
    const TbCounts counts = CountsOfName(name);
    std::vector<TbPosition> positions;
    while (positions.size() < Count) {
        TbPosition position;
        const bool exchanged = random() % 2 == 0;
        for (unsigned code = TbPawn; code < TbCodes; ++code) {
            for (unsigned i = 0; i < counts[code]; ++i) {
                Bitboard* const boards[] = {nullptr,           &position.pawns, &position.knights,
                                            &position.bishops, &position.rooks, &position.queens,
                                            &position.kings};
                const bool isPawn = (code & 7U) == TbPawn;
                Bitboard bit = 0;
                do {
                    bit = std::uint64_t{1} << (isPawn ? 8 + random() % 48 : random() % 64);
                } while ((bit & position.Occupied()) != 0);
                *boards[code & 7U] |= bit;
                const bool black = ((code & TbBlackBit) != 0) != exchanged;
                (black ? position.black : position.white) |= bit;
            }
        }
        position.turn = random() % 2 == 0;
        positions.push_back(position);
    }
    return positions;
}

const std::vector<TbPosition>& PositionsOf(std::size_t material) {
    static const auto all = [] {
        std::array<std::vector<TbPosition>, Names.size()> made;
        for (std::size_t i = 0; i < Names.size(); ++i) {
            made[i] = MakePositions(Names[i]);
        }
        return made;
    }();
    return all[material];
}

void LookUp(const TbEntry& entry, const TbPosition& position, unsigned /*choice*/) {
    int wdl = 0;
    (void)LookUpWdl(entry, position, MaterialKey(position, false), wdl);
}

void LookUp(const DtzEntry& entry, const TbPosition& position, unsigned choice) {
    constexpr std::array<int, 4> Classes = {-2, 2, -1, 1};
    int value = 0;
    (void)LookUpDtz(entry, position, Classes[choice % Classes.size()], value);
}

/// Two look-ups in a table of these bytes, if the reader accepts them.
template <class Entry, class Reader>
void ReadAndLookUp(const support::Bytes& bytes, std::size_t material, unsigned choice,
                   Reader reader) {
    static const auto shapes = [] {
        std::array<TbShape, Names.size()> made;
        std::transform(Names.begin(), Names.end(), made.begin(), ShapeOfName);
        return made;
    }();
    Entry entry;
    entry.shape = shapes[material];
    entry.data = bytes;
    if (reader(entry)) {
        const std::vector<TbPosition>& positions = PositionsOf(material);
        LookUp(entry, positions[choice % positions.size()], choice);
        LookUp(entry, positions[(3 * choice + 1) % positions.size()], choice / 4);
    }
}

/// The way through files. The table's partner is a flat one.
void ProbeThroughFiles(std::size_t material, bool isWdl, const support::Bytes& bytes) {
    static const bool isReady = EnterPrivateFolder();
    if (!isReady) {
        return;
    }
    static test::CRecordingHost host;
    static CSyzygyTables tables(host);
    host.bareLines.clear();
    const std::string name = Names[material];
    const support::Bytes wdl = isWdl ? bytes : support::MakeFlatWdlFile(name, 2);
    const support::Bytes dtz = isWdl ? support::MakeFlatDtzFile(name, 0) : bytes;
    support::WriteBytes(name + ".rtbw", wdl);
    support::WriteBytes(name + ".rtbz", dtz);
    (void)tables.SyzygyInit(".");
    std::size_t probed = 0;
    for (const TbPosition& position : PositionsOf(material)) {
        if (TbIsValid(position) && probed++ < 1) {
            int distance = 0;
            (void)TbProbeRoot(tables, position, distance);
        }
    }
    // They may stay mapped until then: what is removed is not changed.
    std::filesystem::remove(name + ".rtbw");
    std::filesystem::remove(name + ".rtbz");
}

/// Whether an input is one of the few. Its size would not do: the fuzzer likes what reaches more,
/// and most of its mutations keep the size.
bool IsChosen(std::string_view input) {
    constexpr std::size_t OneIn = 256;
    return std::hash<std::string_view>()(input) % OneIn == 0;
}

void WriteSeed(const std::filesystem::path& folder, const std::string& name, std::size_t first,
               const support::Bytes& bytes) {
    if (bytes.empty() || bytes.size() > LargestSeed) {
        return;
    }
    support::Bytes seed = {static_cast<std::uint8_t>(first)};
    seed.insert(seed.end(), bytes.begin(), bytes.end());
    support::WriteBytes(folder / name, seed);
}

void WriteSeeds(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    support::CSyzygySolver solver;
    const char* const data = std::getenv("BRENQUIL_DATA");
    for (std::size_t i = 0; i < Names.size(); ++i) {
        const std::string name = Names[i];
        WriteSeed(folder, name + "_flat.rtbw", i, support::MakeFlatWdlFile(name, 1));
        WriteSeed(folder, name + "_flat.rtbz", i + 8, support::MakeFlatDtzFile(name, 1));
        if (name.size() == 4) {
            const auto classes = support::SolvedClasses(solver, name);
            support::DtzTable dtz{name, classes, support::SolvedDistances(solver, name)};
            dtz.stream.pairings = 60;
            support::WdlTable wdl{name, classes};
            wdl.stream = dtz.stream;
            WriteSeed(folder, name + ".rtbw", i, support::MakeWdlFile(wdl));
            WriteSeed(folder, name + ".rtbz", i + 8, support::MakeDtzFile(dtz));
            dtz.hasMap = true;
            WriteSeed(folder, name + "_map.rtbz", i + 8, support::MakeDtzFile(dtz));
        }
        for (const char* const suffix : {".rtbw", ".rtbz"}) {
            if (data == nullptr) {
                continue;
            }
            std::ifstream file(std::filesystem::path(data) / "syzygy" / (name + suffix),
                               std::ios::binary);
            const support::Bytes bytes((std::istreambuf_iterator<char>(file)), {});
            WriteSeed(folder, "real_" + name + suffix, i + (suffix[4] == 'w' ? 0U : 8U), bytes);
        }
    }
}

}  // namespace

// Both are called by libFuzzer under these names.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // Nearly every input is refused with a message. The fuzzer and the sanitizers keep their own
    // way to the screen.
    if (std::FILE* const nowhere = std::fopen("/dev/null", "w")) {
        stderr = nowhere;
    }
    if (const char* const folder = std::getenv("BRENQUIL_SYZYGY_SEEDS")) {
        WriteSeeds(folder);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t material = data[0] % Names.size();
    const bool isWdl = data[0] / Names.size() % 2 == 0;
    const unsigned choice = data[0] / (2 * Names.size());
    // A copy of the exact size, because the fuzzer's own buffer has room after it.
    const support::Bytes bytes(data + 1, data + size);
    if (isWdl) {
        ReadAndLookUp<TbEntry>(bytes, material, choice, ReadWdlTable);
    } else {
        ReadAndLookUp<DtzEntry>(bytes, material, choice, ReadDtzTable);
    }
    if (IsChosen({reinterpret_cast<const char*>(data), size})) {
        ProbeThroughFiles(material, isWdl, bytes);
    }
    return 0;
}
