// The words of a command line.

#include "tables/command_words.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

using Words = std::vector<std::string>;

TEST(CommandWords, OptionsStandAnywhere) {
    CCommandWords words({"make", "--force", "nalimov", "--threads", "3", "4", "--memory=2", "dir"});
    EXPECT_TRUE(words.Flag("--force"));
    EXPECT_FALSE(words.Flag("--force"));
    EXPECT_EQ(words.Number("--threads", 1, 8), 3U);
    EXPECT_EQ(words.Number("--threads", 1, 8), 1U);
    EXPECT_EQ(words.Size("--memory", 0), std::uint64_t{2} << 30U);
    EXPECT_EQ(words.Rest(), (Words{"make", "nalimov", "4", "dir"}));
}

TEST(CommandWords, SizesHaveUnits) {
    for (const auto& [text, bytes] :
         {std::pair<const char*, std::uint64_t>{"1", std::uint64_t{1} << 30U},
          {"1G", std::uint64_t{1} << 30U},
          {"4096g", std::uint64_t{4096} << 30U},
          {"16M", std::uint64_t{16} << 20U},
          {"512m", std::uint64_t{512} << 20U}}) {
        EXPECT_EQ(CCommandWords({"--memory", text}).Size("--memory", 0), bytes) << text;
    }
    for (const char* const text : {"", "0", "M", "15M", "4097", "-1", "1.5", "1K", "99999999999"}) {
        EXPECT_THROW((void)CCommandWords({"--memory", text}).Size("--memory", 0), CMisuse) << text;
    }
}

TEST(CommandWords, NumbersHaveBounds) {
    for (const char* const text : {"", "0", "9", "x", "1x", "99999999999999999999"}) {
        EXPECT_THROW((void)CCommandWords({"--threads", text}).Number("--threads", 1, 8), CMisuse);
    }
    EXPECT_THROW((void)CCommandWords({"--threads"}).Number("--threads", 1, 8), CMisuse);
}

TEST(CommandWords, WhatNobodyKnowsIsRefused) {
    EXPECT_THROW((void)CCommandWords({"--what"}).Rest(), CMisuse);
    EXPECT_THROW((void)CCommandWords({"-x"}).Rest(), CMisuse);
    EXPECT_EQ(CCommandWords({"-"}).Rest(), Words{"-"});
    EXPECT_EQ(CCommandWords({"a", "--", "--what", "--"}).Rest(), (Words{"a", "--what", "--"}));
}

}  // namespace
}  // namespace brenquil
