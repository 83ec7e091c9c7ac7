// FEN and moves as text.

#include "board_checks.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

/// What `GetFen` makes of a text that was set up.
std::string Reread(std::string_view text) {
    return FenOf(FromFen(text));
}

TEST(SetFen, OfAnEmptyTextIsTheStartPosition) {
    EXPECT_EQ(Reread(""), StartFen);
    EXPECT_EQ(FenOf(CPosition()), StartFen);
    EXPECT_EQ(Differences(CPosition(), FromFen("")), "");
    EXPECT_EQ(Reread("   "), "8/8/8/8/8/8/8/8 w - - 0 1");  // blanks are a text without fields
}

TEST(SetFen, AcceptsABoardWithoutKings) {
    const CPosition position = FromFen("8/8/8/8/8/8/8/8 w - - 0 1");
    EXPECT_EQ(position.MenCount(), 0);
    EXPECT_FALSE(position.inCheck);
    EXPECT_EQ(FenOf(position), "8/8/8/8/8/8/8/8 w - - 0 1");
}

TEST(SetFen, ReadsTheSameRightsFromLettersOfSidesAndOfFiles) {
    const CPosition sides = FromFen("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
    const CPosition files = FromFen("r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1");
    EXPECT_EQ(sides.castlingRights, 15);
    EXPECT_EQ(files.castlingRights, 15);
    EXPECT_EQ(sides.key, files.key);
    for (std::size_t index = 0; index < 4; ++index) {
        EXPECT_EQ(sides.castling[index].rookFrom, files.castling[index].rookFrom);
        EXPECT_EQ(sides.castling[index].emptyMask, files.castling[index].emptyMask);
        EXPECT_EQ(sides.castling[index].kingPath, files.castling[index].kingPath);
    }
    EXPECT_EQ(FenOf(sides), "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
    EXPECT_EQ(FenOf(files), "r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1");
    EXPECT_EQ(Reread("r3k2r/8/8/8/8/8/8/R3K2R w qkQK - 0 1"), FenOf(sides));
    EXPECT_EQ(Reread("r3k2r/8/8/8/8/8/8/R3K2R w Kaq? - 0 1"), "r3k2r/8/8/8/8/8/8/R3K2R w Kq - 0 1");
}

TEST(SetFen, DropsARightWithoutItsMen) {
    EXPECT_EQ(Reread("4k3/8/8/8/8/8/8/4K2R w Q - 0 1"), "4k3/8/8/8/8/8/8/4K2R w - - 0 1");
    EXPECT_EQ(Reread("4k3/8/8/8/8/8/4K3/R6R w KQ - 0 1"), "4k3/8/8/8/8/8/4K3/R6R w - - 0 1");
    EXPECT_EQ(Reread("r3k2r/8/8/8/8/8/8/4K3 w KQkq - 0 1"), "r3k2r/8/8/8/8/8/8/4K3 w kq - 0 1");
    EXPECT_EQ(Reread("4k3/8/8/8/8/8/8/4K2r w K - 0 1"), "4k3/8/8/8/8/8/8/4K2r w - - 0 1");
    // A file letter asks for a rook of its colour on that square.
    EXPECT_EQ(Reread("4k3/8/8/8/8/8/8/4K2R w GE - 0 1"), "4k3/8/8/8/8/8/8/4K2R w - - 0 1");
    EXPECT_EQ(Reread("4k2R/8/8/8/8/8/8/4K2r w Hh - 0 1"), "4k2R/8/8/8/8/8/8/4K2r w - - 0 1");
    EXPECT_EQ(Reread("4k3/8/8/8/8/8/4K3/7R w H - 0 1"), "4k3/8/8/8/8/8/4K3/7R w - - 0 1");
}

TEST(SetFen, TakesTheOutermostRooksForLettersOfSidesAndInnerOnesByFile) {
    const CPosition outer = FromFen("rr2k1rr/8/8/8/8/8/8/RR2K1RR w KQkq - 0 1");
    EXPECT_EQ(outer.castling[WhiteKingSide].rookFrom, H1);
    EXPECT_EQ(outer.castling[WhiteQueenSide].rookFrom, A1);
    EXPECT_EQ(outer.castling[BlackKingSide].rookFrom, H8);
    EXPECT_EQ(outer.castling[BlackQueenSide].rookFrom, A8);
    const CPosition inner = FromFen("rr2k1rr/8/8/8/8/8/8/RR2K1RR w GBgb - 0 1");
    EXPECT_EQ(inner.castling[WhiteKingSide].rookFrom, G1);
    EXPECT_EQ(inner.castling[WhiteQueenSide].rookFrom, B1);
    EXPECT_EQ(inner.castling[BlackKingSide].rookFrom, G8);
    EXPECT_EQ(inner.castling[BlackQueenSide].rookFrom, B8);
}

TEST(SetFen, TakesTheFirstOfTwoKingsOnARank) {
    const CPosition position = FromFen("8/8/8/8/8/8/8/R2K2KR w KQ - 0 1");
    EXPECT_EQ(position.castling[WhiteKingSide].kingFrom, D1);
    EXPECT_EQ(position.castling[WhiteQueenSide].kingFrom, D1);
    EXPECT_EQ(Reread("8/8/8/8/8/8/8/K1R1K3 w K - 0 1"), "8/8/8/8/8/8/8/K1R1K3 w K - 0 1");
    EXPECT_EQ(Reread("8/8/8/8/8/8/8/K1R1K3 w Q - 0 1"), "8/8/8/8/8/8/8/K1R1K3 w - - 0 1");
    // A black king below the last rank is the first on the board, and castles with nobody.
    EXPECT_EQ(Reread("4k2r/8/8/3k4/8/8/8/8 b k - 0 1"), "4k2r/8/8/3k4/8/8/8/8 b - - 0 1");
}

TEST(SetFen, DropsAnEnPassantSquareThatNoPawnCanUse) {
    EXPECT_EQ(Reread("4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1"), "4k3/8/8/8/4P3/8/8/4K3 b - - 0 1");
    EXPECT_EQ(Reread("4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1"), "4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1");
    EXPECT_EQ(Reread("4k3/8/8/8/4Pp2/8/8/4K3 b - e3 0 1"), "4k3/8/8/8/4Pp2/8/8/4K3 b - e3 0 1");
    EXPECT_EQ(Reread("4k3/8/8/8/3PpP2/8/8/4K3 w - e3 0 1"), "4k3/8/8/8/3PpP2/8/8/4K3 w - - 0 1");
}

TEST(SetFen, ReadsAnEnPassantSquareOnlyFromTwoFittingCharacters) {
    const std::string board = "4k3/8/8/3pP3/8/8/8/4K3 w - ";
    EXPECT_EQ(FromFen(board + "d6").enPassant, D6);
    for (const char* text : {"D6", "d9", "i6", "d", "d66", "6d", "d0", "-"}) {
        EXPECT_EQ(FromFen(board + text).enPassant, SquareNone) << text;
    }
}

TEST(SetFen, ReadsTheFullMoveNumberWhateverTheSide) {
    const auto plyAndFen = [](const std::string& fields) {
        const CPosition position = FromFen("4k3/8/8/8/8/8/8/4K3 " + fields);
        const std::string fen = FenOf(position);
        return std::pair(position.ply, fen.substr(fen.rfind(' ') + 1));
    };
    EXPECT_EQ(plyAndFen("b - - 0 1"), std::pair(1, std::string("1")));
    EXPECT_EQ(plyAndFen("w - - 0 40"), std::pair(78, std::string("40")));
    EXPECT_EQ(plyAndFen("b - - 0 40"), std::pair(78, std::string("40")));
    EXPECT_EQ(plyAndFen("w - - 0 2"), std::pair(2, std::string("2")));
    for (const char* text : {"w - - 0 0", "w - - 0 -8", "w - - 0 x", "w - - 0 4x", "w - - 0"}) {
        EXPECT_EQ(plyAndFen(text), std::pair(1, std::string("1"))) << text;
    }
    EXPECT_EQ(plyAndFen("w - - 0 12.7").first, 22);
    EXPECT_EQ(plyAndFen("w - - 0 100000").second, "100000");
}

TEST(SetFen, ReadsTheClockAsALeadingNumberOfAllowedCharacters) {
    const auto clock = [](const std::string& text) {
        return FromFen("4k3/8/8/8/8/8/8/4K3 w - - " + text + " 1").halfmoveClock;
    };
    EXPECT_EQ(clock("17"), 17);
    EXPECT_EQ(clock("-17"), -17);
    EXPECT_EQ(clock("17.9"), 17);
    EXPECT_EQ(clock("1-7"), 1);
    EXPECT_EQ(clock("-"), 0);
    EXPECT_EQ(clock("."), 0);
    EXPECT_EQ(clock("17a"), 0);
    EXPECT_EQ(clock("+17"), 0);
}

TEST(SetFen, TakesDefaultsForMissingFields) {
    const CPosition position = FromFen("r3k2r/8/8/3pP3/8/8/8/R3K2R");
    EXPECT_EQ(position.sideToMove, White);
    EXPECT_EQ(position.castlingRights, 0);
    EXPECT_EQ(position.enPassant, SquareNone);
    EXPECT_EQ(position.halfmoveClock, 0);
    EXPECT_EQ(position.ply, 1);
}

TEST(SetFen, CountsARunOfBlanksAsOneAndIgnoresAllAfterTheSixthField) {
    EXPECT_EQ(Reread("  4k3/8/8/8/8/8/8/4K3   b  -   - 3    7  more of it "),
              "4k3/8/8/8/8/8/8/4K3 b - - 3 7");
}

TEST(SetFen, GivesTheMoveToWhiteUnlessTheFieldIsExactlyASmallB) {
    for (const char* side : {"w", "B", "black", "bb", "x", "-"}) {
        EXPECT_EQ(FromFen("4k3/8/8/8/8/8/8/4K3 " + std::string(side) + " - - 0 1").sideToMove,
                  White);
    }
    EXPECT_EQ(FromFen("4k3/8/8/8/8/8/8/4K3 b - - 0 1").sideToMove, Black);
}

TEST(SetFen, SkipsOtherCharactersOfARowWithoutAdvancing) {
    EXPECT_EQ(Reread("4xk0!93/8/8/8/8/8/8/4K3 w - - 0 1"), "4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(Reread("44k/8"), "8/8/8/8/8/8/8/8 w - - 0 1");  // nothing is written past h8
}

TEST(SetFen, LetsALongRowRunOnAndLaterRowsOverwrite) {
    // Nine men of the second row: the ninth falls on the first square of the rank above it.
    EXPECT_EQ(Reread("8/8/8/8/8/8/8/8/QQ6/k7"), "8/8/8/8/8/8/8/kQ6 w - - 0 1");
    EXPECT_EQ(Reread("8/rrrrrrrrr"), "r7/rrrrrrrr/8/8/8/8/8/8 w - - 0 1");
    EXPECT_EQ(Reread("4k3//8/4K3"), "4k3/8/4K3/8/8/8/8/8 w - - 0 1");  // an empty row is no row
    EXPECT_EQ(Reread("QQQQQQQQQQQQQQQQ w"), "QQQQQQQQ/8/8/8/8/8/8/8 w - - 0 1");
}

TEST(SetFen, ReplacesWhateverWasThere) {
    CPosition position = FromFen("r3k2r/p6p/8/3pP3/8/8/8/R3K2R w KQkq d6 20 30");
    CPositionText(position).SetFen("4k3/8/8/8/8/8/8/4K3 b - - 0 1");
    EXPECT_EQ(Differences(position, FromFen("4k3/8/8/8/8/8/8/4K3 b - - 0 1")), "");
}

TEST(GetFen, GivesBackEveryPositionOfRandomGames) {
    for (const CPosition& position : RandomPositions(500, 71)) {
        const std::string fen = FenOf(position);
        EXPECT_EQ(Reread(fen), fen);
        EXPECT_EQ(FromFen(fen).key, position.key) << fen;
        EXPECT_EQ(SlowPosition(FromFen(fen)).board, SlowPosition(position).board) << fen;
    }
}

TEST(FlipFen, ExchangesColoursAndTurnsTheBoardOver) {
    EXPECT_EQ(CPositionText::FlipFen("r3k2r/p7/8/8/3Pp3/8/8/R3K2R b KQk d3 5 9"),
              "r3k2r/8/8/3pP3/8/8/P7/R3K2R w kqK d6 5 9");
    EXPECT_EQ(CPositionText::FlipFen("4k3/8/8/8/8/8/8/4K3 w HAa - 0 1"),
              "4k3/8/8/8/8/8/8/4K3 b haA - 0 1");
}

TEST(FlipFen, WritesTheFirstSixFieldsThatThereAre) {
    EXPECT_EQ(CPositionText::FlipFen("k7/8 x - e6 a b c d"), "8/K7 b - e3 a b");
    EXPECT_EQ(CPositionText::FlipFen("k7/8"), "8/K7");
    EXPECT_EQ(CPositionText::FlipFen(""), "");
}

TEST(FlipFen, TwiceGivesTheTextBack) {
    for (const std::string& fen : SampleFens()) {
        EXPECT_EQ(CPositionText::FlipFen(CPositionText::FlipFen(fen)), fen);
        EXPECT_NE(CPositionText::FlipFen(fen), fen);
    }
    for (const CPosition& position : RandomPositions(200, 72)) {
        const std::string fen = FenOf(position);
        EXPECT_EQ(CPositionText::FlipFen(CPositionText::FlipFen(fen)), fen);
    }
}

TEST(FlipFen, LeavesAsManyMovesAsBefore) {
    for (const CPosition& position : RandomPositions(300, 73)) {
        const CPosition flipped = FromFen(CPositionText::FlipFen(FenOf(position)));
        const std::vector<std::uint32_t> moves = GeneratedWords(position, MoveKinds::All);
        EXPECT_EQ(GeneratedWords(flipped, MoveKinds::All).size(), moves.size()) << FenOf(position);
        EXPECT_EQ(flipped.inCheck, position.inCheck);
    }
}

TEST(SquareText, IsFileAndRankOrAHyphen) {
    EXPECT_EQ(SquareToText(A1), "a1");
    EXPECT_EQ(SquareToText(H1), "h1");
    EXPECT_EQ(SquareToText(A8), "a8");
    EXPECT_EQ(SquareToText(E4), "e4");
    EXPECT_EQ(SquareToText(SquareNone), "-");
}

TEST(PieceText, IsTheLetterOfTheFen) {
    std::string letters;
    for (int code = 0; code < PieceCodes; ++code) {
        letters += PieceToText(static_cast<Piece>(code));
    }
    EXPECT_EQ(letters, "pPnNbBrRqQkK");
    EXPECT_EQ(PieceToText(PieceNone), "");
}

TEST(MoveText, NamesThePromotion) {
    const CPosition position;
    constexpr std::array<const char*, 4> Texts = {"a7a8r", "a7a8b", "a7a8n", "a7a8q"};
    for (unsigned index = 0; index < 4; ++index) {
        EXPECT_EQ(CPositionText::MoveToText(Move::Make(A7, A8, MoveKind::Promotion, index),
                                            position, CastlingNotation::KingTarget),
                  Texts[index]);
    }
}

TEST(MoveText, WritesCastlingInThreeNotations) {
    const CPosition position = FromFen("rk3r2/8/8/8/8/8/8/1R3KR1 w GBfa - 0 1");
    const auto texts = [&position](Square from, Square to, CastlingIndex index) {
        const Move move = Move::Make(from, to, MoveKind::Castling, index);
        std::string all;
        for (const CastlingNotation notation :
             {CastlingNotation::KingTarget, CastlingNotation::KingTakesRook,
              CastlingNotation::Name}) {
            all += CPositionText::MoveToText(move, position, notation) + ' ';
        }
        return all;
    };
    EXPECT_EQ(texts(F1, G1, WhiteKingSide), "f1g1 f1g1 O-O ");
    EXPECT_EQ(texts(F1, C1, WhiteQueenSide), "f1c1 f1b1 O-O-O ");
    EXPECT_EQ(texts(B8, G8, BlackKingSide), "b8g8 b8f8 O-O ");
    EXPECT_EQ(texts(B8, C8, BlackQueenSide), "b8c8 b8a8 O-O-O ");
}

TEST(MoveText, FallsBackToTheKingsTargetWhenTheRightIsGone) {
    CPosition position = FromFen("4k3/8/8/8/8/8/8/4K2R w K - 0 1");
    const Move move = FindMove(position, "e1g1");
    EXPECT_EQ(CPositionText::MoveToText(move, position, CastlingNotation::KingTakesRook), "e1h1");
    ASSERT_TRUE(position.MakeMove(move));
    EXPECT_EQ(CPositionText::MoveToText(move, position, CastlingNotation::KingTakesRook), "e1g1");
    EXPECT_EQ(CPositionText::MoveToText(move, position, CastlingNotation::Name), "e1g1");
}

TEST(MoveTextForm, TakesSquaresPromotionsAndCastlingNames) {
    for (const char* text :
         {"e2e4", "a1a1", "h8a1", "e7e8q", "e7e8r", "e7e8b", "e7e8n", "a1a2q", "O-O", "O-O-O"}) {
        EXPECT_TRUE(CPositionText::IsMoveTextForm(text)) << text;
    }
    for (const char* text :
         {"", "e2", "e2e", "e2e9", "i2e4", "e0e4", "E2e4", "e7e8Q", "e7e8k", "e7e8p", "e7e8qq",
          "o-o", "0-0", "O-O-", "O-O-O-O", "e2-e4", "e2e4 "}) {
        EXPECT_FALSE(CPositionText::IsMoveTextForm(text)) << text;
    }
}

TEST(TextToMove, KnowsCastlingByTheKingsTargetInNormalChess) {
    const CPosition position = FromFen("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1");
    EXPECT_EQ(CPositionText::TextToMove("e1g1", position, false).word,
              Move::Make(E1, G1, MoveKind::Castling, WhiteKingSide).word);
    EXPECT_EQ(CPositionText::TextToMove("e1c1", position, false).word,
              Move::Make(E1, C1, MoveKind::Castling, WhiteQueenSide).word);
    for (const char* text : {"e1h1", "e1a1", "O-O", "O-O-O"}) {
        EXPECT_TRUE(CPositionText::TextToMove(text, position, false).IsNone()) << text;
    }
}

TEST(TextToMove, KnowsCastlingByTheRookAndByNameInChess960) {
    const CPosition position = FromFen("r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1");
    for (const char* text : {"e8h8", "O-O"}) {
        EXPECT_EQ(CPositionText::TextToMove(text, position, true).word,
                  Move::Make(E8, G8, MoveKind::Castling, BlackKingSide).word);
    }
    for (const char* text : {"e8a8", "O-O-O"}) {
        EXPECT_EQ(CPositionText::TextToMove(text, position, true).word,
                  Move::Make(E8, C8, MoveKind::Castling, BlackQueenSide).word);
    }
    EXPECT_TRUE(CPositionText::TextToMove("e8g8", position, true).IsNone());
}

TEST(TextToMove, TakesAPlainKingMoveOntoTheCastlingSquare) {
    const CPosition position = FromFen("4k3/8/8/8/8/8/8/R4K1R w HA - 0 1");
    EXPECT_EQ(CPositionText::TextToMove("f1g1", position, true).word, Move::Make(F1, G1).word);
    EXPECT_EQ(CPositionText::TextToMove("f1h1", position, true).word,
              Move::Make(F1, G1, MoveKind::Castling, WhiteKingSide).word);
    // In normal notation both are called f1g1, and the plain move stands first.
    EXPECT_EQ(CPositionText::TextToMove("f1g1", position, false).word, Move::Make(F1, G1).word);
}

TEST(TextToMove, KnowsPromotionsBySmallLettersOnly) {
    const CPosition position = FromFen("4k3/P7/8/8/8/8/8/4K3 w - - 0 1");
    EXPECT_EQ(CPositionText::TextToMove("a7a8n", position, false).word,
              Move::Make(A7, A8, MoveKind::Promotion, PromoteKnight).word);
    for (const char* text : {"a7a8", "a7a8Q", "a7a8k", "a7b8q"}) {
        EXPECT_TRUE(CPositionText::TextToMove(text, position, false).IsNone()) << text;
    }
}

TEST(TextToMove, IsPseudoLegalOnly) {
    CPosition position = FromFen("4r2k/8/8/8/8/8/4B3/4K3 w - - 0 1");
    const Move move = CPositionText::TextToMove("e2d3", position, false);
    EXPECT_EQ(move.word, Move::Make(E2, D3).word);
    EXPECT_FALSE(position.MakeMove(move));
}

TEST(TextToMove, RefusesWhatMatchesNoMove) {
    const CPosition position;
    for (const char* text : {"", "e2e5", "e7e5", "a1a1", "e2e4q", "e2 e4", "xyzzy", "O-O", "e2e"}) {
        EXPECT_TRUE(CPositionText::TextToMove(text, position, false).IsNone()) << text;
        EXPECT_TRUE(CPositionText::TextToMove(text, position, true).IsNone()) << text;
    }
}

TEST(TextToMove, FindsEveryGeneratedMoveByItsText) {
    for (const CPosition& position : RandomPositions(150, 74)) {
        for (const std::uint32_t word : GeneratedWords(position, MoveKinds::All)) {
            for (const CastlingNotation notation :
                 {CastlingNotation::KingTakesRook, CastlingNotation::Name}) {
                const std::string text = CPositionText::MoveToText(Move{word}, position, notation);
                const Move found = CPositionText::TextToMove(text, position, true);
                // A plain king move onto its own rook's square cannot be: texts are unique.
                ASSERT_EQ(found.word, word) << FenOf(position) << ' ' << text;
            }
        }
    }
}

TEST(TextToMove, AnswersAnyBytesWithAGeneratedMoveOrNone) {
    CRandom random(75);
    const std::vector<CPosition> positions = RandomPositions(20, 76);
    constexpr std::string_view Alphabet = "abcdefgh12345678qrbnO-i90 ";
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (int length = random.Below(8); length > 0; --length) {
            text += random.OneIn(20) ? static_cast<char>(random.Below(256))
                                     : Alphabet[static_cast<std::size_t>(
                                           random.Below(static_cast<int>(Alphabet.size())))];
        }
        const CPosition& position = positions[static_cast<std::size_t>(i) % positions.size()];
        const bool chess960 = i % 2 != 0;
        const Move move = CPositionText::TextToMove(text, position, chess960);
        if (!move.IsNone()) {
            ASSERT_TRUE(CPositionText::IsMoveTextForm(text));
            const std::vector<std::uint32_t> words = GeneratedWords(position, MoveKinds::All);
            ASSERT_TRUE(std::find(words.begin(), words.end(), move.word) != words.end());
        }
    }
}

}  // namespace
}  // namespace brenquil
