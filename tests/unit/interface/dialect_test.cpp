// Which dialect a program speaks, and what its arguments ask for.

#include "interface/dialect.h"
#include "interface/program/arguments.h"

#include <gtest/gtest.h>
#include <string>

namespace brenquil {
namespace {

bool IsStrict(CDialect dialect) {
    return dialect.EndsWithItsInput();
}

Arguments Parse(const std::vector<std::string>& words) {
    return ParseArguments("brenquil", words);
}

TEST(Dialect, TheSettledOneIsTheDefaultAndAnswersEveryQuestionOtherwise) {
    const CDialect settled;
    const CDialect strict = CDialect::Strict();
    for (const auto question :
         {&CDialect::EndsWithItsInput, &CDialect::ChecksOptions, &CDialect::HasMoreOptions,
          &CDialect::ReadsGoWordByWord, &CDialect::ReadsEitherCastling, &CDialect::ForgetsOldMoves,
          &CDialect::SaysThatThereIsNoMove}) {
        EXPECT_FALSE((settled.*question)());
        EXPECT_TRUE((strict.*question)());
    }
    EXPECT_TRUE(settled.NamesCastling());
    EXPECT_FALSE(strict.NamesCastling());
    EXPECT_FALSE(settled.Manners().alwaysNamesMove);
    EXPECT_TRUE(strict.Manners().alwaysNamesMove);
}

TEST(Dialect, NameOfTheProgramChoosesIt) {
    for (const char* path : {"brenquil-strict", "/usr/games/brenquil-strict", "./x-strict",
                             "C:\\Chess\\brenquil-strict.exe", "BRENQUIL-STRICT.EXE"}) {
        EXPECT_TRUE(IsStrict(CDialect::OfProgram(path))) << path;
    }
    for (const char* path : {"brenquil", "", "/opt/brenquil-strict/brenquil", "brenquil-strict.sh",
                             "brenquil-stricter", "brenquil.exe"}) {
        EXPECT_FALSE(IsStrict(CDialect::OfProgram(path))) << path;
    }
}

TEST(Arguments, NoneIsAConversation) {
    EXPECT_EQ(Parse({}).action, Arguments::Action::Converse);
    EXPECT_FALSE(IsStrict(Parse({}).dialect));
    EXPECT_TRUE(IsStrict(Parse({"--strict-uci"}).dialect));
    EXPECT_TRUE(IsStrict(ParseArguments("/a/brenquil-strict", {}).dialect));
}

TEST(Arguments, VersionAndHelp) {
    EXPECT_EQ(Parse({"--version"}).action, Arguments::Action::Version);
    EXPECT_EQ(Parse({"--strict-uci", "--help"}).action, Arguments::Action::Help);
    EXPECT_NE(UsageText().find("--strict-uci"), std::string::npos);
}

TEST(Arguments, UnknownOnesAreRefused) {
    for (const char* word : {"--strict", "-h", "uci", "", "--bench", "benches"}) {
        EXPECT_EQ(Parse({word}).action, Arguments::Action::Refuse) << word;
        EXPECT_EQ(Parse({word}).fault, "unknown argument \"" + std::string(word) + "\"");
    }
}

TEST(Arguments, BenchTakesUpToThreeNumbers) {
    EXPECT_EQ(Parse({"bench"}).bench.depth, 10);
    const Arguments all = Parse({"--strict-uci", "bench", "7", "2", "32"});
    EXPECT_EQ(all.action, Arguments::Action::Bench);
    EXPECT_EQ(all.bench.depth, 7);
    EXPECT_EQ(all.bench.threads, 2);
    EXPECT_EQ(all.bench.hash, 32);
    EXPECT_TRUE(IsStrict(all.dialect));
}

TEST(Arguments, BenchRefusesWhatIsNotANumberOfItsRange) {
    for (const char* word : {"x", "", "-1", "0", "255", "1.5", "7x", "99999999999", " 7"}) {
        EXPECT_EQ(Parse({"bench", word}).action, Arguments::Action::Refuse) << word;
    }
    EXPECT_EQ(Parse({"bench", "7", "many"}).fault,
              "the threads of bench is a number from 1 to 256, not \"many\"");
    EXPECT_EQ(Parse({"bench", "7", "1", "16", "extra"}).fault, "bench has no argument \"extra\"");
}

}  // namespace
}  // namespace brenquil
