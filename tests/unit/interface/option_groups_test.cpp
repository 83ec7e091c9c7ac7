// The seven groups with all their options: what is advertised, what is written to the ini file, and
// what a change does.

#include "../../support/recording_host.h"
#include "../../support/strings.h"
#include "bases/nalimov/nalimov_options.h"
#include "bases/syzygy/syzygy_options.h"
#include "book/book_options.h"
#include "eval/evaluation_options.h"
#include "interface/output_options.h"
#include "search/memory_options.h"
#include "search/search_options.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace brenquil {
namespace {

Strings IniNames(const COptionGroup& group) {
    Strings names;
    for (const COption* option : group.iniOptions) {
        names.push_back(option->iniName);
    }
    return names;
}

/// A Memory group with its table.
struct CMemoryFixture {
    test::CRecordingHost host;
    CHashTable hashTable;
    CMemoryOptions options{host, hashTable};
};

/// An Output group with the group that holds one of its options.
struct COutputFixture {
    CEvaluationOptions evaluation;
    COutputOptions options{evaluation};
};

TEST(MemoryOptions, DefaultSizesTheTableWhenTheCallbacksRun) {
    CMemoryFixture memory;
    EXPECT_EQ(memory.hashTable.SizeMegabytes(), 0U);
    memory.options.RunCallbacks();
    EXPECT_EQ(memory.hashTable.SizeMegabytes(), 64U);
    EXPECT_EQ(memory.host.searchesEnded, 1);
}

TEST(MemoryOptions, HashValueZeroEmptiesTheTable) {
    CMemoryFixture memory;
    memory.options.SetOption("Hash", "1");
    EXPECT_EQ(memory.hashTable.SizeMegabytes(), 1U);
    EXPECT_TRUE(memory.options.SetOption("Hash", "0"));
    EXPECT_EQ(memory.hashTable.SizeMegabytes(), 0U);
    EXPECT_EQ(memory.host.searchesEnded, 2);
}

TEST(MemoryOptions, ThePresentSizeAndTextThatIsNoNumberLeaveTableAndSearchAlone) {
    CMemoryFixture memory;
    memory.options.SetOption("Hash", "2");
    memory.options.SetOption("Hash", "big");
    memory.options.SetOption("Hash", "02");
    EXPECT_EQ(memory.hashTable.SizeMegabytes(), 2U);
    EXPECT_EQ(memory.options.hash.number, 2);
    EXPECT_EQ(memory.host.searchesEnded, 1);
}

TEST(MemoryOptions, ASizeThatCannotBeHadIsReportedAndThePresentOneStays) {
    CMemoryFixture memory;
    memory.options.SetOption("Hash", "1");
    memory.options.SetOption("Hash", "-1");
    EXPECT_EQ(memory.host.printed, Strings{"Hash of -1 MB cannot be allocated, 1 MB stay in use"});
}

TEST(MemoryOptions, NameMatchingIsExact) {
    CMemoryFixture memory;
    EXPECT_FALSE(memory.options.SetOption("hash", "32"));
}

TEST(SearchOptions, DefaultsInTheTypedFields) {
    const CSearchOptions options;
    EXPECT_EQ(options.threads.number, 1);
    EXPECT_EQ(options.nullmoveReduction.number, 3);
    EXPECT_EQ(options.nullmoveMinDepth.number, 2);
    EXPECT_EQ(options.lmrMinDepth.number, 3);
    EXPECT_EQ(options.lmrMinMoves.number, 4);
    EXPECT_EQ(options.multiPv.number, 1);
    EXPECT_EQ(options.multiPvDelta.number, 500);
    EXPECT_TRUE(options.useNullmove.enabled);
    EXPECT_TRUE(options.useFutility.enabled);
    EXPECT_TRUE(options.useLmr.enabled);
    EXPECT_TRUE(options.useExtensions.enabled);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(options.futilityMargins[i].number, (std::vector{50, 350, 550}[i]));
    }
}

TEST(SearchOptions, Threads99IsStoredThoughTheMaximumSaysLess) {
    CSearchOptions options;
    EXPECT_LE(options.threads.max, 32);
    EXPECT_GE(options.threads.max, 1);
    EXPECT_TRUE(options.SetOption("Threads", "99"));
    EXPECT_EQ(options.threads.number, 99);
}

TEST(SearchOptions, EachMarginOptionHasItsPlaceByDepth) {
    CSearchOptions options;
    options.SetOption("Futility Margin1", "11");
    options.SetOption("Futility Margin2", "22");
    options.SetOption("Futility Margin3", "33");
    options.SetOption("Futility Margin3", "none");
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(options.futilityMargins[i].number, (std::vector{11, 22, 33}[i]));
    }
}

TEST(EvaluationOptions, DefaultsInTheTypedFields) {
    const CEvaluationOptions options;
    EXPECT_EQ(options.contempt.number, 0);
    EXPECT_EQ(options.lazyEvalMargin.number, 250);
    EXPECT_TRUE(options.useEndgameEval.enabled);
    EXPECT_FALSE(options.analyse.enabled);
    for (std::size_t type = 0; type < 5; ++type) {
        EXPECT_EQ(options.pieceValues[type].number, (std::vector{100, 400, 400, 600, 1200}[type]));
    }
}

TEST(EvaluationOptions, EachPieceOptionWritesItsValueAndNoOther) {
    CEvaluationOptions options;
    options.SetOption("Pawn", "1");
    options.SetOption("Knight", "2");
    options.SetOption("Bishop", "3");
    options.SetOption("Rook", "4");
    options.SetOption("Queen", "5");
    options.SetOption("Queen", "");
    for (std::size_t type = 0; type < 5; ++type) {
        EXPECT_EQ(options.pieceValues[type].number, static_cast<std::int32_t>(type) + 1);
    }
}

TEST(OutputOptions, DefaultsInTheTypedFields) {
    const COutputFixture output;
    EXPECT_TRUE(output.options.ponder.enabled);
    EXPECT_FALSE(output.options.chess960.enabled);
    EXPECT_FALSE(output.options.analyse.enabled);
    EXPECT_FALSE(output.options.showCurrLine.enabled);
    EXPECT_FALSE(output.options.showRefutations.enabled);
    EXPECT_FALSE(output.options.showDatabaseMoves.enabled);
    EXPECT_FALSE(output.options.logging.enabled);
    EXPECT_FALSE(output.options.debug.enabled);
    EXPECT_EQ(output.options.engineAbout.text, "brenquil.example.org");
}

TEST(OutputOptions, PonderMaybeLeavesTheCheckAndKeepsTheText) {
    COutputFixture output;
    output.options.SetOption("Ponder", "maybe");
    EXPECT_TRUE(output.options.ponder.enabled);
    EXPECT_EQ(output.options.ponder.UciLine(), "option name Ponder type check default maybe");
}

TEST(OutputOptions, ShowCurrentLineWorksThroughItsIniName) {
    COutputFixture output;
    EXPECT_TRUE(output.options.SetOption("Show Current Line", "true"));
    EXPECT_TRUE(output.options.showCurrLine.enabled);
}

TEST(OutputOptions, DebugIsNeverAdvertisedAndTwoOptionsAreNeverInTheIniFile) {
    const COutputFixture output;
    for (const COption* option : output.options.uciOptions) {
        EXPECT_NE(option, &output.options.debug);
    }
    EXPECT_EQ(IniNames(output.options),
              (Strings{"Ponder", "Chess960", "Show Current Line", "Show Refutations",
                       "Show Database Moves", "Logging", "Debug"}));
}

TEST(OutputOptions, AnalyseModeIsTheOneOfTheEvaluation) {
    COutputFixture output;
    output.options.SetOption("UCI_AnalyseMode", "true");
    EXPECT_TRUE(output.evaluation.analyse.enabled);
    output.options.SetOption("UCI_AnalyseMode", "perhaps");
    EXPECT_TRUE(output.evaluation.analyse.enabled);
    output.options.SetOption("UCI_AnalyseMode", "false");
    EXPECT_FALSE(output.evaluation.analyse.enabled);
}

TEST(BookOptions, BookModeFooIsStoredAndShown) {
    CBookOptions options;
    EXPECT_EQ(options.bookMode.choice, CBookOptions::Wide);
    EXPECT_TRUE(options.SetOption("Book Mode", "Foo"));
    EXPECT_EQ(options.bookMode.text, "Foo");
    EXPECT_EQ(options.bookMode.UciLine(), "option name Book Mode type combo default Foo var Wide "
                                          "var Standard var Tournament var BestMove");
    options.SetOption("Book Mode", "BestMove");
    EXPECT_EQ(options.bookMode.choice, CBookOptions::BestMove);
}

TEST(BookOptions, IniNames) {
    const CBookOptions options;
    EXPECT_EQ(IniNames(options), (Strings{"Book Use", "Book Path", "Book Mode"}));
}

TEST(NalimovOptions, DefaultsAndNames) {
    CNalimovOptions options;
    EXPECT_TRUE(options.SetOption("Nalimov Path", "/tables"));
    EXPECT_EQ(options.path.text, "/tables");
    EXPECT_EQ(options.cache.number, 32);
    EXPECT_EQ(options.usage.choice, CNalimovOptions::OnRoot);
    EXPECT_EQ(options.minDepth.number, 6);
    EXPECT_EQ(IniNames(options),
              (Strings{"Nalimov Path", "Nalimov Cache", "Nalimov Usage", "Nalimov Min Depth"}));
}

TEST(SyzygyOptions, Defaults) {
    const CSyzygyOptions options;
    EXPECT_EQ(options.path.text, "<empty>");
    EXPECT_TRUE(options.use.enabled);
    EXPECT_TRUE(options.fiftyMovesRule.enabled);
}

TEST(OptionGroups, Names) {
    EXPECT_EQ(CMemoryFixture().options.name, "Memory");
    EXPECT_EQ(CSearchOptions().name, "Search");
    EXPECT_EQ(CEvaluationOptions().name, "Evaluation");
    EXPECT_EQ(COutputFixture().options.name, "Output");
    EXPECT_EQ(CBookOptions().name, "Book");
    EXPECT_EQ(CNalimovOptions().name, "Nalimov Tablebases");
    EXPECT_EQ(CSyzygyOptions().name, "Syzygy Tablebases");
}

}  // namespace
}  // namespace brenquil
