// What the generator writes, in which order.

#include "board/capture_order.h"
#include "board_checks.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>

namespace brenquil {
namespace {

std::vector<std::uint32_t> EvasionWords(const CPosition& position) {
    MoveList list;
    CMoveGenerator(position).GenerateEvasions(list);
    return Words(list);
}

std::string GeneratedText(std::string_view fen, MoveKinds wanted) {
    const CPosition position = FromFen(fen);
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, wanted);
    return MovesText(position, list);
}

TEST(GenerateMoves, GivesTwentyMovesAtTheStartPawnsFirst) {
    EXPECT_EQ(GeneratedText(StartFen, MoveKinds::All),
              "a2a3 b2b3 c2c3 d2d3 e2e3 f2f3 g2g3 h2h3 a2a4 b2b4 c2c4 d2d4 e2e4 f2f4 g2g4 h2h4 "
              "b1a3 b1c3 g1f3 g1h3");
    EXPECT_EQ(
        GeneratedText("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", MoveKinds::All),
        "a7a6 b7b6 c7c6 d7d6 e7e6 f7f6 g7g6 h7h6 a7a5 b7b5 c7c5 d7d5 e7e5 f7f5 g7g5 h7h5 "
        "b8a6 b8c6 g8f6 g8h6");
    EXPECT_EQ(GeneratedText(StartFen, MoveKinds::Captures), "");
}

TEST(GenerateMoves, TakesTowardsTheAFileFirstForBothColours) {
    EXPECT_EQ(GeneratedText("4k3/8/8/1p1p4/2P1P3/8/8/4K3 w - - 0 1", MoveKinds::Captures),
              "c4b5 e4d5 c4d5");
    EXPECT_EQ(GeneratedText("4k3/8/8/1p1p4/2P1P3/8/8/4K3 b - - 0 1", MoveKinds::Captures),
              "d5c4 b5c4 d5e4");
}

TEST(GenerateMoves, WritesPromotionsAsQueenKnightBishopRookAmongTheCapturesOnly) {
    constexpr std::string_view Fen = "1n2k3/P7/8/8/8/8/8/4K3 w - - 0 1";
    EXPECT_EQ(GeneratedText(Fen, MoveKinds::Captures),
              "a7b8q a7b8n a7b8b a7b8r a7a8q a7a8n a7a8b a7a8r");
    EXPECT_EQ(GeneratedText(Fen, MoveKinds::Quiets), "e1d1 e1f1 e1d2 e1e2 e1f2");
    EXPECT_EQ(GeneratedText("4k3/8/8/8/8/8/p7/1N2K3 b - - 0 1", MoveKinds::Captures),
              "a2b1q a2b1n a2b1b a2b1r a2a1q a2a1n a2a1b a2a1r");
}

TEST(GenerateMoves, WritesEnPassantFromTheAFileSideFirst) {
    EXPECT_EQ(GeneratedText("4k3/8/8/2PpP3/8/8/8/4K3 w - d6 0 1", MoveKinds::Captures),
              "e5d6 c5d6");
    EXPECT_EQ(GeneratedText("4k3/8/8/8/2pPp3/8/8/4K3 b - d3 0 1", MoveKinds::Captures),
              "e4d3 c4d3");
    EXPECT_EQ(GeneratedText("4k3/8/8/Pp5P/8/8/8/4K3 w - b6 0 1", MoveKinds::Captures), "a5b6");
    EXPECT_EQ(GeneratedText("4k3/8/8/8/P6p/8/8/4K3 b - - 0 1", MoveKinds::Captures), "");
    const CPosition position = FromFen("4k3/8/8/2PpP3/8/8/8/4K3 w - d6 0 1");
    EXPECT_EQ(GeneratedWords(position, MoveKinds::Captures).front(),
              Move::Make(E5, D6, MoveKind::EnPassant).word);
}

TEST(GenerateMoves, WritesCastlingAsKingFromKingToBehindTheKingsMoves) {
    const CPosition position = FromFen("4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1");
    const std::vector<std::uint32_t> words =
        GeneratedWords(position, MoveKinds::All, position.pieces[WhiteKing]);
    ASSERT_EQ(words.size(), 7U);
    EXPECT_EQ(words[5], Move::Make(E1, G1, MoveKind::Castling, WhiteKingSide).word);
    EXPECT_EQ(words[6], Move::Make(E1, C1, MoveKind::Castling, WhiteQueenSide).word);
    EXPECT_NE(words[5] >> 6U & 63U, static_cast<std::uint32_t>(H1));
}

TEST(GenerateMoves, NeverCastlesOutOfCheckUnderAnyFlags) {
    const CPosition position = FromFen("4k3/8/8/8/4r3/8/8/R3K2R w KQ - 0 1");
    ASSERT_TRUE(position.inCheck);
    for (const MoveKinds wanted : {MoveKinds::Captures, MoveKinds::Quiets, MoveKinds::All}) {
        for (const std::uint32_t word : GeneratedWords(position, wanted)) {
            EXPECT_NE(Move{word}.Kind(), MoveKind::Castling);
        }
    }
    for (const std::uint32_t word : EvasionWords(position)) {
        EXPECT_NE(Move{word}.Kind(), MoveKind::Castling);
    }
}

TEST(GenerateMoves, CastlesOnlyOverFreeAndUnattackedSquares) {
    const auto castles = [](const char* fen, CastlingIndex index) {
        const CPosition position = FromFen(fen);
        MoveList list;
        CMoveGenerator(position).GenerateCastling(list, position.castling[index].kingFrom, index);
        return list.count;
    };
    EXPECT_EQ(castles("4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", WhiteQueenSide), 1);
    EXPECT_EQ(castles("4k3/8/8/8/8/8/8/RN2K2R w KQ - 0 1", WhiteQueenSide), 0);   // b1 taken
    EXPECT_EQ(castles("1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", WhiteQueenSide), 1);  // b1 attacked
    EXPECT_EQ(castles("2r1k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", WhiteQueenSide), 0);  // target
    EXPECT_EQ(castles("3rk3/8/8/8/8/8/8/R3K2R w KQ - 0 1", WhiteQueenSide), 0);   // passage
    EXPECT_EQ(castles("4k3/8/8/8/8/8/8/R3K2R w K - 0 1", WhiteQueenSide), 0);     // no right
    EXPECT_EQ(castles("4k2r/8/8/8/8/8/8/4K2R w Kk - 0 1", BlackKingSide), 1);
    EXPECT_EQ(castles("4k1Nr/8/8/8/8/8/8/4K2R w Kk - 0 1", BlackKingSide), 0);
}

TEST(GenerateMoves, AppendsToWhatTheListHolds) {
    const CPosition position;
    MoveList list;
    list.Append(Move{77});
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    EXPECT_EQ(list.count, 21);
    EXPECT_EQ(list[0].word, 77U);
}

TEST(GenerateMoves, EqualsTheSlowGeneratorInOrderForAllFlagsAndMasks) {
    CRandom random(41);
    for (const CPosition& position : RandomPositions(std::max(100, 3000 / WorkDivisor()), 42)) {
        const SlowPosition slow(position);
        for (int i = 0; i < 6; ++i) {
            const auto wanted = static_cast<MoveKinds>(i % 3 + 1);
            const bool captures = wanted != MoveKinds::Quiets;
            const bool quiets = wanted != MoveKinds::Captures;
            const Bitboard fromMask = i < 3 ? AllSquares : random.Word();
            const Bitboard toMask = i < 3 ? AllSquares : random.Word();
            ASSERT_EQ(GeneratedWords(position, wanted, fromMask, toMask),
                      slow.Moves(captures, quiets, fromMask, toMask))
                << FenOf(position) << ' ' << i;
        }
    }
}

TEST(GenerateMoves, EqualsTheSlowGeneratorOnLawlessPositions) {
    CRandom random(43);
    for (int i = 0; i < std::max(200, 5000 / WorkDivisor()); ++i) {
        const CPosition position = FromFen(LawlessFen(random));
        std::vector<std::uint32_t> expected = SlowPosition(position).Moves(true, true);
        expected.resize(std::min<std::size_t>(expected.size(), 220));
        ASSERT_EQ(GeneratedWords(position, MoveKinds::All), expected) << FenOf(position);
        const Bitboard fromMask = random.Word();
        const Bitboard toMask = random.Word();
        ASSERT_EQ(GeneratedWords(position, MoveKinds::All, fromMask, toMask),
                  SlowPosition(position).Moves(true, true, fromMask, toMask))
            << FenOf(position);
    }
}

/// The captures in the order of generation, with their keys, after the first selection.
std::vector<std::uint32_t> SelectedCaptures(const CPosition& position) {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::Captures);
    ScoreCaptures(list, position);
    std::vector<std::uint32_t> words = Words(list);
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] >> 16U > words[0] >> 16U) {
            std::swap(words[0], words[i]);
        }
    }
    return words;
}

std::vector<std::uint32_t> CaptureWords(const CPosition& position) {
    MoveList list;
    CMoveGenerator(position).GenerateCaptures(list);
    return Words(list);
}

TEST(GenerateCaptures, EqualsGenerationScoringAndTheFirstSelection) {
    std::size_t captures = 0;
    for (const CPosition& position : RandomPositions(std::max(500, 20000 / WorkDivisor()), 45)) {
        const std::vector<std::uint32_t> words = CaptureWords(position);
        ASSERT_EQ(words, SelectedCaptures(position)) << FenOf(position);
        captures += words.size();
    }
    EXPECT_GT(captures, 500U);
}

TEST(GenerateCaptures, EqualsGenerationScoringAndTheFirstSelectionOnLawlessPositions) {
    CRandom random(46);
    for (int i = 0; i < std::max(500, 10000 / WorkDivisor()); ++i) {
        const CPosition position = FromFen(LawlessFen(random));
        ASSERT_EQ(CaptureWords(position), SelectedCaptures(position)) << FenOf(position);
    }
}

TEST(GenerateCaptures, FindsRoomForTheManyThatSixteenMenCanHave) {
    const CPosition position =
        FromFen("nnnnnnnn/PPPPPPPP/n1n1n1n1/1Q1Q1Q1Q/n1n1n1n1/1Q1Q1Q1K/nnnnnnnk/8 w - - 0 1");
    ASSERT_EQ(position.colourCount[White], 16);
    EXPECT_EQ(CaptureWords(position), SelectedCaptures(position));
}

TEST(GenerateCaptures, PutsTheCaptureOfAKingAfterAllOthers) {
    const CPosition position = FromFen("4k3/8/8/8/4R1p1/8/8/4K3 w - - 0 1");
    const std::vector<std::uint32_t> words = CaptureWords(position);
    ASSERT_EQ(words.size(), 2U);
    EXPECT_EQ(Move{words[0]}.To(), G4);
    EXPECT_EQ(words[1], Move::Make(E4, E8).word);
}

TEST(GenerateMoves, CutsTheListAtTwoHundredAndTwentyMoves) {
    // A ring of queens.
    for (const char* fen : {"QQQQQQQQ/Q6Q/Q6Q/Q6Q/Q6Q/Q6Q/Q6Q/QQQQQQQQ w - - 0 1",
                            "QQQQQQQQ/Q6Q/Q6Q/Q6Q/Q6Q/Q4k1Q/Q6Q/KQQQQQQQ w - - 0 1",
                            "qqqqqqqq/q6q/qR5q/q6q/q6q/q6q/q4P1q/qqqqqqqq b - - 0 1"}) {
        const CPosition position = FromFen(fen);
        std::vector<std::uint32_t> all = SlowPosition(position).Moves(true, true);
        ASSERT_GT(all.size(), 220U) << fen;
        all.resize(220);
        EXPECT_EQ(GeneratedWords(position, MoveKinds::All), all) << fen;
    }
}

TEST(GenerateMoves, DropsWhatFindsNoRoomWhateverKindOfMoveItIs) {
    const CPosition position = FromFen("1n2k3/P7/8/2PpP3/8/8/1N4P1/R3K2R w KQ d6 0 1");
    const std::vector<std::uint32_t> all = GeneratedWords(position, MoveKinds::All);
    for (std::int32_t room = 0; room <= static_cast<std::int32_t>(all.size()); ++room) {
        // On the heap, where the sanitizers see a write past the end.
        const auto list = std::make_unique<MoveList>();
        while (list->count < MoveList::Capacity - room) {
            list->Append(Move{0x10001});
        }
        CMoveGenerator(position).GenerateMoves(*list, MoveKinds::All);
        ASSERT_EQ(list->count, 220);
        for (std::int32_t i = 0; i < room; ++i) {
            ASSERT_EQ((*list)[220 - room + i].word, all[static_cast<std::size_t>(i)]);
        }
    }
}

TEST(GenerateEvasions, OffersTheEnPassantCaptureOfTheCheckingPawn) {
    const CPosition checked = FromFen("8/8/8/5k2/3pP3/8/8/K7 b - e3 0 1");
    ASSERT_TRUE(checked.inCheck);
    const std::vector<std::uint32_t> words = EvasionWords(checked);
    const std::uint32_t capture = Move::Make(D4, E3, MoveKind::EnPassant).word;
    EXPECT_EQ(std::count(words.begin(), words.end(), capture), 1);
    // A plain move to that square is not an answer: the mask does not hold it.
    const CPosition withRook = FromFen("8/8/8/5k2/3pP3/r7/8/K7 b - e3 0 1");
    const std::vector<std::uint32_t> all = GeneratedWords(withRook, MoveKinds::All);
    const std::vector<std::uint32_t> answers = EvasionWords(withRook);
    EXPECT_EQ(std::count(all.begin(), all.end(), Move::Make(A3, E3).word), 1);
    EXPECT_EQ(std::count(answers.begin(), answers.end(), Move::Make(A3, E3).word), 0);
    EXPECT_EQ(std::count(answers.begin(), answers.end(), capture), 1);
}

TEST(GenerateEvasions, EqualsTheFullListWithoutWhatCannotAnswer) {
    int checks = 0;
    for (const CPosition& position : RandomPositions(std::max(500, 8000 / WorkDivisor()), 44)) {
        checks += position.inCheck ? 1 : 0;
        ASSERT_EQ(EvasionWords(position), SlowPosition(position).Evasions()) << FenOf(position);
    }
    EXPECT_GT(checks, 10);
}

TEST(GenerateEvasions, LosesNoLegalMove) {
    for (CPosition& position : RandomPositions(std::max(500, 8000 / WorkDivisor()), 45)) {
        if (!position.inCheck) {
            continue;
        }
        const auto legal = [&position](std::vector<std::uint32_t> words) {
            std::erase_if(words, [&position](std::uint32_t word) {
                if (!position.MakeMove(Move{word})) {
                    return true;
                }
                position.UndoMove(Move{word});
                return false;
            });
            return words;
        };
        ASSERT_EQ(legal(EvasionWords(position)), legal(GeneratedWords(position, MoveKinds::All)))
            << FenOf(position);
    }
}

TEST(GenerateEvasions, AnswersChecksOfAllKingsAndOfNone) {
    // Without a king nothing but en passant and king moves could stand.
    EXPECT_TRUE(EvasionWords(FromFen("4k3/8/8/8/8/8/PPPP4/QRNB4 w - - 0 1")).empty());
    CRandom random(46);
    for (int i = 0; i < std::max(200, 5000 / WorkDivisor()); ++i) {
        const CPosition position = FromFen(LawlessFen(random));
        std::vector<std::uint32_t> expected = SlowPosition(position).Evasions();
        expected.resize(std::min<std::size_t>(expected.size(), 220));
        ASSERT_EQ(EvasionWords(position), expected) << FenOf(position);
    }
}

/// The definition of a valid stored move: the generator, asked for that man and that target, writes
/// the word.
bool IsValidByGeneration(const CPosition& position, Move move) {
    const Piece man = position.board[move.From()];
    const Piece target = position.board[move.To()];
    if (move.word == 0 || man == PieceNone || ColourOf(man) != position.sideToMove ||
        (target != PieceNone && ColourOf(target) == position.sideToMove)) {
        return false;
    }
    MoveKinds wanted = MoveKinds::Captures;
    if (move.Kind() == MoveKind::Normal) {
        wanted = MoveKinds::All;
    } else if (move.Kind() == MoveKind::Castling) {
        wanted = MoveKinds::Quiets;
    }
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, wanted, BitOf(move.From()), BitOf(move.To()));
    return std::any_of(list.begin(), list.end(),
                       [move](Move other) { return SameMove(other, move); });
}

void ExpectStoredMovesAsGenerated(const CPosition& position) {
    const CMoveGenerator generator(position);
    for (std::uint32_t word = 0; word < 65536; ++word) {
        ASSERT_EQ(generator.IsStoredMoveValid(Move{word}),
                  IsValidByGeneration(position, Move{word}))
            << FenOf(position) << " word " << word;
    }
}

TEST(StoredMoves, AreValidExactlyIfTheGeneratorWouldWriteThem) {
    for (const std::string& fen : SampleFens()) {
        ExpectStoredMovesAsGenerated(FromFen(fen));
    }
    for (const CPosition& position : RandomPositions(std::max(20, 150 / WorkDivisor()), 47)) {
        ExpectStoredMovesAsGenerated(position);
    }
}

TEST(StoredMoves, AreValidByGenerationOnLawlessPositionsToo) {
    CRandom random(48);
    for (int i = 0; i < std::max(20, 150 / WorkDivisor()); ++i) {
        ExpectStoredMovesAsGenerated(FromFen(LawlessFen(random)));
    }
}

TEST(StoredMoves, RefuseTheWordOfNoMove) {
    for (const char* fen : {"4k3/8/8/8/8/8/8/R3K3 w Q - 0 1", "4k3/8/8/8/8/8/8/4K3 w - - 0 1",
                            "4k3/8/8/8/8/8/8/r3K3 w - - 0 1"}) {
        EXPECT_FALSE(CMoveGenerator(FromFen(fen)).IsStoredMoveValid(NoMove));
        EXPECT_FALSE(CMoveGenerator(FromFen(fen)).IsStoredMoveValid(Move{0x7FFF0000}));
    }
}

TEST(StoredMoves, AreComparedByTheirLowHalf) {
    const CPosition position;
    Move move = Move::Make(E2, E4);
    move.SetOrder(-77);
    EXPECT_TRUE(CMoveGenerator(position).IsStoredMoveValid(move));
    Move wrong = Move::Make(E2, E5);
    wrong.SetOrder(-77);
    EXPECT_FALSE(CMoveGenerator(position).IsStoredMoveValid(wrong));
}

TEST(StoredMoves, RefuseCastlingOntoTheOwnRookThoughTheGeneratorWritesIt) {
    const CPosition position = FromFen("7k/8/8/8/8/8/8/5KR1 w G - 0 1");
    const Move move = CPositionText::TextToMove("O-O", position, true);
    ASSERT_EQ(move.Kind(), MoveKind::Castling);
    EXPECT_FALSE(CMoveGenerator(position).IsStoredMoveValid(move));
    const CPosition stays = FromFen("7k/8/8/8/8/8/8/6KR w H - 0 1");
    EXPECT_FALSE(
        CMoveGenerator(stays).IsStoredMoveValid(CPositionText::TextToMove("O-O", stays, true)));
}

TEST(StoredMoves, ArePseudoLegalExactlyIfTheGeneratorWritesThem) {
    const auto expectAsGenerated = [](const CPosition& position) {
        const std::vector<std::uint32_t> words = GeneratedWords(position, MoveKinds::All);
        for (std::uint32_t word = 0; word < 65536; ++word) {
            ASSERT_EQ(CMoveGenerator(position).IsPseudoLegal(Move{word}),
                      std::find(words.begin(), words.end(), word) != words.end())
                << FenOf(position) << " word " << word;
        }
    };
    for (const CPosition& position : RandomPositions(std::max(20, 150 / WorkDivisor()), 49)) {
        expectAsGenerated(position);
    }
    for (const char* fen : {"7k/8/8/8/8/8/8/5KR1 w G - 0 1", "7k/8/8/8/8/8/8/6KR w H - 0 1",
                            "7k/8/8/8/8/8/8/4KR1R w F - 0 1", "7k/8/8/8/8/8/8/4KR1R w H - 0 1"}) {
        expectAsGenerated(FromFen(fen));
    }
}

TEST(MoveOrderVectors, ListTheLegalMovesInOrder) {
    const std::string path = SharedPath("BRENQUIL_VECTORS", "vectors", "movegen.tsv");
    if (path.empty()) {
        GTEST_SKIP() << "the vectors are not there";
    }
    std::ifstream file(path);
    int rows = 0;
    for (std::string line; std::getline(file, line); ++rows) {
        const std::size_t tab = line.find('\t');
        ASSERT_NE(tab, std::string::npos);
        CPosition position = FromFen(line.substr(0, tab));
        MoveList list;
        if (position.inCheck) {
            CMoveGenerator(position).GenerateEvasions(list);
        } else {
            CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
        }
        MoveList legal;
        for (const Move move : list) {
            if (position.MakeMove(move)) {
                position.UndoMove(move);
                legal.Append(move);
            }
        }
        EXPECT_EQ(MovesText(position, legal), line.substr(tab + 1)) << line.substr(0, tab);
    }
    EXPECT_EQ(rows, 100);
}

}  // namespace
}  // namespace brenquil
