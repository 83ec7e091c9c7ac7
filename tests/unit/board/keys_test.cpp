// The keys of the position: the published values of the book format, and what goes into them.

#include "board/polyglot_keys.h"
#include "board_checks.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace brenquil {
namespace {

struct PublishedKey {
    const char* moves;
    const char* fen;
    std::uint64_t key;
};

/// The test keys published with the book format.
constexpr std::array<PublishedKey, 9> PublishedKeys = {{
    {"", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0x463B96181691FC9C},
    {"e2e4", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", 0x823C9B50FD114196},
    {"e2e4 d7d5", "rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 2",
     0x0756B94461C50FB0},
    {"e2e4 d7d5 e4e5", "rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2",
     0x662FAFB965DB29D4},
    {"e2e4 d7d5 e4e5 f7f5", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3",
     0x22A48B5A8E47FF78},
    {"e2e4 d7d5 e4e5 f7f5 e1e2", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR b kq - 0 3",
     0x652A607CA3F242C1},
    {"e2e4 d7d5 e4e5 f7f5 e1e2 e8f7", "rnbq1bnr/ppp1pkpp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR w - - 0 4",
     0x00FDD303C946BDD9},
    {"a2a4 b7b5 h2h4 b5b4 c2c4", "rnbqkbnr/p1pppppp/8/8/PpP4P/8/1P1PPPP1/RNBQKBNR b KQkq c3 0 3",
     0x3C8123EA7B067637},
    {"a2a4 b7b5 h2h4 b5b4 c2c4 b4c3 a1a3",
     "rnbqkbnr/p1pppppp/8/8/P6P/R1p5/1P1PPPP1/1NBQKBNR b Kkq - 0 4", 0x5C3F9B829B279560},
}};

TEST(Keys, AreThePublishedOnesOfTheFens) {
    for (const PublishedKey& row : PublishedKeys) {
        EXPECT_EQ(FromFen(row.fen).key, row.key) << row.fen;
    }
}

TEST(Keys, AreThePublishedOnesAfterTheMoves) {
    for (const PublishedKey& row : PublishedKeys) {
        CPosition position;
        std::vector<Move> made;
        std::istringstream words(row.moves);
        for (std::string word; words >> word;) {
            made.push_back(CPositionText::TextToMove(word, position, false));
            ASSERT_FALSE(made.back().IsNone()) << word;
            ASSERT_TRUE(position.MakeMove(made.back())) << word;
        }
        EXPECT_EQ(position.key, row.key) << row.moves;
        for (; !made.empty(); made.pop_back()) {
            position.UndoMove(made.back());
        }
        EXPECT_EQ(position.key, 0x463B96181691FC9CU);
    }
}

TEST(Keys, OfANewPositionIsThePublishedOneOfTheStart) {
    EXPECT_EQ(CPosition().key, 0x463B96181691FC9CU);
}

TEST(Keys, TableIsTheOneOfTheBookFormat) {
    std::set<std::uint64_t> different(PolyglotKeys.begin(), PolyglotKeys.end());
    EXPECT_EQ(different.size(), 781U);
    EXPECT_EQ(PolyglotKeys[780], SideKey);
    EXPECT_EQ(SideKey, 0xF8D626AAAF278509U);

    const std::string path = SharedPath("BRENQUIL_DATA", "data", "polyglot_random64.txt");
    if (path.empty()) {
        GTEST_SKIP() << "the published table is not there";
    }
    std::ifstream file(path);
    std::size_t index = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("0x")) {
            ASSERT_LT(index, PolyglotKeys.size());
            EXPECT_EQ(PolyglotKeys[index++], std::stoull(line, nullptr, 16));
        }
    }
    EXPECT_EQ(index, 781U);
}

TEST(Keys, HoldOneNumberForEachCastlingRight) {
    const std::uint64_t none = FromFen("r3k2r/8/8/8/8/8/8/R3K2R w - - 0 1").key;
    for (unsigned rights = 0; rights < 16; ++rights) {
        std::string letters;
        std::uint64_t expected = none;
        for (std::size_t index = 0; index < 4; ++index) {
            if ((rights >> index & 1U) != 0) {
                letters += "KQkq"[index];
                expected ^= PolyglotKeys[768 + index];
            }
        }
        const CPosition position = FromFen("r3k2r/8/8/8/8/8/8/R3K2R w " + letters + "- - 0 1");
        EXPECT_EQ(position.castlingRights, rights);
        EXPECT_EQ(position.key, expected);
    }
}

TEST(Keys, HoldTheFileOfAnEnPassantSquareThatAPawnCanUse) {
    for (int file = 0; file < 8; ++file) {
        const std::string square = SquareToText(MakeSquare(file, 5));
        const std::string board = "4k3/8/8/PPPPPPPP/8/8/8/4K3 w - ";
        EXPECT_EQ(FromFen(board + square).key ^ FromFen(board + "-").key,
                  PolyglotKeys[772 + static_cast<std::size_t>(file)]);
    }
    EXPECT_EQ(FromFen("4k3/8/8/P7/8/8/8/4K3 w - c6").key,
              FromFen("4k3/8/8/P7/8/8/8/4K3 w - -").key);
}

TEST(Keys, OfPawnsAndKingsHoldNothingElse) {
    const std::uint64_t bare = FromFen("4k3/4p3/8/8/8/8/4P3/4K3 w - - 0 1").pawnKingKey;
    EXPECT_EQ(bare, PolyglotKeys[10 * 64 + E8] ^ PolyglotKeys[E7] ^ PolyglotKeys[64 + E2] ^
                        PolyglotKeys[11 * 64 + E1]);
    EXPECT_EQ(FromFen("r3k2r/4p3/2nbq3/8/8/2NBQ3/4P3/R3K2R b KQkq - 0 1").pawnKingKey, bare);
}

TEST(Keys, OfPawnsAndKingsFollowCapturesPromotionsAndTheKing) {
    CPosition position = FromFen("3rk3/4P3/8/2Pp4/8/8/8/4K3 w - d6 0 1");
    for (const char* text : {"e7d8q", "e7d8n", "c5d6", "e1e2", "c5c6"}) {
        const Move move = FindMove(position, text);
        ASSERT_TRUE(position.MakeMove(move)) << text;
        EXPECT_EQ(DerivedFaults(position), "") << text;
        position.UndoMove(move);
        EXPECT_EQ(DerivedFaults(position), "") << text;
    }
}

TEST(Keys, EqualThoseOfTheWrittenFenAfterAnyMovesMadeAndTakenBack) {
    CRandom random(21);
    const int games = std::max(4, 400 / WorkDivisor());
    for (int game = 0; game < games; ++game) {
        CPosition position =
            game % 2 == 0 ? CPosition() : FromFen(Chess960StartFen(random.Below(960)));
        std::vector<Move> made;
        for (int i = 0; i < 150; ++i) {
            MoveList list;
            CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
            if (list.count == 0) {
                break;
            }
            if (const Move move = PickMove(list, random); position.MakeMove(move)) {
                made.push_back(move);
            }
            while (!made.empty() && random.OneIn(4)) {
                position.UndoMove(made.back());
                made.pop_back();
            }
            const CPosition read = FromFen(FenOf(position));
            ASSERT_EQ(position.key, read.key) << FenOf(position);
            ASSERT_EQ(position.pawnKingKey, read.pawnKingKey) << FenOf(position);
        }
    }
}

}  // namespace
}  // namespace brenquil
