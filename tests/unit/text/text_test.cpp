// The text helpers: every rule of theirs at its corner cases.

#include "../../support/strings.h"
#include "text/text.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace brenquil {
namespace {

TEST(ToLower, FoldsAsciiLettersAndLeavesEveryOtherByte) {
    EXPECT_EQ(ToLower("UciNewGame 8/P7 [@`{"), "ucinewgame 8/p7 [@`{");
    EXPECT_EQ(ToLower("\xC4\xFF\x80"), "\xC4\xFF\x80");
    EXPECT_EQ(ToLower(std::string_view("A\0B", 3)), std::string("a\0b", 3));
    EXPECT_EQ(ToLower(""), "");
}

TEST(TrimBlanks, RemovesBlanksAtBothEndsOnly) {
    EXPECT_EQ(TrimBlanks("  a  b "), "a  b");
    EXPECT_EQ(TrimBlanks("    "), "");
    EXPECT_EQ(TrimBlanks(""), "");
}

TEST(TrimBlanks, KeepsTabsAndOtherWhiteSpace) {
    EXPECT_EQ(TrimBlanks(" \ta\r "), "\ta\r");
}

TEST(Split, DropsEmptyPieces) {
    EXPECT_EQ(Split("  go   depth 5 ", ' '), (Strings{"go", "depth", "5"}));
    EXPECT_EQ(Split("#Hash=1#x", '#'), (Strings{"Hash=1", "x"}));
    EXPECT_EQ(Split("", ' '), Strings{});
    EXPECT_EQ(Split("   ", ' '), Strings{});
    EXPECT_EQ(Split("one", ' '), Strings{"one"});
}

TEST(Split, CutsAtTheDelimiterOnlyAndKeepsTabs) {
    EXPECT_EQ(Split("a\tb c", ' '), (Strings{"a\tb", "c"}));
}

TEST(Join, PutsTheSeparatorBetweenItemsOnly) {
    EXPECT_EQ(Join({}, ", "), "");
    EXPECT_EQ(Join({"a"}, ", "), "a");
    EXPECT_EQ(Join({"a", "", "c"}, ", "), "a, , c");
}

TEST(HasWord, FindsWholeWordsInAnyCase) {
    EXPECT_TRUE(HasWord("go INFINITE", "infinite"));
    EXPECT_TRUE(HasWord("go depth 5", "GO"));
    EXPECT_TRUE(HasWord("ponder", "ponder"));
    EXPECT_FALSE(HasWord("go ponderhit", "ponder"));
    EXPECT_FALSE(HasWord("go xponder", "ponder"));
    EXPECT_FALSE(HasWord("", "ponder"));
}

TEST(HasWord, TakesATabForAnOrdinaryCharacter) {
    EXPECT_FALSE(HasWord("go\tinfinite", "infinite"));
}

TEST(ValueOf, GivesTheTrimmedRestBehindTheKeyInTheCaseTyped) {
    EXPECT_EQ(ValueOf("setoption NAME  Use LMR ", "name"), "Use LMR");
    EXPECT_EQ(ValueOf("debug on", "debug"), "on");
    EXPECT_EQ(ValueOf("debug", "debug"), "");
}

TEST(ValueOf, GivesTheEmptyTextWithoutTheKey) {
    EXPECT_EQ(ValueOf("position startpos", "fen"), "");
}

TEST(ValueOf, EndsAtTheNearestTerminator) {
    EXPECT_EQ(ValueOf("k one b two a three", "k", "a b"), "one");
    EXPECT_EQ(ValueOf("k one A two B three", "k", "b a"), "one");
}

TEST(ValueOf, FindsTheKeyAsAPlainSubstringAtItsFirstOccurrence) {
    EXPECT_EQ(ValueOf("go xdepth 3 depth 5", "depth"), "3 depth 5");
}

TEST(ValueOf, IgnoresATerminatorWhoseFirstOccurrenceStandsBeforeTheValue) {
    // The second "name" would end the value, but only the first one is ever looked at.
    EXPECT_EQ(ValueOf("setoption name A value 5 name B", "value", "name"), "5 name B");
}

TEST(ValueOf, IgnoresATerminatorThatTouchesTheKey) {
    EXPECT_EQ(ValueOf("namevalue 3", "name", "value"), "value 3");
    EXPECT_EQ(ValueOf("name value 3", "name", "value"), "");
}

TEST(ValueOf, FindsATerminatorInsideAWord) {
    EXPECT_EQ(ValueOf("name Devaluevalue 3", "name", "value"), "De");
}

TEST(IsNumeric, PassesExactlyTheDigitsTheMinusAndThePoint) {
    for (const char* text : {"0", "-1", "1.5", ".", "--", "1-2", "007", "99999999999999999999"}) {
        EXPECT_TRUE(IsNumeric(text)) << text;
    }
    for (const char* text : {"", " 1", "1 ", "+1", "1e3", "abc", "0x10", "1,5"}) {
        EXPECT_FALSE(IsNumeric(text)) << text;
    }
    EXPECT_FALSE(IsNumeric(std::string_view("1\0", 2)));
}

TEST(ParseBool, KnowsFourTextsAndKeepsTheOldValueOtherwise) {
    EXPECT_TRUE(ParseBool("true", false));
    EXPECT_TRUE(ParseBool("1", false));
    EXPECT_FALSE(ParseBool("false", true));
    EXPECT_FALSE(ParseBool("0", true));
    for (const char* text : {"", "maybe", "True", "TRUE", "on", "2", " true"}) {
        EXPECT_TRUE(ParseBool(text, true)) << text;
        EXPECT_FALSE(ParseBool(text, false)) << text;
    }
}

TEST(ToInteger, ReadsTheLeadingInteger) {
    EXPECT_EQ(ToInteger("42"), 42);
    EXPECT_EQ(ToInteger("-7"), -7);
    EXPECT_EQ(ToInteger("+7"), 7);
    EXPECT_EQ(ToInteger(" \t\n12x"), 12);
    EXPECT_EQ(ToInteger("1.9"), 1);
    EXPECT_EQ(ToInteger("1-2"), 1);
    EXPECT_EQ(ToInteger("007"), 7);
}

TEST(ToInteger, GivesZeroWithoutDigits) {
    for (const char* text : {"", "-", "--5", ".5", "- 5", "x1"}) {
        EXPECT_EQ(ToInteger(text), 0) << text;
    }
}

TEST(ToInteger, StaysAtTheLimitsOf32Bits) {
    EXPECT_EQ(ToInteger("2147483647"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ToInteger("2147483648"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ToInteger("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ToInteger("-2147483649"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ToInteger(std::string(5000, '9')), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ToInteger("-" + std::string(5000, '9')), std::numeric_limits<std::int32_t>::min());
}

}  // namespace
}  // namespace brenquil
