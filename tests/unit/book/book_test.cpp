// The choice among the book's moves, the mark and line of a move, and the options.

#include "../../support/recording_host.h"
#include "../../support/strings.h"
#include "../../support/temporary_folder.h"
#include "book/book.h"
#include "book_builder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace brenquil {
namespace {

class Book : public testing::Test {
protected:
    void Load(const std::string& bytes) { Set("Book Path", folder.Write(NextName(), bytes)); }

    void Load(const test::CBookBuilder& builder) { Load(builder.Bytes()); }

    void Set(const std::string& option, const std::string& value) {
        ASSERT_TRUE(book.options.SetOption(option, value)) << option;
    }

    static std::string TextOf(Move move, const CPosition& position) {
        return CPositionText::MoveToText(move, position, CastlingNotation::KingTarget);
    }

    /// The move picked for a position; empty if none.
    std::string Pick(std::string_view fen = StartFen) {
        CPosition position;
        CPositionText(position).SetFen(fen);
        Move move = NoMove;
        return book.PickMove(move, position) ? TextOf(move, position) : std::string();
    }

    /// How often each move came in this many draws from the start position.
    std::map<std::string, int> Draw(int draws) {
        CPosition position;
        std::map<std::string, int> counts;
        for (int i = 0; i < draws; ++i) {
            Move move = NoMove;
            EXPECT_TRUE(book.PickMove(move, position));
            ++counts[TextOf(move, position)];
        }
        return counts;
    }

    Strings DrawnMoves() {
        Strings moves;
        for (const auto& [move, count] : Draw(2000)) {
            moves.push_back(move);
        }
        return moves;
    }

    /// What the book says about a move of a position: the mark, then the moves of the line.
    Strings Mark(std::string_view fen, std::string_view moveText) {
        CPosition position;
        CPositionText(position).SetFen(fen);
        const Move move = CPositionText::TextToMove(moveText, position, false);
        EXPECT_FALSE(move.IsNone()) << moveText;
        BaseMoveInfo info;
        if (!book.ProbeMoveInfo(info, move, position)) {
            return {};
        }
        EXPECT_TRUE(SameMove(info.move, move));
        score = info.move.Order();
        Strings result = {info.text};
        for (const Move next : info.line) {
            result.push_back(TextOf(next, position));
        }
        return result;
    }

    std::string NextName() { return "book" + std::to_string(++books_) + ".bin"; }

    const test::CTemporaryFolder folder;
    test::CRecordingHost host;
    int score = 0;
    CBook book{host};

private:
    int books_ = 0;
};

constexpr std::string_view AfterE4 = "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1";
constexpr std::string_view AfterE4E5 =
    "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq e6 0 2";

/// Moves of the start position, the heaviest first.
constexpr std::array<const char*, 10> TenMoves = {"e2e4", "d2d4", "c2c4", "g1f3", "g2g3",
                                                  "b2b3", "f2f4", "b1c3", "a2a3", "h2h4"};

/// A book of the first of the ten moves, in an order that is not that of their weights.
test::CBookBuilder BookOf(int moves) {
    test::CBookBuilder builder;
    for (int i = 0; i < moves; ++i) {
        const auto place = static_cast<std::size_t>(i % 2 == 0 ? i / 2 : moves - 1 - i / 2);
        builder.Add(StartFen, TenMoves[place], 1000 - 10 * static_cast<unsigned>(place));
    }
    return builder;
}

/// The first of the ten moves in the order of their texts.
Strings FirstMoves(int count) {
    Strings moves(TenMoves.begin(), TenMoves.begin() + count);
    std::sort(moves.begin(), moves.end());
    return moves;
}

TEST_F(Book, StandsFirstAndIsNeverAskedInTheSearch) {
    Load(test::CBookBuilder().Add(StartFen, "e2e4", 1));
    Score none = 77;
    EXPECT_EQ(book.GetPriority(), 0U);
    EXPECT_FALSE(book.ProbeSearch(none, CPosition(), 5, 1));
    EXPECT_EQ(none, 77);
}

TEST_F(Book, WithoutAFileAnswersNothing) {
    Move move = NoMove;
    EXPECT_FALSE(book.ProbeRoot(move, CPosition()));
    EXPECT_EQ(Pick(), "");
    EXPECT_TRUE(Mark(StartFen, "e2e4").empty());
    EXPECT_TRUE(host.printed.empty());
}

TEST_F(Book, LoadedMessageNamesPathAndNumberOfRecords) {
    const std::string path = folder.Write("my book.bin", BookOf(3).Bytes() + "a tail");
    Set("Book Path", path);
    EXPECT_EQ(host.printed, Strings{"book \"" + path + "\" loaded! (3 moves)"});
    EXPECT_EQ(book.RecordCount(), 3U);
}

TEST_F(Book, MissingFileIsSilentAndClosesTheBookBefore) {
    Load(BookOf(1));
    host.printed.clear();
    Set("Book Path", folder.At("missing.bin"));
    EXPECT_TRUE(host.printed.empty());
    EXPECT_EQ(Pick(), "");
    EXPECT_EQ(book.RecordCount(), 0U);
}

TEST_F(Book, UnsetPathClosesTheBook) {
    Load(BookOf(1));
    Set("Book Path", "<empty>");
    EXPECT_EQ(Pick(), "");
}

TEST_F(Book, SamePathAgainDoesNothingEvenIfTheFileChanged) {
    const std::string path = folder.At("late.bin");
    Set("Book Path", path);
    folder.Write("late.bin", BookOf(1).Bytes());
    const int before = host.searchesEnded;
    Set("Book Path", path);
    EXPECT_EQ(Pick(), "");
    EXPECT_EQ(host.searchesEnded, before);
    EXPECT_TRUE(host.printed.empty());
    Set("Book Path", "<empty>");
    Set("Book Path", path);
    EXPECT_EQ(Pick(), "e2e4");
}

TEST_F(Book, WhatReadsTheBookIsEndedBeforeEachChange) {
    const int before = host.searchesEnded;
    Load(BookOf(1));
    Set("Book Path", folder.At("missing.bin"));
    EXPECT_EQ(host.searchesEnded, before + 2);
}

TEST_F(Book, BookUseOffLeavesTheBookOpenAndDoesNotReadIt) {
    Load(BookOf(1));
    Set("OwnBook", "false");
    MoveList list;
    book.LookUp(list, CPosition());
    EXPECT_EQ(list.count, 0);
    Move move = NoMove;
    EXPECT_FALSE(book.ProbeRoot(move, CPosition()));
    EXPECT_TRUE(Mark(StartFen, "e2e4").empty());
    EXPECT_EQ(book.RecordCount(), 1U);
    Set("Book Use", "true");
    EXPECT_EQ(Pick(), "e2e4");
    EXPECT_EQ(host.printed.size(), 1U);
}

TEST_F(Book, OneMoveIsPlayedInAnyMode) {
    Load(test::CBookBuilder().Add(StartFen, "g1f3", 0));
    for (const char* mode : {"Wide", "Standard", "Tournament", "BestMove"}) {
        Set("Book Mode", mode);
        EXPECT_EQ(Pick(), "g1f3") << mode;
    }
}

TEST_F(Book, BestMoveIsTheHeaviestWhereverItStands) {
    Load(BookOf(9));
    Set("Book Mode", "BestMove");
    EXPECT_EQ(Draw(100), (std::map<std::string, int>{{"e2e4", 100}}));
}

TEST_F(Book, BestOfTwoMovesOfEqualWeightIsTheFirstInTheFile) {
    Set("Book Mode", "BestMove");
    Load(test::CBookBuilder().Add(StartFen, "d2d4", 5).Add(StartFen, "e2e4", 5));
    EXPECT_EQ(DrawnMoves(), Strings{"d2d4"});
    Load(test::CBookBuilder().Add(StartFen, "e2e4", 5).Add(StartFen, "d2d4", 5));
    EXPECT_EQ(DrawnMoves(), Strings{"e2e4"});
}

TEST_F(Book, SortByExchangeCarriesAnEarlyMoveBehindItsEquals) {
    // The heaviest third one changes places with the first, which then stands after the second.
    Load(test::CBookBuilder()
             .Add(StartFen, "a2a3", 1)
             .Add(StartFen, "b2b3", 1)
             .Add(StartFen, "c2c3", 2));
    Set("Book Mode", "Standard");
    EXPECT_EQ(DrawnMoves(), (Strings{"b2b3", "c2c3"}));
}

TEST_F(Book, WeightFrom32768UpSortsLast) {
    Load(test::CBookBuilder()
             .Add(StartFen, "e2e4", 65535)
             .Add(StartFen, "d2d4", 32768)
             .Add(StartFen, "c2c4", 0));
    Set("Book Mode", "BestMove");
    EXPECT_EQ(DrawnMoves(), Strings{"c2c4"});
    Set("Book Mode", "Standard");
    EXPECT_EQ(DrawnMoves(), (Strings{"c2c4", "e2e4"}));
}

TEST_F(Book, RangesOfTheModesForUpToTenMoves) {
    // By number of moves from 1: half and fifth, rounded up.
    constexpr std::array<int, 10> Half = {1, 1, 2, 2, 3, 3, 4, 4, 5, 5};
    constexpr std::array<int, 10> Fifth = {1, 1, 1, 1, 1, 2, 2, 2, 2, 2};
    for (int moves = 1; moves <= 10; ++moves) {
        const auto index = static_cast<std::size_t>(moves - 1);
        Load(BookOf(moves));
        Set("Book Mode", "Wide");
        EXPECT_EQ(DrawnMoves(), FirstMoves(moves)) << moves;
        Set("Book Mode", "Standard");
        EXPECT_EQ(DrawnMoves(), FirstMoves(Half[index])) << moves;
        Set("Book Mode", "Tournament");
        EXPECT_EQ(DrawnMoves(), FirstMoves(Fifth[index])) << moves;
        Set("Book Mode", "BestMove");
        EXPECT_EQ(DrawnMoves(), FirstMoves(1)) << moves;
    }
}

// The chance that a right program fails: a count of n draws is off by t or more with a probability
// of at most 2 exp(-2 t^2 / n) (Hoeffding). With n = 50000 and t = 665 that is 4.2e-8; 17 counts
// are looked at, so the rate of false alarms is below 7.2e-7.
TEST_F(Book, EachMoveOfARangeComesAboutEquallyOften) {
    constexpr int Draws = 50000;
    constexpr double Tolerance = 665;
    Load(BookOf(10));
    for (const auto& [mode, range] : std::vector<std::pair<std::string, int>>{
             {"Wide", 10}, {"Standard", 5}, {"Tournament", 2}}) {
        Set("Book Mode", mode);
        const std::map<std::string, int> counts = Draw(Draws);
        EXPECT_EQ(counts.size(), static_cast<std::size_t>(range)) << mode;
        for (const std::string& move : FirstMoves(range)) {
            const int count = counts.contains(move) ? counts.at(move) : 0;
            EXPECT_NEAR(count, static_cast<double>(Draws) / range, Tolerance)
                << mode << ' ' << move;
        }
    }
}

TEST_F(Book, UnknownModeTextKeepsTheMode) {
    Load(BookOf(4));
    Set("Book Mode", "BestMove");
    Set("Book Mode", "Boldly");
    EXPECT_EQ(book.options.bookMode.value, "Boldly");
    EXPECT_EQ(DrawnMoves(), Strings{"e2e4"});
    Set("Book Mode", "");
    EXPECT_EQ(DrawnMoves(), Strings{"e2e4"});
    Set("Book Mode", "Wide");
    EXPECT_EQ(DrawnMoves(), FirstMoves(4));
}

TEST_F(Book, PickedMoveCarriesItsWeightAndRootMoveNone) {
    Load(test::CBookBuilder().Add(StartFen, "e2e4", 4711));
    Move move = NoMove;
    ASSERT_TRUE(book.PickMove(move, CPosition()));
    EXPECT_EQ(move.Order(), 4711);
    ASSERT_TRUE(book.ProbeRoot(move, CPosition()));
    EXPECT_EQ(move.Order(), 0);
    EXPECT_EQ(move.word, move.Identity());
}

TEST_F(Book, MoveThatLeavesTheKingInCheckMayBePicked) {
    constexpr std::string_view Fen = "4k3/8/8/8/8/8/P3r3/4K3 w - - 0 1";
    Load(test::CBookBuilder().Add(Fen, "a2a3", 1));
    EXPECT_EQ(Pick(Fen), "a2a3");
}

TEST_F(Book, MarkIsWeightAndShareOfTheSum) {
    Load(test::CBookBuilder()
             .Add(StartFen, "e2e4", 1234)
             .Add(StartFen, "d2d4", 766)
             .Add(StartFen, "c2c4", 0));
    EXPECT_EQ(Mark(StartFen, "e2e4"), Strings{"(1234 = 61.70%)"});
    EXPECT_EQ(score, 1234);
    EXPECT_EQ(Mark(StartFen, "d2d4"), Strings{"(766 = 38.30%)"});
    EXPECT_EQ(Mark(StartFen, "c2c4"), Strings{"(0 = 0.00%)"});
    EXPECT_TRUE(Mark(StartFen, "a2a3").empty());
}

TEST_F(Book, MarkTakesWeightsAsSignedNumbers) {
    Load(test::CBookBuilder().Add(StartFen, "e2e4", 65535).Add(StartFen, "d2d4", 5));
    EXPECT_EQ(Mark(StartFen, "e2e4"), Strings{"(-1 = -25.00%)"});
    EXPECT_EQ(score, -1);
    EXPECT_EQ(Mark(StartFen, "d2d4"), Strings{"(5 = 125.00%)"});
}

TEST_F(Book, MarkOfAMoveThatStandsTwiceIsThatOfTheFirst) {
    Load(test::CBookBuilder()
             .Add(StartFen, "e2e4", 1)
             .Add(StartFen, "e2e4", 2)
             .Add(StartFen, "d2d4", 1));
    EXPECT_EQ(Mark(StartFen, "e2e4"), Strings{"(1 = 25.00%)"});
}

TEST_F(Book, WeightSumOfZeroGivesAShareThatIsNoNumber) {
    Load(test::CBookBuilder().Add(StartFen, "e2e4", 0));
    const Strings none = Mark(StartFen, "e2e4");
    ASSERT_EQ(none.size(), 1U);
    EXPECT_TRUE(none[0] == "(0 = nan%)" || none[0] == "(0 = -nan%)") << none[0];
    Load(test::CBookBuilder().Add(StartFen, "e2e4", 7).Add(StartFen, "d2d4", 65529));
    EXPECT_EQ(Mark(StartFen, "e2e4"), Strings{"(7 = inf%)"});
    EXPECT_EQ(Mark(StartFen, "d2d4"), Strings{"(-7 = -inf%)"});
}

TEST_F(Book, LineFollowsTheHeaviestMovesWhateverTheMode) {
    Load(test::CBookBuilder()
             .Add(StartFen, "e2e4", 1)
             .Add(AfterE4, "c7c5", 1)
             .Add(AfterE4, "e7e5", 2)
             .Add(AfterE4E5, "g1f3", 9)
             .Add(AfterE4E5, "f2f4", 8));
    for (const char* mode : {"Wide", "BestMove"}) {
        Set("Book Mode", mode);
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(Mark(StartFen, "e2e4"), (Strings{"(1 = 100.00%)", "e7e5", "g1f3"}));
        }
    }
    EXPECT_EQ(Mark(AfterE4, "c7c5"), Strings{"(1 = 33.33%)"});
}

TEST_F(Book, AskingForAMarkKeepsTheMode) {
    Load(BookOf(4));
    Set("Book Mode", "Wide");
    (void)Mark(StartFen, "e2e4");
    EXPECT_EQ(DrawnMoves(), FirstMoves(4));
}

TEST_F(Book, LineThatGoesInACircleEnds) {
    // Knights out and back for ever.
    constexpr std::string_view Out = "rnbqkbnr/pppppppp/8/8/8/5N2/PPPPPPPP/RNBQKB1R b KQkq - 1 1";
    constexpr std::string_view BothOut =
        "rnbqkb1r/pppppppp/5n2/8/8/5N2/PPPPPPPP/RNBQKB1R w KQkq - 2 2";
    constexpr std::string_view OneBack =
        "rnbqkb1r/pppppppp/5n2/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 3 2";
    Load(test::CBookBuilder()
             .Add(StartFen, "g1f3", 1)
             .Add(Out, "g8f6", 1)
             .Add(BothOut, "f3g1", 1)
             .Add(OneBack, "f6g8", 1));
    const Strings line = Mark(StartFen, "g1f3");
    EXPECT_EQ(line.size(), 1U + static_cast<std::size_t>(PvLine::Capacity));
    EXPECT_EQ(line[4], "g1f3");
    // The same with the undo stack nearly full.
    EXPECT_EQ(Mark("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 249", "g1f3").size(),
              5U);
}

TEST_F(Book, LineEndsWithAMoveThatCannotBePlayed) {
    constexpr std::string_view Fen = "4k3/8/8/8/8/4r3/P7/4K3 b - - 0 1";
    constexpr std::string_view Pinned = "4k3/8/8/8/8/8/P3r3/4K3 w - - 1 2";
    Load(test::CBookBuilder().Add(Fen, "e3e2", 1).Add(Pinned, "a2a3", 1));
    EXPECT_EQ(Mark(Fen, "e3e2"), (Strings{"(1 = 100.00%)", "a2a3"}));
    EXPECT_EQ(Mark(Pinned, "a2a3"), Strings{"(1 = 100.00%)"});
}

/// The copy that the line is played on knows the outermost rooks alone. Castling with an inner one
/// went wrong on it: both rooks vanished.
TEST_F(Book, LineAfterCastlingWithAnInnerRookEndsAtOnce) {
    constexpr std::string_view Fen = "4k3/8/8/8/8/8/8/4KR1R w F - 0 1";
    Load(test::CBookBuilder().Add(Fen, "e1h1", 1).Add("4k3/8/8/8/8/8/8/6K1 b - - 1 1", "e8e7", 1));
    EXPECT_EQ(Mark(Fen, "e1g1"), Strings{"(1 = 100.00%)"});
}

TEST_F(Book, RealBooksAnswer) {
    const char* const data = std::getenv("BRENQUIL_DATA");
    if (data == nullptr) {
        GTEST_SKIP() << "the shared books are not there";
    }
    const std::filesystem::path books = std::filesystem::path(data) / "books";

    struct {
        const char* name;
        std::uint32_t records;
    } const expected[] = {
        {"performance.bin", 92954}, {"cutechess-book_small.bin", 31467}, {"lasker-trap.bin", 7}};

    for (const auto& [name, records] : expected) {
        Set("Book Path", (books / name).string());
        EXPECT_EQ(book.RecordCount(), records) << name;
    }
    // The last one holds Black's side of a line that ends in a promotion to a knight.
    Set("Book Mode", "BestMove");
    CPosition position;
    Strings answers;
    for (const char* text : {"d2d4", "c2c4", "d4e5", "e2e3", "c1d2", "d2b4", "e1e2"}) {
        ASSERT_TRUE(position.MakeMove(CPositionText::TextToMove(text, position, false))) << text;
        Move move = NoMove;
        ASSERT_TRUE(book.PickMove(move, position)) << text;
        answers.push_back(TextOf(move, position));
        ASSERT_TRUE(position.MakeMove(move));
    }
    EXPECT_EQ(answers, (Strings{"d7d5", "e7e5", "d5d4", "f8b4", "d4e3", "e3f2", "f2g1n"}));
}

}  // namespace
}  // namespace brenquil
