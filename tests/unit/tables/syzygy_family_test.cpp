// Syzygy files that the product makes: read back by the reader's own probes, against the solver's
// values and against the real files where they are at hand.
// ctest: threads

#include "../../support/solved_endings.h"
#include "../../support/temporary_folder.h"
#include "bases/syzygy/tb_probe.h"
#include "tables/pair_coder.h"
#include "tables/syzygy_bytes.h"
#include "tables/syzygy_family.h"
#include "tables/syzygy_layout.h"
#include "tables/table_maker.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

namespace brenquil {
namespace {

using test::CTemporaryFolder;

/// The tables of the shared data, empty where there is none.
std::string RealFolder() {
    const char* const data = std::getenv("BRENQUIL_DATA");
    return data == nullptr ? std::string() : std::string(data) + "/syzygy";
}

void Make(const std::vector<std::string>& names, const std::string& folder, std::size_t threads) {
    CWorkers workers(threads);
    CProgress progress(CProgress::Output::Silent);
    CSyzygyFamily family({folder, workers, progress});
    MakingPlan plan;
    for (const std::string& name : names) {
        plan.endings.push_back(EndingOfName(name));
    }
    plan.memoryBytes = std::uint64_t{1} << 30U;
    MakeTables(family, plan, progress);
}

/// Calls visit(place, squares, sideToMove) for every legal position.
template <class Visit>
void ForEachLegal(const Ending& ending, const CEndingIndex& index, const Visit& visit) {
    for (std::size_t slice = 0; slice < index.Slices(); ++slice) {
        for (std::size_t at = 0; at < index.SliceSize(); ++at) {
            const CEndingIndex::Place place{slice, at};
            const EndingSquares squares = index.SquaresOf(place);
            for (const Colour colour : {White, Black}) {
                if (CEndingNode(ending, squares, colour).IsLegal()) {
                    visit(place, squares, colour);
                }
            }
        }
    }
}

/// Compares classes and distances of all positions, as the probes find them in two folders.
void CompareFolders(const std::string& name, const std::string& first, const std::string& second) {
    CQuietHost host;
    CSyzygyTables some(host);
    CSyzygyTables others(host);
    some.SyzygyInit(first);
    others.SyzygyInit(second);
    const Ending& ending = EndingOf(EndingOfName(name));
    std::size_t wrongClass = 0;
    std::size_t wrongDistance = 0;
    ForEachLegal(ending, CEndingIndex(ending),
                 [&](CEndingIndex::Place, const EndingSquares& squares, Colour colour) {
                     const TbPosition position = TbPositionOf(ending, squares, colour);
                     TbSuccess success = TbSuccess::Failed;
                     TbSuccess other = TbSuccess::Failed;
                     wrongClass += TbProbeWdl(some, position, success) !=
                                               TbProbeWdl(others, position, other) ||
                                           success == TbSuccess::Failed ||
                                           other == TbSuccess::Failed
                                     ? 1
                                     : 0;
                     // Halves of plies are rounded; where the two tables hold different sides to
                     // move, a search of one ply adds to that.
                     const int distance = TbProbeDtz(some, position, success);
                     const int expected = TbProbeDtz(others, position, other);
                     wrongDistance += std::abs(distance - expected) > 1 ? 1 : 0;
                 });
    EXPECT_EQ(wrongClass, 0U) << name;
    EXPECT_EQ(wrongDistance, 0U) << name;
}

TEST(SyzygyLayout, EveryOrderNumbersEachPositionAsTheReaderDoes) {
    std::mt19937_64 random(11);
    for (const char* const name : {"kqk", "kpk", "kqkr", "kbbk", "kbnk", "krkp", "kppk", "kpkp",
                                   "kppkp", "knnkp", "krbkn"}) {
        const Ending& ending = EndingOf(EndingOfName(name));
        const TbShape shape = ShapeOfName(ending.syzygyName);
        for (const SyzygyOrder& order : SyzygyOrders(shape)) {
            for (unsigned file = 0; file < (shape.hasPawns ? 4U : 1U); ++file) {
                const CSyzygyLayout layout(ending, shape, order, file);
                TbLayout reader;
                reader.pieceCodes = order.pieceCodes;
                ASSERT_TRUE(LayOutGroups(shape, file, order.order, order.secondOrder, reader));
                ASSERT_EQ(reader.size, layout.Size());
                for (int round = 0; round < 50; ++round) {
                    const std::uint64_t number = random() % layout.Size();
                    EndingSquares squares{};
                    if (!layout.SquaresOf(number, squares)) {
                        continue;
                    }
                    TbSquares listed{};
                    std::array<bool, EndingMostMen> used{};
                    for (std::size_t place = 0; place < ending.men; ++place) {
                        const int code = order.pieceCodes[place];
                        std::size_t man = 0;
                        while (used[man] || int{ending.man[man].type} + 1 != (code & 7) ||
                               (ending.man[man].colour == Black) != ((code & TbBlackBit) != 0)) {
                            ++man;
                        }
                        used[man] = true;
                        listed[place] = squares[man];
                    }
                    std::uint64_t found = 0;
                    if (shape.hasPawns) {
                        ASSERT_EQ(LeadPawnToFront(shape.pawnCount[0], listed), file);
                        found = EncodePawn(shape, reader, listed);
                    } else {
                        found = EncodePiece(shape, reader, listed);
                    }
                    ASSERT_EQ(found, number) << name;
                }
            }
        }
    }
}

TEST(PairCoder, StreamsComeBack) {
    std::mt19937_64 random(12);
    for (int round = 0; round < 60; ++round) {
        std::vector<std::uint8_t> values(1 + random() % 40000);
        const std::uint64_t kinds = 1 + random() % 60;
        const std::uint64_t period = 1 + random() % 300;
        for (std::size_t at = 0; at < values.size(); ++at) {
            values[at] = at >= period && random() % 6 != 0
                           ? values[at - period]
                           : static_cast<std::uint8_t>(random() % kinds);
        }
        const PairStream made = CompressPairs(values, 0, 5 + round % 6);
        std::vector<std::uint8_t> file = made.header;
        BlockStreamPlaces places;
        places.indexTable = file.size();
        file.insert(file.end(), made.indexTable.begin(), made.indexTable.end());
        places.sizeTable = file.size();
        file.insert(file.end(), made.sizeTable.begin(), made.sizeTable.end());
        places.data = file.size();
        file.insert(file.end(), made.data.begin(), made.data.end());
        BlockStreamSizes sizes;
        std::uint64_t position = 0;
        std::uint8_t flags = 0;
        const auto stream = SetupBlockStream(file, values.size(), sizes, position, flags, true);
        ASSERT_NE(stream, nullptr);
        ASSERT_TRUE(PlaceBlockStream(*stream, file, values.size(), sizes, places));
        for (std::size_t at = 0; at < values.size(); ++at) {
            ASSERT_EQ(DecompressValue(*stream, at), values[at]) << round << ' ' << at;
        }
    }
}

TEST(SyzygyFamily, ThreeMenAreReadBackAsTheyWereSolved) {
    const CTemporaryFolder folder;
    const std::vector<std::string> names = {"kqk", "krk", "kbk", "knk", "kpk"};
    Make(names, folder.At(""), 2);
    test::CSolvedInMemory<DistanceToZeroing> solved;
    CQuietHost host;
    CSyzygyTables tables(host);
    tables.SyzygyInit(folder.At(""));
    for (const std::string& name : names) {
        const auto codes = solved.Solve(name);
        const Ending& ending = codes->Of();
        std::size_t wrong = 0;
        ForEachLegal(ending, codes->Index(),
                     [&](CEndingIndex::Place place, const EndingSquares& squares, Colour colour) {
                         TbSuccess success = TbSuccess::Failed;
                         const TbPosition position = TbPositionOf(ending, squares, colour);
                         const int code = codes->At(place, colour);
                         const int wdl = TbProbeWdl(tables, position, success);
                         const int known =
                             DistanceToZeroing::ValueOf(static_cast<DistanceToZeroing::Code>(code));
                         wrong += success == TbSuccess::Failed || wdl != known ? 1 : 0;
                         const int dtz = TbProbeDtz(tables, position, success);
                         const int plies = std::max(1, DistanceToZeroing::PliesOf(code));
                         const int expected = code == 0 ? 0 : code > 0 ? plies : -plies;
                         wrong += std::abs(dtz - expected) > 1 ? 1 : 0;
                     });
        EXPECT_EQ(wrong, 0U) << name;
    }
}

TEST(SyzygyFamily, ThreeMenAreTheRealOnes) {
    if (RealFolder().empty()) {
        GTEST_SKIP() << "no shared data";
    }
    const CTemporaryFolder folder;
    Make({"kqk", "krk", "kbk", "knk", "kpk"}, folder.At(""), 2);
    for (const char* const name : {"kqk", "krk", "kbk", "knk", "kpk"}) {
        CompareFolders(name, folder.At(""), RealFolder());
    }
}

TEST(SyzygyFamilyProof, FourMenAreTheRealOnes) {
    if (RealFolder().empty()) {
        GTEST_SKIP() << "no shared data";
    }
    // All of them on request: BRENQUIL_SYZYGY_MADE names a folder that the program has made.
    const char* const made = std::getenv("BRENQUIL_SYZYGY_MADE");
    const CTemporaryFolder folder;
    if (made == nullptr) {
        Make({"kqkn"}, folder.At(""), 2);
        CompareFolders("kqkn", folder.At(""), RealFolder());
        return;
    }
    for (int number = 1; number <= EndingCount; ++number) {
        if (EndingOf(number).men <= 4) {
            CompareFolders(EndingOf(number).name, made, RealFolder());
        }
    }
}

TEST(SyzygyBytes, TheSumTellsDamageFromForeignFiles) {
    const CTemporaryFolder folder;
    Make({"kqk"}, folder.At(""), 1);
    CFileMapping mapping;
    ASSERT_TRUE(mapping.Open(folder.At("KQvK.rtbz")));
    std::vector<std::uint8_t> file(mapping.Bytes().begin(), mapping.Bytes().end());
    EXPECT_EQ(CheckSyzygySum(file), SyzygySum::Right);
    file[100] ^= 1U;
    EXPECT_EQ(CheckSyzygySum(file), SyzygySum::Wrong);
    file.pop_back();
    EXPECT_EQ(CheckSyzygySum(file), SyzygySum::None);
}

}  // namespace
}  // namespace brenquil
