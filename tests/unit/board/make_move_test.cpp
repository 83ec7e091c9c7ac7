// Making moves and taking them back.

#include "board/polyglot_keys.h"
#include "board_checks.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

/// Plays one random game, holding each position against the slow rules and a rebuilt one, and takes
/// it back, holding each position against what it was. Counts the moves that were made.
class CGame {
public:
    CGame(std::string_view fen, CRandom& random) : position_(FromFen(fen)), random_(random) {}

    void Play(int length) {
        for (int i = 0; i < length && position_.ply < CPosition::UndoCapacity && fault_.empty();
             ++i) {
            if (!PlayOne()) {
                break;
            }
        }
        while (!made_.empty() && fault_.empty()) {
            TakeBack();
        }
    }

    [[nodiscard]] const std::string& Fault() const { return fault_; }

    [[nodiscard]] std::int64_t MovesMade() const { return count_; }

    [[nodiscard]] std::int64_t MovesRefused() const { return refused_; }

private:
    struct Made {
        Move move;
        PositionFields before;
    };

    /// One legal move; false if there is none.
    bool PlayOne() {
        MoveList list;
        CMoveGenerator(position_).GenerateMoves(list, MoveKinds::All);
        while (list.count != 0 && fault_.empty()) {
            const Move move = PickMove(list, random_);
            const PositionFields before(position_);
            SlowPosition slow(position_);
            const bool isLegal = slow.Make(move.word);
            const bool isMade = position_.MakeMove(move);
            Expect(isMade == isLegal, "legality", move);
            if (isMade) {
                Expect(!position_.IsKingAttacked(~position_.sideToMove), "king left attacked",
                       move);
                Expect(position_.inCheck == position_.IsKingAttacked(position_.sideToMove),
                       "check not seen", move);
                Expect(Disagreements(position_, slow).empty(), Disagreements(position_, slow),
                       move);
                Expect(DerivedFaults(position_).empty(), DerivedFaults(position_), move);
                Expect(position_.ply == before.ply + 1, "ply", move);
                CheckRecord(before, move);
                made_.push_back({move, before});
                ++count_;
                return true;
            }
            Expect(Differences(PositionFields(position_), before).empty(),
                   "changed by a refused move", move);
            ++refused_;
            Drop(list, move);
        }
        return false;
    }

    void CheckRecord(const PositionFields& before, Move move) {
        const UndoRecord& record = position_.undo[before.ply];
        Expect(record.key == before.state.key && record.pawnKingKey == before.state.pawnKingKey &&
                   record.halfmoveClock == before.state.halfmoveClock &&
                   record.enPassant == before.state.enPassant &&
                   record.castlingRights == before.state.castlingRights &&
                   record.inCheck == before.state.inCheck && record.move.word == move.word,
               "undo record", move);
        Expect(record.movedPiece == before.board[move.From()], "moved piece", move);
        const Piece expected =
            move.Kind() == MoveKind::Castling ? PieceNone : before.board[move.To()];
        Expect(record.capturedPiece == expected, "captured piece", move);
    }

    void TakeBack() {
        const Made made = made_.back();
        made_.pop_back();
        position_.UndoMove(made.move);
        Expect(Differences(PositionFields(position_), made.before).empty(),
               "taken back: " + Differences(PositionFields(position_), made.before), made.move);
    }

    static void Drop(MoveList& list, Move move) {
        MoveList rest;
        for (const Move other : list) {
            if (!SameMove(other, move)) {
                rest.Append(other);
            }
        }
        list = rest;
    }

    void Expect(bool isRight, const std::string& what, Move move) {
        if (!isRight && fault_.empty()) {
            fault_ = what + " at " + FenOf(position_) + " move " + SquareToText(move.From()) +
                     SquareToText(move.To());
        }
    }

    CPosition position_;
    CRandom& random_;
    std::vector<Made> made_;
    std::string fault_;
    std::int64_t count_ = 0;
    std::int64_t refused_ = 0;
};

TEST(RandomGames, FromStandardStartsFollowTheSlowRulesAndComeBackWhole) {
    CRandom random(31);
    const auto& samples = SampleFens();
    std::int64_t made = 0;
    std::int64_t refused = 0;
    const std::int64_t wanted = 600000 / WorkDivisor();
    for (std::size_t game = 0; made < wanted; ++game) {
        CGame one(game % 2 == 0 ? std::string(StartFen) : samples[game / 2 % samples.size()],
                  random);
        one.Play(480);
        ASSERT_EQ(one.Fault(), "");
        made += one.MovesMade();
        refused += one.MovesRefused();
    }
    EXPECT_GE(made, wanted);
    EXPECT_GT(refused, wanted / 100);
}

TEST(RandomGames, FromAllChess960StartsFollowTheSlowRulesAndComeBackWhole) {
    CRandom random(32);
    std::int64_t made = 0;
    const int step = WorkDivisor();
    for (int start = 0; start < 960; start += step) {
        for (int game = 0; game < 3; ++game) {
            CGame one(Chess960StartFen(start), random);
            one.Play(game == 0 ? 480 : 100);
            ASSERT_EQ(one.Fault(), "");
            made += one.MovesMade();
        }
    }
    EXPECT_GE(made, 450000 / step);
}

TEST(RandomGames, StartFromThePublishedNumbering) {
    EXPECT_EQ(Chess960StartFen(518), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w HAha - 0 1");
    EXPECT_EQ(Chess960StartFen(0), "bbqnnrkr/pppppppp/8/8/8/8/PPPPPPPP/BBQNNRKR w HFhf - 0 1");
    EXPECT_EQ(Chess960StartFen(959), "rkrnnqbb/pppppppp/8/8/8/8/PPPPPPPP/RKRNNQBB w CAca - 0 1");
}

TEST(MakeMove, LeavesEveryFieldAsItWasWhenRefused) {
    // Pins, a king next to a king, castling away from a shield, en passant on a pinned rank.
    for (const char* fen :
         {"4r2k/8/8/8/8/8/4B3/4K3 w - - 5 9", "8/8/8/8/8/4k3/8/4K3 w - - 5 9",
          "8/8/8/K2pP2q/8/8/8/4k3 w - d6 0 9", "7k/8/8/8/8/8/8/qR1K1R2 w FB - 3 9",
          "r6k/P7/8/8/8/8/8/K7 w - - 3 9", "4k3/4P3/8/8/b7/8/8/4R2K b - - 0 9"}) {
        CPosition position = FromFen(fen);
        const CPosition before = position;
        MoveList list;
        CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
        for (const Move move : list) {
            SlowPosition slow(before);
            if (slow.Make(move.word)) {
                continue;
            }
            EXPECT_FALSE(position.MakeMove(move)) << fen;
            EXPECT_EQ(Differences(position, before), "") << fen;
            EXPECT_TRUE(HasSameHistory(position, before, before.ply)) << fen;
        }
    }
}

TEST(MakeMove, RefusesEachKindOfMoveThatLeavesTheKingAttacked) {
    const auto refuses = [](const char* fen, const char* text) {
        CPosition position = FromFen(fen);
        const CPosition before = position;
        const Move move = CPositionText::TextToMove(text, position, true);
        EXPECT_FALSE(move.IsNone()) << text;
        EXPECT_FALSE(position.MakeMove(move)) << text;
        EXPECT_EQ(Differences(position, before), "") << text;
    };
    refuses("4r2k/8/8/8/8/8/4B3/4K3 w - - 0 1", "e2d3");    // normal, pinned
    refuses("8/8/8/K2pP2q/8/8/8/4k3 w - d6 0 1", "e5d6");   // both pawns leave the rank
    refuses("6bk/8/8/3pP3/8/8/K7/8 w - d6 0 1", "e5d6");    // the victim was the shield
    refuses("7k/8/8/8/8/8/8/qR1K1R2 w FB - 0 1", "O-O-O");  // castling uncovers the queen
    refuses("7k/KP5r/8/8/8/8/8/8 w - - 0 1", "b7b8q");      // promotion, pinned
    refuses("2r4k/KP5r/8/8/8/8/8/8 w - - 0 1", "b7c8n");    // the same with a capture
    refuses("3r3k/8/8/8/8/8/8/4K3 w - - 0 1", "e1d1");      // the king himself
}

TEST(MakeMove, ADoubleStepWithNoEnemyPawnBesideItLeavesNoEnPassantSquare) {
    CPosition position;
    const std::uint64_t before = position.key;
    const Move move = FindMove(position, "e2e4");
    ASSERT_TRUE(position.MakeMove(move));
    // The published key of this position has the en passant file, which only a capturer brings in.
    EXPECT_EQ(position.enPassant, SquareNone);
    EXPECT_EQ(position.key, before ^ SideKey ^ PieceKey(WhitePawn, E2) ^ PieceKey(WhitePawn, E4));
}

TEST(MakeMove, ADoubleStepBesideAnEnemyPawnKeepsTheSquareItPassed) {
    CPosition position = FromFen("4k3/2p5/8/3P4/5p2/8/4P3/4K3 w - - 0 1");
    ASSERT_TRUE(position.MakeMove(FindMove(position, "e2e4")));
    EXPECT_EQ(position.enPassant, E3);
    ASSERT_TRUE(position.MakeMove(FindMove(position, "c7c5")));
    EXPECT_EQ(position.enPassant, C6);
    EXPECT_EQ(DerivedFaults(position), "");
    ASSERT_TRUE(position.MakeMove(FindMove(position, "e1e2")));
    EXPECT_EQ(position.enPassant, SquareNone);
    EXPECT_EQ(DerivedFaults(position), "");
}

TEST(MakeMove, ADoubleStepAcrossTheEdgeFromAPawnIsNotBesideIt) {
    CPosition position = FromFen("4k3/8/8/8/7p/8/P7/4K3 w - - 0 1");
    ASSERT_TRUE(position.MakeMove(FindMove(position, "a2a4")));
    EXPECT_EQ(position.enPassant, SquareNone);
}

TEST(MakeMove, EnPassantTakesThePawnThatPassedAndRecordsNoCapturedPiece) {
    CPosition position = FromFen("4k3/8/8/8/4Pp2/8/8/4K3 b - e3 0 1");
    const CPosition before = position;
    const Move move = FindMove(position, "f4e3");
    ASSERT_EQ(move.Kind(), MoveKind::EnPassant);
    ASSERT_TRUE(position.MakeMove(move));
    EXPECT_EQ(position.board[E4], PieceNone);
    EXPECT_EQ(position.board[E3], BlackPawn);
    EXPECT_EQ(position.pieceCount[WhitePawn], 0);
    EXPECT_EQ(position.colourCount[White], 1);
    EXPECT_EQ(position.undo[1].capturedPiece, PieceNone);
    EXPECT_EQ(DerivedFaults(position), "");
    position.UndoMove(move);
    EXPECT_EQ(Differences(position, before), "");
}

TEST(MakeMove, SeesTheCheckThatEachKindOfMoveGives) {
    const auto givesCheck = [](const char* fen, const char* text) {
        CPosition position = FromFen(fen);
        EXPECT_TRUE(position.MakeMove(CPositionText::TextToMove(text, position, true))) << text;
        EXPECT_EQ(position.inCheck, SlowPosition(position).IsAnyKingAttacked(position.sideToMove));
        return position.inCheck;
    };
    EXPECT_TRUE(givesCheck("4k3/8/8/8/8/8/8/R5K1 w - - 0 1", "a1a8"));     // directly
    EXPECT_TRUE(givesCheck("4k3/8/8/8/8/4N3/8/4R1K1 w - - 0 1", "e3g2"));  // uncovered
    EXPECT_FALSE(givesCheck("4k3/8/8/8/5N2/8/8/6K1 w - - 0 1", "f4d5"));
    EXPECT_TRUE(givesCheck("4k3/8/8/5N2/8/8/8/6K1 w - - 0 1", "f5g7"));     // by a knight
    EXPECT_TRUE(givesCheck("4k3/8/3P4/8/8/8/8/6K1 w - - 0 1", "d6d7"));     // by a pawn
    EXPECT_TRUE(givesCheck("5k2/8/8/8/8/8/8/4K2R w K - 0 1", "O-O"));       // by castling
    EXPECT_TRUE(givesCheck("6k1/8/8/3pP3/8/8/B7/6K1 w - d6 0 1", "e5d6"));  // victim's line
    EXPECT_FALSE(givesCheck("4k3/4n3/8/3pP3/8/8/4R3/6K1 w - d6 0 1", "e5d6"));
    EXPECT_TRUE(givesCheck("8/2k5/8/3pP3/8/8/8/6K1 w - d6 0 1", "e5d6"));  // by the pawn
    EXPECT_TRUE(givesCheck("4k3/P7/8/8/8/8/8/6K1 w - - 0 1", "a7a8r"));    // promoted
    EXPECT_FALSE(givesCheck("4k3/P7/8/8/8/8/8/6K1 w - - 0 1", "a7a8b"));
}

TEST(MakeMove, EnPassantWithoutAVictimTakesNothing) {
    CPosition position = FromFen("4k3/8/8/4P3/8/8/8/4K3 w - d6 0 1");
    const CPosition before = position;
    const Move move = FindMove(position, "e5d6");
    ASSERT_EQ(move.Kind(), MoveKind::EnPassant);
    ASSERT_TRUE(position.MakeMove(move));
    EXPECT_EQ(DerivedFaults(position), "");
    EXPECT_EQ(position.colourCount[Black], 1);
    position.UndoMove(move);
    EXPECT_EQ(Differences(position, before), "");
}

TEST(MakeMove, ClearsTheClockByPawnMovesAndCapturesOnly) {
    CPosition position = FromFen("4k2r/8/8/8/8/8/4P3/4K2R w Kk - 7 20");
    const auto clockAfter = [&position](const char* text) {
        const Move move = FindMove(position, text);
        EXPECT_TRUE(position.MakeMove(move)) << text;
        const int clock = position.halfmoveClock;
        position.UndoMove(move);
        return clock;
    };
    EXPECT_EQ(clockAfter("e2e3"), 0);
    EXPECT_EQ(clockAfter("h1h8"), 0);
    EXPECT_EQ(clockAfter("h1h2"), 8);
    EXPECT_EQ(clockAfter("e1d1"), 8);
}

TEST(MakeMove, ARookTakenOnItsHomeSquareClearsItsRight) {
    for (const auto& [from, to, expected] :
         {std::tuple("h1", "h8", 0b1010), {"a1", "a8", 0b0101}}) {
        CPosition position = FromFen("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
        ASSERT_TRUE(position.MakeMove(FindMove(position, std::string(from) + to)));
        EXPECT_EQ(position.castlingRights, expected);
        EXPECT_EQ(DerivedFaults(position), "");
    }
}

TEST(MakeMove, AKingMoveClearsBothRightsOfItsSideAndARookMoveItsOwn) {
    const auto rightsAfter = [](const char* side, const char* text) {
        CPosition position =
            FromFen("r3k2r/p6p/8/8/8/8/P6P/R3K2R " + std::string(side) + " KQkq - 0 1");
        EXPECT_TRUE(position.MakeMove(FindMove(position, text)));
        EXPECT_EQ(DerivedFaults(position), "");
        return static_cast<int>(position.castlingRights);
    };
    EXPECT_EQ(rightsAfter("w", "e1e2"), 0b1100);
    EXPECT_EQ(rightsAfter("w", "e1g1"), 0b1100);
    EXPECT_EQ(rightsAfter("w", "h1g1"), 0b1110);
    EXPECT_EQ(rightsAfter("w", "a1b1"), 0b1101);
    EXPECT_EQ(rightsAfter("b", "e8e7"), 0b0011);
    EXPECT_EQ(rightsAfter("b", "e8c8"), 0b0011);
    EXPECT_EQ(rightsAfter("b", "h8g8"), 0b1011);
    EXPECT_EQ(rightsAfter("b", "a8b8"), 0b0111);
    EXPECT_EQ(rightsAfter("w", "h2h3"), 0b1111);
}

TEST(MakeMove, ASecondLetterForOneSideReplacesTheRightWhoseFirstRookStillGuardsIt) {
    // Both rooks are named for the king's side; the record is the last one's, and a move of either
    // rook ends the right.
    const CPosition position = FromFen("4k3/8/8/8/8/8/8/4K1RR w HG - 0 1");
    EXPECT_EQ(position.castling[WhiteKingSide].rookFrom, G1);
    EXPECT_EQ(position.castlingRights, 1);
    for (const char* text : {"h1h2", "g1g2"}) {
        CPosition copy = position;
        ASSERT_TRUE(copy.MakeMove(FindMove(copy, text)));
        EXPECT_EQ(copy.castlingRights, 0) << text;
    }
}

/// Castles from a position and compares with the expected one, then takes back.
void ExpectCastling(const char* fen, const char* text, const char* expected) {
    CPosition position = FromFen(fen);
    const CPosition before = position;
    const Move move = CPositionText::TextToMove(text, position, true);
    ASSERT_EQ(move.Kind(), MoveKind::Castling) << fen;
    ASSERT_TRUE(position.MakeMove(move)) << fen;
    EXPECT_EQ(FenOf(position), expected);
    EXPECT_EQ(DerivedFaults(position), "") << fen;
    EXPECT_EQ(position.undo[before.ply].capturedPiece, PieceNone);
    EXPECT_EQ(position.halfmoveClock, before.halfmoveClock + 1);
    position.UndoMove(move);
    EXPECT_EQ(Differences(position, before), "") << fen;
}

TEST(Chess960Castling, WithTheKingOnItsTargetMovesTheRookAlone) {
    ExpectCastling("7k/8/8/8/8/8/8/6KR w H - 4 9", "O-O", "7k/8/8/8/8/8/8/5RK1 b - - 5 9");
    ExpectCastling("1rk5/8/8/8/8/8/8/7K b b - 4 9", "O-O-O", "2kr4/8/8/8/8/8/8/7K w - - 5 9");
    CPosition position = FromFen("7k/8/8/8/8/8/8/6KR w H - 4 9");
    const Bitboard king = position.pieces[WhiteKing];
    ASSERT_TRUE(position.MakeMove(CPositionText::TextToMove("O-O", position, true)));
    EXPECT_EQ(position.pieces[WhiteKing], king);
    EXPECT_EQ(position.board[G1], WhiteKing);
    EXPECT_EQ(position.board[F1], WhiteRook);
    EXPECT_EQ(position.board[H1], PieceNone);
}

TEST(Chess960Castling, WithTheKingLandingOnItsRookKeepsTheSquareOccupied) {
    ExpectCastling("7k/8/8/8/8/8/8/5KR1 w G - 4 9", "O-O", "7k/8/8/8/8/8/8/5RK1 b - - 5 9");
    ExpectCastling("7k/8/8/8/8/8/8/2RK4 w C - 4 9", "O-O-O", "7k/8/8/8/8/8/8/2KR4 b - - 5 9");
    ExpectCastling("4k1r1/8/8/8/8/8/8/7K b g - 4 9", "O-O", "5rk1/8/8/8/8/8/8/7K w - - 5 9");
    ExpectCastling("2r1k3/8/8/8/8/8/8/7K b c - 4 9", "O-O-O", "2kr4/8/8/8/8/8/8/7K w - - 5 9");
}

TEST(Chess960Castling, WithTheRookOnItsTargetMovesTheKingAlone) {
    ExpectCastling("7k/8/8/8/8/8/8/4KR2 w F - 4 9", "O-O", "7k/8/8/8/8/8/8/5RK1 b - - 5 9");
    ExpectCastling("3rk3/8/8/8/8/8/8/7K b d - 4 9", "O-O-O", "2kr4/8/8/8/8/8/8/7K w - - 5 9");
}

TEST(Chess960Castling, WithDistantMenCrossesTheBoard) {
    ExpectCastling("7k/8/8/8/8/8/8/RK5R w HA - 4 9", "O-O", "7k/8/8/8/8/8/8/R4RK1 b - - 5 9");
    ExpectCastling("7k/8/8/8/8/8/8/R5KR w HA - 4 9", "O-O-O", "7k/8/8/8/8/8/8/2KR3R b - - 5 9");
    ExpectCastling("7k/8/8/8/8/8/8/RK6 w A - 4 9", "O-O-O", "7k/8/8/8/8/8/8/2KR4 b - - 5 9");
}

TEST(UndoMove, DoesNothingBeforeTheFirstMove) {
    for (const char* fen : {"", "4k3/8/8/8/8/8/4P3/4K3 w - - 3 40"}) {
        CPosition position = FromFen(fen);
        const CPosition before = position;
        position.UndoMove(FindMove(position, "e2e4"));
        EXPECT_EQ(Differences(position, before), "");
    }
}

TEST(UndoStack, RefusesEveryMoveWhenItIsFull) {
    CPosition position = FromFen("4k3/8/8/8/8/8/8/4K2R w K - 0 250");
    EXPECT_EQ(position.ply, 498);
    std::vector<Move> made;
    for (const char* text : {"e1g1", "e8e7"}) {
        made.push_back(FindMove(position, text));
        ASSERT_TRUE(position.MakeMove(made.back()));
    }
    const CPosition full = position;
    EXPECT_EQ(position.ply, 500);
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    ASSERT_GT(list.count, 0);
    for (const Move move : list) {
        EXPECT_FALSE(position.MakeMove(move));
        EXPECT_EQ(Differences(position, full), "");
    }
    for (; !made.empty(); made.pop_back()) {
        position.UndoMove(made.back());
    }
    EXPECT_EQ(Differences(position, FromFen("4k3/8/8/8/8/8/8/4K2R w K - 0 250")), "");
}

TEST(UndoStack, KeepsTheRecordsOfTheGameBeforeBelowANewPosition) {
    CPosition position;
    ASSERT_TRUE(position.MakeMove(FindMove(position, "e2e4")));
    const UndoRecord record = position.undo[1];
    CPositionText(position).SetFen("4k3/8/8/8/8/8/8/4K3 w - - 0 40");
    EXPECT_EQ(position.ply, 78);
    EXPECT_EQ(position.undo[1].key, record.key);
    EXPECT_EQ(position.undo[1].move.word, record.move.word);
}

TEST(UndoStack, BeginsWithFreshRecords) {
    const CPosition position;
    for (const UndoRecord& record : position.undo) {
        EXPECT_EQ(record.halfmoveClock, 0);
        EXPECT_EQ(record.enPassant, SquareNone);
        EXPECT_EQ(record.castlingRights, 0);
        EXPECT_EQ(record.key, 0U);
        EXPECT_EQ(record.pawnKingKey, 0U);
        EXPECT_EQ(record.movedPiece, PieceNone);
        EXPECT_EQ(record.capturedPiece, PieceNone);
        EXPECT_FALSE(record.inCheck);
        EXPECT_TRUE(record.move.IsNone());
    }
}

TEST(NullMove, PassesTheTurnAndComesBackExceptForTheEnPassantKey) {
    CPosition position = FromFen("4k3/8/8/3pP3/8/8/8/R3K3 w Q d6 6 9");
    const CPosition before = position;
    position.MakeNullMove();
    EXPECT_EQ(position.sideToMove, Black);
    EXPECT_EQ(position.enPassant, SquareNone);
    EXPECT_EQ(position.halfmoveClock, 0);
    EXPECT_EQ(position.ply, before.ply + 1);
    EXPECT_EQ(position.key, before.key ^ SideKey ^ EnPassantKey(D6));
    EXPECT_EQ(position.castlingRights, before.castlingRights);
    EXPECT_EQ(DerivedFaults(position), "");
    position.UndoNullMove();
    EXPECT_EQ(position.key, before.key ^ EnPassantKey(D6));
    EXPECT_EQ(position.enPassant, D6);
    position.key = before.key;
    EXPECT_EQ(Differences(position, before), "");
}

TEST(NullMove, LosesTheEnPassantKeyUntilTheMoveBeforeIsTakenBack) {
    CPosition position = FromFen("4k3/3p4/8/4P3/8/8/8/4K3 b - - 0 9");
    const CPosition before = position;
    const Move move = FindMove(position, "d7d5");
    ASSERT_TRUE(position.MakeMove(move));
    const std::uint64_t key = position.key;
    position.MakeNullMove();
    position.UndoNullMove();
    EXPECT_EQ(position.key, key ^ EnPassantKey(D6));
    position.MakeNullMove();  // the second one takes the number out of the key again
    EXPECT_EQ(position.key, key ^ SideKey);
    position.UndoNullMove();
    EXPECT_EQ(position.key, key);
    position.MakeNullMove();
    position.UndoNullMove();
    const Move answer = FindMove(position, "e1e2");
    ASSERT_TRUE(position.MakeMove(answer));
    position.UndoMove(answer);
    EXPECT_EQ(position.key, key ^ EnPassantKey(D6));
    position.UndoMove(move);
    EXPECT_EQ(Differences(position, before), "");
}

TEST(MakeMove, LeavesItsRecordWhenItRefusesAMove) {
    // The rook on e2 is pinned. Its record is stale, but the walk for repetitions of a position
    // that is set up further on in the game goes over it.
    CPosition position = FromFen("4r2k/8/8/8/8/8/4R3/4K3 w - - 7 30");
    const std::int32_t ply = position.ply;
    ASSERT_FALSE(position.MakeMove(Move::Make(E2, D2)));
    EXPECT_EQ(position.ply, ply);
    EXPECT_EQ(position.undo[ply].key, position.key);
    EXPECT_EQ(position.undo[ply].halfmoveClock, 7);
    EXPECT_EQ(position.undo[ply].movedPiece, WhiteRook);
}

/// In check: what is refused at once `MakeMove` refuses as well, and both leave the same record.
/// Returns how many moves were refused at once.
int ExpectGlancesAsMakes(const CPosition& position) {
    int ignoring = 0;
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    for (const Move move : list) {
        CPosition glanced = position;
        const bool ignoresCheck = glanced.RefuseAtOnce(move);
        EXPECT_EQ(Differences(glanced, position), "") << FenOf(position);
        if (ignoresCheck) {
            ++ignoring;
            CPosition refused = position;
            EXPECT_FALSE(refused.MakeMove(move)) << FenOf(position);
            EXPECT_TRUE(HasSameHistory(glanced, refused, position.ply + 1)) << FenOf(position);
        } else {
            EXPECT_TRUE(HasSameHistory(glanced, position, position.ply + 1)) << FenOf(position);
        }
    }
    return ignoring;
}

TEST(MakeMove, IsForeseenForMovesThatIgnoreACheck) {
    int ignoring = 0;
    for (const CPosition& position : RandomPositions(2000 / WorkDivisor(), 97)) {
        ignoring += position.inCheck ? ExpectGlancesAsMakes(position) : 0;
    }
    EXPECT_GT(ignoring, 1000 / WorkDivisor());
    // The rook answers on e2 only, the king must be looked at, and in a double check only he moves.
    EXPECT_EQ(ExpectGlancesAsMakes(FromFen("4r2k/8/8/8/8/8/R7/4K3 w - - 0 1")), 13);
    EXPECT_EQ(ExpectGlancesAsMakes(FromFen("4r2k/8/8/8/7b/8/R7/4K3 w - - 0 1")), 14);
    // Where the general tests decide, and on a full undo stack, nothing is foreseen.
    EXPECT_EQ(ExpectGlancesAsMakes(FromFen("4r2k/8/8/8/8/8/R6K/4K3 w - - 0 1")), 0);
    CPosition full = FromFen("4r2k/8/8/8/8/8/R7/4K3 w - - 0 250");
    full.ply = CPosition::UndoCapacity;
    EXPECT_FALSE(full.RefuseAtOnce(Move::Make(A2, A3)));
}

TEST(MakeMove, AnswersChecksWhateverTheFullMoveNumberIs) {
    // What answers a check is noted by ply, and a set-up position can be at any ply.
    for (const char* number : {"1", "128", "240", "250", "251", "257", "2000000000"}) {
        CPosition position = FromFen("4r2k/8/8/8/8/8/3P1P2/3RKR2 w - - 7 " + std::string(number));
        ASSERT_TRUE(position.inCheck);
        EXPECT_EQ(position.EvasionTargets(), FileMasks[4] & ~BitOf(E1));
        EXPECT_FALSE(position.MakeMove(Move::Make(D2, D3)));
        EXPECT_FALSE(position.MakeMove(Move::Make(E1, E2)));
    }
}

/// Every move of the list is accepted as MakeMove accepts it, stands on the board, and comes back.
void ExpectLeavesAsMoves(CPosition& position) {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    const PositionFields before(position);
    for (const Move move : list) {
        CPosition played = position;
        const bool isLegal = played.MakeMove(move);
        ASSERT_EQ(position.MakeLeaf(move), isLegal) << FenOf(played) << ' ' << move.word;
        if (isLegal) {
            ASSERT_EQ(position.board, played.board) << FenOf(played);
            ASSERT_EQ(position.pieces, played.pieces) << FenOf(played);
            ASSERT_EQ(position.colours, played.colours) << FenOf(played);
            position.UndoLeaf(move);
        }
        ASSERT_EQ(Differences(PositionFields(position), before), "") << move.word;
    }
}

TEST(MakeLeaf, AcceptsAndMovesTheMenAsMakeMoveDoes) {
    for (CPosition& position : RandomPositions(std::max(100, 2000 / WorkDivisor()), 35)) {
        ExpectLeavesAsMoves(position);
    }
}

TEST(MakeLeaf, AcceptsAndMovesTheMenAsMakeMoveDoesOnLawlessPositions) {
    CRandom random(36);
    for (int i = 0; i < std::max(100, 1000 / WorkDivisor()); ++i) {
        CPosition position = FromFen(LawlessFen(random));
        ExpectLeavesAsMoves(position);
    }
}

TEST(NullMove, WithoutAnEnPassantSquareComesBackWhole) {
    CPosition position = FromFen("4k3/8/8/8/8/8/8/R3K3 w Q - 17 9");
    const CPosition before = position;
    position.MakeNullMove();
    EXPECT_EQ(position.key, before.key ^ SideKey);
    EXPECT_EQ(position.undo[16].halfmoveClock, 17);
    position.UndoNullMove();
    EXPECT_EQ(Differences(position, before), "");
}

TEST(NullMove, LeavesTheSavedKeysCheckAndMoveOfItsRecordStale) {
    CPosition position = FromFen("4k3/8/8/8/8/8/4P3/4K3 w - - 3 9");
    UndoRecord& record = position.undo[position.ply];
    record.key = 0x1234;
    record.pawnKingKey = 0x5678;
    record.inCheck = true;
    record.move = Move::Make(A1, A2);
    record.movedPiece = WhiteRook;
    record.capturedPiece = BlackRook;
    position.MakeNullMove();
    EXPECT_EQ(record.key, 0x1234U);
    EXPECT_EQ(record.pawnKingKey, 0x5678U);
    EXPECT_TRUE(record.inCheck);
    EXPECT_EQ(record.move.word, Move::Make(A1, A2).word);
    EXPECT_EQ(record.movedPiece, PieceNone);
    EXPECT_EQ(record.capturedPiece, PieceNone);
    EXPECT_EQ(record.halfmoveClock, 3);
    EXPECT_EQ(record.castlingRights, 0);
    EXPECT_EQ(record.enPassant, SquareNone);
}

TEST(NullMove, BetweenMovesOfARandomGameComesBack) {
    CRandom random(33);
    for (CPosition& position : RandomPositions(500, 34)) {
        if (position.inCheck) {
            continue;
        }
        const CPosition before = position;
        position.MakeNullMove();
        ASSERT_EQ(DerivedFaults(position), "");
        MoveList list;
        CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
        const CPosition passed = position;
        for (const Move move : list) {
            SlowPosition slow(position);
            const bool isLegal = slow.Make(move.word);
            ASSERT_EQ(position.MakeMove(move), isLegal) << FenOf(before);
            if (isLegal) {
                ASSERT_EQ(Disagreements(position, slow), "") << FenOf(before);
                position.UndoMove(move);
            }
            ASSERT_EQ(Differences(position, passed), "");
        }
        position.UndoNullMove();
        position.key = before.key;
        ASSERT_EQ(Differences(position, before), "");
    }
}

TEST(CopyFrom, TakesThePositionWithoutItsHistory) {
    for (CPosition& position : RandomPositions(300, 35)) {
        CPosition copy = FromFen("4k3/8/8/8/8/8/8/4K3 b - - 9 9");
        const CPosition before = copy;
        copy.CopyFrom(position);
        EXPECT_EQ(DerivedFaults(copy), "");
        EXPECT_TRUE(HasSameHistory(copy, before, 500));
        EXPECT_EQ(copy.board, position.board);
        EXPECT_EQ(copy.ply, position.ply);
        EXPECT_EQ(copy.sideToMove, position.sideToMove);
        EXPECT_EQ(copy.halfmoveClock, position.halfmoveClock);
        EXPECT_EQ(copy.enPassant, position.enPassant);
        EXPECT_EQ(copy.inCheck, position.inCheck);
        EXPECT_EQ(copy.castlingRights, position.castlingRights);
        // Nothing of the source's game can be taken back from the copy.
        const CPosition fresh = copy;
        copy.UndoMove(Move::Make(E2, E4));
        EXPECT_EQ(Differences(copy, fresh), "");
    }
}

TEST(CopyFrom, FindsTheRightsAfreshFromTheOutermostRooks) {
    const CPosition position = FromFen("4k3/8/8/8/8/8/8/RR2K1RR w GB - 0 1");
    EXPECT_EQ(position.castling[WhiteKingSide].rookFrom, G1);
    EXPECT_EQ(position.castling[WhiteQueenSide].rookFrom, B1);
    CPosition copy;
    copy.CopyFrom(position);
    EXPECT_EQ(copy.castling[WhiteKingSide].rookFrom, H1);
    EXPECT_EQ(copy.castling[WhiteQueenSide].rookFrom, A1);
    EXPECT_EQ(copy.castlingRights, 3);
    EXPECT_EQ(FenOf(copy), FenOf(position));  // the letters stay as they were read
    CPosition whole = position;               // plain assignment keeps the rooks
    EXPECT_EQ(Differences(whole, position), "");
}

TEST(LikelyKey, IsTheKeyAfterAPlainMove) {
    int compared = 0;
    int lostRights = 0;
    int lostSquares = 0;
    for (CPosition& position : RandomPositions(1200, 37)) {
        for (const std::uint32_t word : GeneratedWords(position, MoveKinds::All)) {
            const Move move{word};
            const std::uint64_t likely = position.LikelyKeyAfter(move);
            const PositionFields before(position);
            if (move.Kind() != MoveKind::Normal || !position.MakeMove(move)) {
                continue;
            }
            if (position.enPassant == SquareNone) {
                ASSERT_EQ(likely, position.key) << FenOf(position);
                ++compared;
                lostRights += before.state.castlingRights != position.castlingRights ? 1 : 0;
                lostSquares += before.state.enPassant != SquareNone ? 1 : 0;
            }
            position.UndoMove(move);
        }
    }
    EXPECT_GT(compared, 2000);
    EXPECT_GT(lostRights, 50);
    EXPECT_GT(lostSquares, 10);
}

TEST(AttackTests, AgreeWithTheSlowRulesOnEverySquare) {
    for (const CPosition& position : RandomPositions(400, 36)) {
        const SlowPosition slow(position);
        for (const Colour by : {Black, White}) {
            for (int square = 0; square < 64; ++square) {
                ASSERT_EQ(position.IsSquareAttacked(square, by), slow.IsSquareAttacked(square, by))
                    << FenOf(position) << ' ' << SquareToText(square);
            }
            ASSERT_EQ(position.IsKingAttacked(by), slow.IsAnyKingAttacked(by));
        }
    }
}

TEST(CastlingRights, HaveTheirRecordsAndMasks) {
    const CPosition position = FromFen("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
    const CastlingRecord& king = position.castling[WhiteKingSide];
    EXPECT_EQ(king.kingFrom, E1);
    EXPECT_EQ(king.kingTo, G1);
    EXPECT_EQ(king.rookFrom, H1);
    EXPECT_EQ(king.rookTo, F1);
    EXPECT_EQ(king.kingPath, BitOf(F1) | BitOf(G1));
    EXPECT_EQ(king.emptyMask, BitOf(F1) | BitOf(G1));
    const CastlingRecord& queen = position.castling[BlackQueenSide];
    EXPECT_EQ(queen.kingFrom, E8);
    EXPECT_EQ(queen.kingTo, C8);
    EXPECT_EQ(queen.rookFrom, A8);
    EXPECT_EQ(queen.rookTo, D8);
    EXPECT_EQ(queen.kingPath, BitOf(D8) | BitOf(C8));
    EXPECT_EQ(queen.emptyMask, BitOf(B8) | BitOf(C8) | BitOf(D8));
    for (int square = 0; square < 64; ++square) {
        const int expected = square == A1 ? 13
                           : square == E1 ? 12
                           : square == H1 ? 14
                           : square == A8 ? 7
                           : square == E8 ? 3
                           : square == H8 ? 11
                                          : 15;
        EXPECT_EQ(position.rightsMask[square], expected) << SquareToText(square);
    }
    const CastlingRecord fresh = FromFen("8/8/8/8/8/8/8/8 w KQkq - 0 1").castling[0];
    EXPECT_EQ(fresh.kingFrom, SquareNone);
    EXPECT_EQ(fresh.kingTo, SquareNone);
    EXPECT_EQ(fresh.rookFrom, SquareNone);
    EXPECT_EQ(fresh.rookTo, SquareNone);
    EXPECT_EQ(fresh.emptyMask | fresh.kingPath, 0U);
    EXPECT_EQ(fresh.letter, 0);
}

TEST(Clear, EmptiesEverythingButTheUndoStack) {
    CPosition position = FromFen("r3k2r/8/8/8/3pP3/8/8/R3K2R b KQkq e3 5 20");
    ASSERT_TRUE(position.MakeMove(FindMove(position, "d4e3")));
    const CPosition before = position;
    position.Clear();
    EXPECT_EQ(DerivedFaults(position), "key ");  // the number of the side alone is missing
    EXPECT_EQ(position.key, 0U);
    EXPECT_EQ(position.pawnKingKey, 0U);
    EXPECT_EQ(position.ply, 1);
    EXPECT_EQ(position.sideToMove, White);
    EXPECT_EQ(position.halfmoveClock, 0);
    EXPECT_EQ(position.enPassant, SquareNone);
    EXPECT_EQ(position.castlingRights, 0);
    EXPECT_FALSE(position.inCheck);
    for (int square = 0; square < 64; ++square) {
        EXPECT_EQ(position.board[square], PieceNone);
        EXPECT_EQ(position.rightsMask[square], 15);
    }
    for (const CastlingRecord& record : position.castling) {
        EXPECT_EQ(record.kingFrom, SquareNone);
        EXPECT_EQ(record.letter, 0);
    }
    EXPECT_TRUE(HasSameHistory(position, before, 500));
}

TEST(ForgetHistory, KeepsWhatRepetitionAndTheFiftyMoveRuleNeed) {
    CPosition position;
    const std::array<const char*, 4> cycle = {"g1f3", "g8f6", "f3g1", "f6g8"};
    for (std::size_t i = 0; i < 200; ++i) {
        ASSERT_TRUE(position.MakeMove(CPositionText::TextToMove(cycle[i % 4], position, false)));
    }
    const CPosition before = position;
    const std::int32_t forgotten = position.ForgetHistory();
    EXPECT_GT(forgotten, 0);
    EXPECT_EQ(forgotten % 2, 0);
    EXPECT_EQ(position.ply, before.ply - forgotten);
    EXPECT_GE(position.ply, 100);
    EXPECT_EQ(position.key, before.key);
    for (std::int32_t i = 0; i < position.ply; ++i) {
        EXPECT_EQ(position.undo[i].key, before.undo[i + forgotten].key) << i;
    }
    for (std::int32_t i = 0; i < 100; ++i) {
        position.UndoMove(position.undo[position.ply - 1].move);
    }
    EXPECT_EQ(position.halfmoveClock, 100);
}

TEST(ForgetHistory, PositionBeyondTheStackHasRoomAgain) {
    CPosition position;
    CPositionText(position).SetFen("4k3/8/8/8/8/8/4P3/4K3 b - - 7 5000");
    EXPECT_FALSE(position.MakeMove(Move::Make(E8, E7)));
    EXPECT_GT(position.ForgetHistory(), 0);
    EXPECT_TRUE(position.MakeMove(Move::Make(E8, E7)));
    position.UndoMove(Move::Make(E8, E7));
    EXPECT_EQ(position.ForgetHistory(), 0) << "what is left is needed";
}

}  // namespace
}  // namespace brenquil
