// The position's key over real games, against a computation that shares nothing with the engine.

#include "board/position.h"
#include "board/position_text.h"
#include "plain_game.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace brenquil {
namespace {

std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The published numbers from their file.
test::BookNumbers ReadNumbers(const std::filesystem::path& path) {
    test::BookNumbers numbers{};
    std::size_t count = 0;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("0x") && count < numbers.size()) {
            numbers[count++] = std::stoull(line, nullptr, 16);
        }
    }
    EXPECT_EQ(count, numbers.size());
    return numbers;
}

TEST(PolyglotKey, ReaderOfGamesTakesMovesAndLeavesTheRest) {
    const auto games =
        test::ReadPgn("[Event \"a\"]\n[Result \"1-0\"]\n\n1. e4 {good (very)} e5 2.Nf3 "
                      "$1 (2. f4 exf4 (2... d5)) 2... Nc6 ; rest\n3. O-O 1-0\n\n"
                      "[FEN \"x\"]\n\n1. e4 *\n\n[Event \"b\"]\n\n1/2-1/2\n");
    ASSERT_EQ(games.size(), 2U);
    EXPECT_EQ(games[0], (std::vector<std::string>{"e4", "e5", "Nf3", "Nc6", "O-O"}));
    EXPECT_TRUE(games[1].empty());
}

TEST(PolyglotKey, PlainGameKnowsPinsCastlingEnPassantAndPromotion) {
    test::CPlainGame game;
    for (const char* san : {"e4", "e5", "Nf3", "Nc6", "Bb5", "d6"}) {
        EXPECT_NE(game.Play(san), "") << san;
    }
    EXPECT_EQ(game.Play("O-O"), "e1g1");
    EXPECT_EQ(game.Play("Nce7"), "") << "this knight is pinned";
    EXPECT_EQ(game.Play("Ne7"), "g8e7");
    EXPECT_EQ(game.Play("O-O"), "") << "White has castled";
    test::CPlainGame other;
    for (const char* san : {"e4", "a6", "e5", "d5"}) {
        EXPECT_NE(other.Play(san), "") << san;
    }
    EXPECT_EQ(other.Play("exd6"), "e5d6");
    EXPECT_EQ(other.Play("a5"), "a6a5");
    EXPECT_EQ(other.Play("dxc7"), "d6c7");
    EXPECT_EQ(other.Play("a4"), "a5a4");
    EXPECT_EQ(other.Play("cxb8"), "");
    EXPECT_EQ(other.Play("cxb8=N"), "c7b8n");
}

TEST(PolyglotKey, EqualsTheFormatsRuleInAllPositionsOfRealGames) {
    constexpr std::size_t LeastGames = 300;
    const char* const root = std::getenv("BRENQUIL_DATA");
    if (root == nullptr) {
        GTEST_SKIP() << "the shared games are not there";
    }
    const std::filesystem::path data(root);
    const test::BookNumbers numbers = ReadNumbers(data / "polyglot_random64.txt");

    std::size_t games = 0;
    std::size_t positions = 0;
    std::size_t enPassant = 0;
    for (const char* name : {"world_matches.pgn", "dortmund.pgn", "twic1599_100k.pgn"}) {
        for (const std::vector<std::string>& moves : test::ReadPgn(ReadAll(data / "pgn" / name))) {
            test::CPlainGame plain;
            CPosition position;
            ASSERT_EQ(position.key, plain.Key(numbers));
            for (const std::string& san : moves) {
                const std::string text = plain.Play(san);
                const Move move = CPositionText::TextToMove(text, position, false);
                ASSERT_TRUE(!move.IsNone() && position.MakeMove(move))
                    << name << ' ' << games << ": " << san << ' ' << text;
                ASSERT_EQ(position.key, plain.Key(numbers)) << CPositionText(position).GetFen();
                ++positions;
                enPassant += position.enPassant == SquareNone ? 0 : 1;
            }
            ++games;
        }
    }
    RecordProperty("games", static_cast<int>(games));
    RecordProperty("positions", static_cast<int>(positions));
    EXPECT_GE(games, LeastGames);
    EXPECT_GE(enPassant, 100U) << "the rule of the en passant file has hardly been tried";
}

}  // namespace
}  // namespace brenquil
