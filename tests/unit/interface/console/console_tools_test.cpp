// The console commands that look at the engine rather than at the game: help, print, cpu, test.

#include "../engine_fixture.h"
#include "interface/console/cpu_report.h"
#include "platform/processor.h"

#include <algorithm>
#include <cstddef>

namespace brenquil {
namespace {

using ConsoleTools = CEngineFixture;

std::ptrdiff_t CountOf(const Strings& lines, const std::string& wanted) {
    return std::count(lines.begin(), lines.end(), wanted);
}

Strings Drawing(const Strings& rows) {
    Strings lines = {""};
    lines.insert(lines.end(), rows.begin(), rows.end());
    lines.emplace_back("");
    return lines;
}

TEST_F(ConsoleTools, HelpHasTheRuleFourTimesAndOneLineForEachCommand) {
    const Strings lines = Obey("help");
    ASSERT_EQ(lines.size(), 23U);
    EXPECT_EQ(CountOf(lines, std::string(66, '-')), 4);
    EXPECT_EQ(lines[17], "perft <n> [-d] = perft numbers up to depth n, [-d] = devide view");
}

TEST_F(ConsoleTools, PrintShowsTheLowestBitAtTheBottomLeft) {
    EXPECT_EQ(Obey("print 1"), Drawing({"........", "........", "........", "........", "........",
                                        "........", "........", "1......."}));
}

TEST_F(ConsoleTools, PrintShowsTheHighestBitAtTheTopRight) {
    EXPECT_EQ(Obey("print 9223372036854775808"),
              Drawing({".......1", "........", "........", "........", "........", "........",
                       "........", "........"}));
}

TEST_F(ConsoleTools, PrintOfANonNumberIsSilent) {
    EXPECT_TRUE(Obey({"print", "print x", "print 1x", "print 1 2", "print 0x10"}).empty());
}

TEST_F(ConsoleTools, PrintTakesSignAndPointIntoTheSum) {
    // "-1" is -3 * 10 + 1, "1." is 10 - 2.
    EXPECT_EQ(Obey("print -1"), Obey("print 18446744073709551587"));
    EXPECT_EQ(Obey("print 1."), Obey("print 8"));
    EXPECT_EQ(Obey("print 18446744073709551617"), Obey("print 1")) << "sums wrap around";
}

TEST_F(ConsoleTools, CpuFlagEqualsItsRowOfTheTable) {
    const Strings table = Obey("cpu");
    ASSERT_EQ(table.size(), 14U);
    EXPECT_EQ("sse2: " + Obey("cpu 1 EDX 26").at(0), table[5]);
    EXPECT_EQ("sse3: " + Obey("cpu 1 ECX 0").at(0), table[6]);
    EXPECT_EQ("bmi2: " + Obey("cpu 7 EBX 8").at(0), table[10]);
    if (Cpuid(0).eax == 0) {
        GTEST_SKIP() << "a processor without CPUID has 64 bits and no register that says so";
    }
    EXPECT_EQ("64bit: " + Obey("cpu 80000001 EDX 29").at(0), table[2]);
}

TEST_F(ConsoleTools, CpuTableHasItsLabelsInOrder) {
    const Strings labels = {
        "vendor: ", "cores: ",    "64bit: ",          "popcnt: ",         "sse: ",
        "sse2: ",   "sse3: ",     "sse4.1: ",         "sse4.2: ",         "bmi1: ",
        "bmi2: ",   "prefetch: ", "page size ext.: ", "hyper-threading: "};
    const Strings table = Obey("cpu");
    ASSERT_EQ(table.size(), labels.size());
    for (std::size_t i = 0; i < labels.size(); ++i) {
        ASSERT_TRUE(table[i].starts_with(labels[i])) << table[i];
        const std::string value = table[i].substr(labels[i].size());
        EXPECT_TRUE(i < 2 || value == "true" || value == "false") << table[i];
    }
    EXPECT_EQ(table[1], "cores: " + std::to_string(std::min(ProcessorCount(), 32)));
}

#if defined(__x86_64__)

TEST_F(ConsoleTools, CpuOfThisFamilyHas64BitsAndANamedVendor) {
    const Strings table = Obey("cpu");
    EXPECT_EQ(table[0].size(), std::string("vendor: ").size() + 12);
    EXPECT_EQ(table[2], "64bit: true");
    EXPECT_EQ(table[5], "sse2: true");
}

#endif

TEST_F(ConsoleTools, CpuOfTwoOrFourWordsIsSilent) {
    EXPECT_TRUE(Obey({"cpu 7 EBX", "cpu 1", "cpu 1 EDX 26 27"}).empty());
}

TEST_F(ConsoleTools, CpuReadsWordsByTheirFallbacks) {
    const CpuidResult answer = Cpuid(1);
    const auto flag = [](std::uint32_t word, unsigned bit) {
        return std::string((word >> bit & 1U) != 0 ? "true" : "false");
    };
    for (unsigned bit = 0; bit < 32; ++bit) {
        const std::string number = std::to_string(bit);
        // An unknown leaf counts as 1, an unknown register as EAX; case matters.
        EXPECT_EQ(CpuFlag("x EAX " + number), flag(answer.eax, bit));
        EXPECT_EQ(CpuFlag("1 edx " + number), flag(answer.eax, bit));
        EXPECT_EQ(CpuFlag("1 EDX " + number), flag(answer.edx, bit));
        EXPECT_EQ(CpuFlag("1 EDX " + std::to_string(bit + 32)), flag(answer.edx, bit));
    }
    EXPECT_EQ(CpuFlag("1 EDX -6"), flag(answer.edx, 26));
    EXPECT_EQ(CpuFlag("1 EDX bit"), flag(answer.edx, 0));
    EXPECT_EQ(CpuFlag(""), std::nullopt);
}

TEST_F(ConsoleTools, TestRunsOnlyWhatIsAskedFor) {
    EXPECT_EQ(CountOf(Obey("test -b"), "test complete!"), 1);
    EXPECT_EQ(CountOf(Obey("test -e"), "test evaluation symmetric"), 1);
    const Strings lines = Obey("test -h -e -x -H");
    EXPECT_EQ(CountOf(lines, "test complete!"), 3);
    EXPECT_EQ(lines[1], "test evaluation symmetric") << "the order is fixed";
    EXPECT_EQ(CountOf(lines, "test failed!"), 0);
}

TEST_F(ConsoleTools, TestOfChess960PositionsWithHRunsTheHashTestAlone) {
    const Strings lines = Obey("test -960 -h");
    EXPECT_EQ(lines, Obey("test -h"));
    EXPECT_EQ(CountOf(lines, "test complete!"), 2);
    EXPECT_EQ(lines.size(), 62U);
}

TEST_F(ConsoleTools, TestOfChess960PositionsTakes24Rows) {
    const Strings lines = Obey("test -e -960");
    EXPECT_EQ(CountOf(lines, "test ok!"), 24);
    EXPECT_EQ(CountOf(lines, "test complete!"), 1);
}

TEST_F(ConsoleTools, TestLeavesTheGameAloneAndStaysOutOfTheLog) {
    Strings log;
    engine->protocol.logSink = [&log](std::string_view line) { log.emplace_back(line); };
    engine->protocol.logging = true;
    (void)Obey({"e2e4", "test -h -b -e"});
    EXPECT_EQ(Fen(), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2");
    EXPECT_EQ(log, (Strings{"> e2e4", "> test -h -b -e"}));
}

using ConsoleToolsProof = CEngineFixture;

TEST_F(ConsoleToolsProof, TestMRunsOnlyMoveGeneration) {
    const Strings lines = Obey("test -m");
    EXPECT_EQ(CountOf(lines, "test ok!"), 6);
    EXPECT_EQ(CountOf(lines, "test complete!"), 1);
    EXPECT_EQ(lines[1], "test move-generation");
    EXPECT_TRUE(lines.back().starts_with("time:  ")) << lines.back();
}

}  // namespace
}  // namespace brenquil
