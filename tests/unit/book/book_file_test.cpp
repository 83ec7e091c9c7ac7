// The book's file: the search for a position, the meaning of a record, and files that are not
// books.

#include "../../support/strings.h"
#include "../../support/temporary_folder.h"
#include "book/book_file.h"
#include "book_builder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace brenquil {
namespace {

class BookFile : public testing::Test {
protected:
    void Open(const std::string& bytes) { ASSERT_TRUE(book.Open(folder.Write("book.bin", bytes))); }

    void Open(const test::CBookBuilder& builder) { Open(builder.Bytes()); }

    [[nodiscard]] MoveList LookUp(std::string_view fen) {
        CPosition position;
        CPositionText(position).SetFen(fen);
        MoveList list;
        book.LookUp(list, position);
        return list;
    }

    /// The moves found for a position, castling by the king's target, each with its weight.
    [[nodiscard]] Strings Moves(std::string_view fen) {
        CPosition position;
        CPositionText(position).SetFen(fen);
        Strings texts;
        for (const Move move : LookUp(fen)) {
            texts.push_back(
                CPositionText::MoveToText(move, position, CastlingNotation::KingTarget) + " " +
                std::to_string(move.Order()));
        }
        return texts;
    }

    const test::CTemporaryFolder folder;
    CBookFile book;
};

constexpr std::string_view AfterKingsPawn =
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1";
constexpr std::string_view Castles = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
constexpr std::string_view BlackCastles = "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1";

TEST_F(BookFile, WithoutABookNothingIsFound) {
    EXPECT_FALSE(book.IsOpen());
    EXPECT_EQ(book.RecordCount(), 0U);
    EXPECT_TRUE(Moves(StartFen).empty());
    EXPECT_FALSE(book.Open(folder.At("missing")));
    EXPECT_TRUE(Moves(StartFen).empty());
}

TEST_F(BookFile, WithOneRecordReadsItDirectly) {
    Open(test::CBookBuilder().Add(StartFen, "e2e4", 7));
    EXPECT_EQ(book.RecordCount(), 1U);
    EXPECT_EQ(Moves(StartFen), Strings{"e2e4 7"});
    EXPECT_TRUE(Moves(AfterKingsPawn).empty());
}

TEST_F(BookFile, AbsentKeyGivesAnEmptyList) {
    Open(test::CBookBuilder().Add(StartFen, "e2e4", 7).Add(AfterKingsPawn, "e7e5", 1));
    EXPECT_TRUE(Moves("4k3/8/8/8/8/8/8/4K3 w - - 0 1").empty());
}

TEST_F(BookFile, PositionAfterE4IsFoundUnderItsPublishedKey) {
    // The en passant file counts only if a capture is possible, so the square e3 is no part of it.
    Open(test::CBookBuilder().AddRaw(0x823C9B50FD114196, test::CBookBuilder::FieldOf("c7c5"), 3));
    EXPECT_EQ(Moves(AfterKingsPawn), Strings{"c7c5 3"});
    CPosition position;
    ASSERT_TRUE(position.MakeMove(CPositionText::TextToMove("e2e4", position, false)));
    MoveList list;
    book.LookUp(list, position);
    EXPECT_EQ(list.count, 1);
}

TEST_F(BookFile, EveryKeyOfABookIsFoundWhereverItStands) {
    for (const int records : {2, 3, 4, 5, 17, 64, 101}) {
        for (int place = 0; place < records; ++place) {
            // The key of the start position is 0x463B...: smaller and larger ones around it.
            test::CBookBuilder builder;
            for (int i = 0; i < records; ++i) {
                if (i == place) {
                    builder.Add(StartFen, "g1f3", 5);
                } else {
                    builder.AddRaw(i < place ? static_cast<std::uint64_t>(i)
                                             : 0xFF00000000000000U + static_cast<unsigned>(i),
                                   test::CBookBuilder::FieldOf("a2a3"), 1);
                }
            }
            Open(builder);
            EXPECT_EQ(Moves(StartFen), Strings{"g1f3 5"}) << place << " of " << records;
        }
    }
}

TEST_F(BookFile, KeysAreComparedAsUnsignedNumbers) {
    // 0x823C... is negative as a signed number and stands after 0x463B....
    Open(test::CBookBuilder()
             .Add(AfterKingsPawn, "e7e5", 1)
             .Add(StartFen, "e2e4", 2)
             .AddRaw(1, 796, 3));
    EXPECT_EQ(Moves(AfterKingsPawn), Strings{"e7e5 1"});
    EXPECT_EQ(Moves(StartFen), Strings{"e2e4 2"});
}

TEST_F(BookFile, KeysThatDifferInOneBitAreOthers) {
    CPosition start;
    for (int bit = 0; bit < 64; ++bit) {
        Open(test::CBookBuilder().AddRaw(start.key ^ (std::uint64_t{1} << bit),
                                         test::CBookBuilder::FieldOf("e2e4"), 1));
        EXPECT_TRUE(Moves(StartFen).empty()) << bit;
    }
}

TEST_F(BookFile, MovesComeInTheOrderOfTheFile) {
    Open(test::CBookBuilder()
             .AddRaw(5, 796, 1)
             .Add(StartFen, "e2e4", 1)
             .Add(StartFen, "d2d4", 900)
             .Add(StartFen, "c2c4", 30)
             .AddRaw(~std::uint64_t{0}, 796, 1));
    EXPECT_EQ(Moves(StartFen), (Strings{"e2e4 1", "d2d4 900", "c2c4 30"}));
}

TEST_F(BookFile, WeightIsReadMostSignificantByteFirstAndKeptAsSigned) {
    Open(test::CBookBuilder()
             .Add(StartFen, "e2e4", 0x1234)
             .Add(StartFen, "d2d4", 32767)
             .Add(StartFen, "c2c4", 32768)
             .Add(StartFen, "b2b4", 65535));
    EXPECT_EQ(Moves(StartFen), (Strings{"e2e4 4660", "d2d4 32767", "c2c4 -32768", "b2b4 -1"}));
}

TEST_F(BookFile, MovesAreAppendedToTheList) {
    Open(test::CBookBuilder().Add(StartFen, "e2e4", 1));
    CPosition start;
    MoveList list;
    list.Append(Move::Make(A1, A2));
    book.LookUp(list, start);
    ASSERT_EQ(list.count, 2);
    EXPECT_EQ(list[1].From(), E2);
}

TEST_F(BookFile, MoveFieldOfZeroIsDropped) {
    CPosition start;
    Open(test::CBookBuilder().AddRaw(start.key, 0, 9).Add(StartFen, "e2e4", 1));
    EXPECT_EQ(Moves(StartFen), Strings{"e2e4 1"});
    // Even where a move from a1 to a1 might seem to be meant.
    Open(test::CBookBuilder().Add(Castles, "a1a1", 1));
    EXPECT_TRUE(Moves(Castles).empty());
}

TEST_F(BookFile, MovesThatAreNotPseudoLegalAreDropped) {
    Open(test::CBookBuilder()
             .Add(StartFen, "e2e5", 1)
             .Add(StartFen, "e7e5", 1)
             .Add(StartFen, "e4e5", 1)
             .Add(StartFen, "a1a5", 1)
             .Add(StartFen, "e1e2", 1)
             .Add(StartFen, "b1c3", 1));
    EXPECT_EQ(Moves(StartFen), Strings{"b1c3 1"});
}

TEST_F(BookFile, KingTakesHisOwnRookIsCastling) {
    Open(test::CBookBuilder()
             .Add(Castles, "e1h1", 1)
             .Add(Castles, "e1a1", 2)
             .Add(BlackCastles, "e8h8", 3)
             .Add(BlackCastles, "e8a8", 4));
    EXPECT_EQ(Moves(Castles), (Strings{"e1g1 1", "e1c1 2"}));
    EXPECT_EQ(Moves(BlackCastles), (Strings{"e8g8 3", "e8c8 4"}));
    const MoveList white = LookUp(Castles);
    EXPECT_EQ(white[0].Kind(), MoveKind::Castling);
    EXPECT_EQ(white[0].Index(), WhiteKingSide);
    EXPECT_EQ(white[1].Index(), WhiteQueenSide);
    const MoveList black = LookUp(BlackCastles);
    EXPECT_EQ(black[0].Index(), BlackKingSide);
    EXPECT_EQ(black[1].Index(), BlackQueenSide);
}

TEST_F(BookFile, CastlingWrittenByTheKingsTargetFailsTheTest) {
    Open(test::CBookBuilder()
             .Add(Castles, "e1g1", 1)
             .Add(Castles, "e1c1", 1)
             .Add(BlackCastles, "e8g8", 1)
             .Add(BlackCastles, "e8c8", 1));
    EXPECT_TRUE(Moves(Castles).empty());
    EXPECT_TRUE(Moves(BlackCastles).empty());
}

TEST_F(BookFile, CastlingNeedsTheRightTheMenAndTheTurn) {
    constexpr std::string_view NoRight = "4k3/8/8/8/8/8/8/R3K2R w Q - 0 1";
    constexpr std::string_view Queen = "4k3/8/8/8/8/8/8/4K2Q w - - 0 1";
    constexpr std::string_view Blocked = "4k3/8/8/8/8/8/8/R3KB1R w KQ - 0 1";
    Open(test::CBookBuilder()
             .Add(NoRight, "e1h1", 1)
             .Add(Queen, "e1h1", 1)
             .Add(Blocked, "e1h1", 1)
             .Add(BlackCastles, "e1h1", 1));
    EXPECT_TRUE(Moves(NoRight).empty());
    EXPECT_TRUE(Moves(Queen).empty());
    EXPECT_TRUE(Moves(Blocked).empty());
    EXPECT_TRUE(Moves(BlackCastles).empty());
}

TEST_F(BookFile, RookFromE1ToH1IsNoCastling) {
    constexpr std::string_view Fen = "4k3/8/8/8/8/8/8/K3R3 w - - 0 1";
    Open(test::CBookBuilder().Add(Fen, "e1h1", 1));
    ASSERT_EQ(Moves(Fen), Strings{"e1h1 1"});
    EXPECT_EQ(LookUp(Fen)[0].Kind(), MoveKind::Normal);
}

TEST_F(BookFile, PromotionValuesAreKnightBishopRookQueen) {
    constexpr std::string_view Fen = "3rk3/4P3/8/8/8/8/8/4K3 w - - 0 1";
    Open(test::CBookBuilder()
             .Add(Fen, "e7d8n", 1)
             .Add(Fen, "e7d8b", 2)
             .Add(Fen, "e7d8r", 3)
             .Add(Fen, "e7d8q", 4));
    EXPECT_EQ(Moves(Fen), (Strings{"e7d8n 1", "e7d8b 2", "e7d8r 3", "e7d8q 4"}));
}

TEST_F(BookFile, PromotionValues5To7CountAsNone) {
    constexpr std::string_view Fen = "3rk3/4P3/8/8/8/8/8/4K3 w - - 0 1";
    CPosition start;
    CPosition promoting;
    CPositionText(promoting).SetFen(Fen);
    test::CBookBuilder builder;
    for (unsigned value = 5; value <= 7; ++value) {
        builder.AddRaw(start.key, value << 12U | test::CBookBuilder::FieldOf("e2e4"), value);
        builder.AddRaw(promoting.key, value << 12U | test::CBookBuilder::FieldOf("e7d8"), value);
    }
    Open(builder);
    EXPECT_EQ(Moves(StartFen), (Strings{"e2e4 5", "e2e4 6", "e2e4 7"}));
    EXPECT_TRUE(Moves(Fen).empty()) << "a pawn cannot stay a pawn on the last rank";
}

TEST_F(BookFile, HighestBitOfTheMoveFieldMeansNothing) {
    CPosition start;
    Open(test::CBookBuilder().AddRaw(start.key, 0x8000U | test::CBookBuilder::FieldOf("e2e4"), 1));
    EXPECT_EQ(Moves(StartFen), Strings{"e2e4 1"});
}

TEST_F(BookFile, PromotionOfAnotherManOrElsewhereIsDropped) {
    Open(test::CBookBuilder().Add(StartFen, "e2e4q", 1).Add(StartFen, "b1c3q", 1));
    EXPECT_TRUE(Moves(StartFen).empty());
}

TEST_F(BookFile, PawnToAnEmptySquareAsideIsEnPassant) {
    constexpr std::string_view White = "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1";
    constexpr std::string_view Black = "4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1";
    Open(test::CBookBuilder().Add(White, "e5d6", 1).Add(White, "e5e6", 2).Add(Black, "d4e3", 3));
    ASSERT_EQ(Moves(White), (Strings{"e5d6 1", "e5e6 2"}));
    EXPECT_EQ(LookUp(White)[0].Kind(), MoveKind::EnPassant);
    EXPECT_EQ(LookUp(White)[1].Kind(), MoveKind::Normal);
    ASSERT_EQ(Moves(Black), Strings{"d4e3 3"});
    EXPECT_EQ(LookUp(Black)[0].Kind(), MoveKind::EnPassant);
}

TEST_F(BookFile, EnPassantWithoutItsSquareIsDropped) {
    constexpr std::string_view Fen = "4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1";
    Open(test::CBookBuilder().Add(Fen, "e5d6", 1));
    EXPECT_TRUE(Moves(Fen).empty());
}

TEST_F(BookFile, NumberOfRecordsIsTheSizeBy16CutOff) {
    std::string bytes;
    for (const unsigned size : {0U, 1U, 15U, 16U, 17U, 31U, 32U, 100U}) {
        Open(std::string(size, 'x'));
        EXPECT_EQ(book.RecordCount(), size / 16) << size;
    }
}

TEST_F(BookFile, CountingLeavesThePlaceInTheFile) {
    const std::string name = folder.Write("place", std::string(160, 'x'));
    ASSERT_TRUE(book.Open(name));
    EXPECT_EQ(book.RecordCount(), 10U);
    EXPECT_EQ(book.RecordCount(), 10U);
}

TEST_F(BookFile, TruncatedLastRecordIsNotCounted) {
    const std::string bytes =
        test::CBookBuilder().Add(StartFen, "e2e4", 1).Add(StartFen, "d2d4", 2).Bytes();
    Open(bytes.substr(0, 31));
    EXPECT_EQ(Moves(StartFen), Strings{"e2e4 1"});
}

TEST_F(BookFile, EmptyFileAnswersNothing) {
    Open("");
    EXPECT_TRUE(book.IsOpen());
    EXPECT_TRUE(Moves(StartFen).empty());
}

TEST_F(BookFile, FileOf15BytesAnswersNothing) {
    Open(test::CBookBuilder().Add(StartFen, "e2e4", 1).Bytes().substr(0, 15));
    EXPECT_TRUE(Moves(StartFen).empty());
}

TEST_F(BookFile, DirectoryIsNoBook) {
    EXPECT_FALSE(book.Open(folder.At("")));
    EXPECT_EQ(book.RecordCount(), 0U);
    EXPECT_TRUE(Moves(StartFen).empty());
}

TEST_F(BookFile, UnsortedBookEndsTheSearchAndGivesLegalMovesOrNone) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 200; ++round) {
        test::CBookBuilder builder;
        const unsigned records = 2 + static_cast<unsigned>(random() % 40);
        for (unsigned i = 0; i < records; ++i) {
            if (random() % 4 == 0) {
                builder.Add(StartFen, "e2e4", 1);
            } else {
                builder.AddRaw(random(), static_cast<unsigned>(random() & 0xFFFFU), 1);
            }
        }
        Open(builder.UnsortedBytes());
        for (const std::string& move : Moves(StartFen)) {
            EXPECT_EQ(move, "e2e4 1");
        }
    }
}

TEST_F(BookFile, BookOfOneKeyOnlyFillsTheListAndNoMore) {
    test::CBookBuilder builder;
    for (int i = 0; i < 1000; ++i) {
        builder.Add(StartFen, "e2e4", static_cast<unsigned>(i));
    }
    Open(builder);
    EXPECT_EQ(LookUp(StartFen).count, MoveList::Capacity);
}

TEST_F(BookFile, RandomBytesGiveOnlyPseudoLegalMoves) {
    std::mt19937_64 random(11);
    CPosition start;
    for (int round = 0; round < 300; ++round) {
        test::CBookBuilder builder;
        for (int i = 0; i < 200; ++i) {
            builder.AddRaw(start.key, static_cast<unsigned>(random() & 0xFFFFU), 1);
        }
        Open(builder);
        for (const Move move : LookUp(StartFen)) {
            EXPECT_TRUE(start.MakeMove(move));
            start.UndoMove(move);
        }
    }
}

#if !defined(_WIN32)

TEST_F(BookFile, BookDeletedWhileOpenIsReadOn) {
    Open(test::CBookBuilder().Add(StartFen, "e2e4", 1));
    std::filesystem::remove(folder.At("book.bin"));
    EXPECT_EQ(Moves(StartFen), Strings{"e2e4 1"});
}

TEST_F(BookFile, BookShortenedWhileOpenAnswersWhatIsLeft) {
    test::CBookBuilder builder;
    builder.AddRaw(1, 796, 1).Add(StartFen, "e2e4", 1).AddRaw(~std::uint64_t{0}, 796, 1);
    Open(builder);
    EXPECT_EQ(Moves(StartFen), Strings{"e2e4 1"});
    for (const unsigned size : {40U, 20U, 16U, 3U, 0U}) {
        std::filesystem::resize_file(folder.At("book.bin"), size);
        EXPECT_EQ(Moves(StartFen).size(), size >= 32 ? 1U : 0U) << size;
    }
}

#endif

}  // namespace
}  // namespace brenquil
