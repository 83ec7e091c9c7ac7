// ctest: threads

#include "interface/program/standard_input.h"

#include <chrono>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace brenquil {
namespace {

bool FindsEnd(CStandardInput& input) {
    for (int i = 0; i < 20000; ++i) {
        if (input.IsEndWaiting()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

std::vector<std::string> AllLines(CStandardInput& input) {
    std::vector<std::string> lines;
    while (const auto line = input.TakeLine()) {
        lines.push_back(*line);
    }
    return lines;
}

TEST(StandardInput, GivesTheLinesOfTheStream) {
    std::istringstream text("first\nsecond\r\n\nlast");
    CStandardInput input(text);
    EXPECT_FALSE(input.HasEnded());
    EXPECT_EQ(AllLines(input), (std::vector<std::string>{"first", "second", "", "last"}));
    EXPECT_TRUE(input.HasEnded());
    EXPECT_EQ(input.TakeLine(), std::nullopt);
}

TEST(StandardInput, FindsACommandThatEndsTheProgramBehindOthers) {
    for (const char* last : {"quit", "  EXIT now", "Quit\r"}) {
        std::istringstream text("position startpos\ngo depth 3\nisready\n" + std::string(last) +
                                "\n");
        CStandardInput input(text);
        EXPECT_EQ(input.TakeLine(), "position startpos");
        EXPECT_FALSE(input.IsEndWaiting()) << "the first call only begins to read ahead";
        EXPECT_TRUE(FindsEnd(input)) << last;
    }
}

TEST(StandardInput, WhatIsReadAheadIsGivenInItsOrder) {
    std::string text;
    std::vector<std::string> wanted;
    for (int i = 0; i < 1000; ++i) {
        wanted.push_back("line " + std::to_string(i));
        text += wanted.back() + "\n";
    }
    std::istringstream stream(text);
    CStandardInput input(stream);
    std::vector<std::string> lines{*input.TakeLine(), *input.TakeLine()};
    EXPECT_FALSE(input.IsEndWaiting());
    for (std::string& line : AllLines(input)) {
        lines.push_back(std::move(line));
    }
    EXPECT_EQ(lines, wanted);
    EXPECT_FALSE(input.IsEndWaiting());
    EXPECT_TRUE(input.HasEnded());
}

TEST(StandardInput, WordsThatOnlyLookLikeTheEndAreNone) {
    std::istringstream text("quits\nposition quit\n");
    CStandardInput input(text);
    EXPECT_FALSE(input.IsEndWaiting());
    EXPECT_EQ(AllLines(input).size(), 2U);
    EXPECT_FALSE(input.IsEndWaiting());
}

TEST(StandardInput, ReadsAheadNoMoreThanItsBound) {
    const std::string line(1 << 20, 'x');
    std::string text;
    for (int i = 0; i < 20; ++i) {
        text += line + "\n";
    }
    std::istringstream stream(text + "quit\n");
    CStandardInput input(stream);
    EXPECT_FALSE(input.IsEndWaiting());
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_FALSE(input.IsEndWaiting());
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(input.TakeLine(), line);
    }
    EXPECT_TRUE(FindsEnd(input));
    EXPECT_EQ(input.TakeLine(), "quit");
}

TEST(StandardInput, OtherThreadsDoNotMakeItReadAhead) {
    std::istringstream text("quit\n");
    CStandardInput input(text);
    std::thread([&] {
        for (int i = 0; i < 3; ++i) {
            EXPECT_FALSE(input.IsEndWaiting());
        }
    }).join();
    EXPECT_EQ(text.tellg(), 0);
    EXPECT_EQ(input.TakeLine(), "quit");
}

TEST(StandardInput, DestroyingItWithLinesLeftEndsItsThread) {
    const std::string line(8 << 20, 'x');
    std::istringstream text(line + "\n" + line + "\n" + line + "\n" + line + "\n");
    CStandardInput input(text);
    EXPECT_FALSE(input.IsEndWaiting());
}

}  // namespace
}  // namespace brenquil
