#include "bases/syzygy/syzygy_bases.h"
#include "syzygy_fixture.h"

namespace brenquil {
namespace {

class SyzygyBases : public CSyzygyFixture {
protected:
    static constexpr Score NoAnswer = 99999;

    Score Search(std::string_view fen, int ply) {
        Score score = NoAnswer;
        const bool answered = wdlBase.ProbeSearch(score, Position(fen), 3, ply);
        EXPECT_EQ(answered, score != NoAnswer);
        return score;
    }

    /// A table in which White has one class and Black another.
    void MakeClasses(int white, int black) {
        support::WriteBytes(folder / "KRvK.rtbw",
                            support::MakeWdlFile({"KRvK", [=](const TbPosition& p) {
                                                      return p.turn ? white : black;
                                                  }}));
        static int times = 0;
        options.SetOption("Syzygy Path",
                          std::string(static_cast<std::size_t>(++times), ';') + folder.string());
    }

    static BaseMoveInfo Info(IBase& base, std::string_view fen, std::string_view moveText,
                             bool wanted = true) {
        const CPosition position = Position(fen);
        BaseMoveInfo info;
        const Move move = CPositionText::TextToMove(moveText, position, false);
        EXPECT_EQ(base.ProbeMoveInfo(info, move, position), wanted) << moveText;
        return info;
    }
};

constexpr const char* WhiteToMove = "8/8/8/3k4/8/8/8/KR6 w - - 0 1";
constexpr const char* BlackToMove = "8/8/8/3k4/8/8/8/KR6 b - - 0 1";

TEST_F(SyzygyBases, HaveTheirPlaceInTheList) {
    EXPECT_EQ(dtzBase.GetPriority(), 1U);
    EXPECT_EQ(wdlBase.GetPriority(), 3U);
}

TEST_F(SyzygyBases, AnswerTheSearchWithMateScores) {
    MakeAndLoad({"KRvK"});
    EXPECT_EQ(Search(WhiteToMove, 0), 32000);
    EXPECT_EQ(Search(WhiteToMove, 7), 31993);
    EXPECT_EQ(Search(BlackToMove, 7), -31993);
    EXPECT_EQ(Search("8/8/8/3k4/8/8/8/K7 w - - 0 1", 7), 0);
}

TEST_F(SyzygyBases, TheFiftyMovesRuleTurnsTwoClassesIntoDraws) {
    MakeClasses(1, -1);
    EXPECT_EQ(Search(WhiteToMove, 5), 0);
    EXPECT_EQ(Search(BlackToMove, 5), 0);
    options.SetOption("Syzygy 50 Moves Rule", "false");
    EXPECT_EQ(Search(WhiteToMove, 5), 31995) << "class 3 is a win";
    EXPECT_EQ(Search(BlackToMove, 5), -31995) << "class 1 is a loss";
    options.SetOption("Syzygy 50 Moves Rule", "true");
    EXPECT_EQ(Search(WhiteToMove, 5), 0);
}

TEST_F(SyzygyBases, ADrawStaysADrawUnderBothRules) {
    MakeClasses(0, 0);
    EXPECT_EQ(Search(WhiteToMove, 5), 0);
    options.SetOption("Syzygy 50 Moves Rule", "false");
    EXPECT_EQ(Search(WhiteToMove, 5), 0);
}

TEST_F(SyzygyBases, TheCounterDoesNotMatterInTheSearch) {
    MakeAndLoad({"KRvK"});
    EXPECT_EQ(Search("8/8/8/3k4/8/8/8/KR6 w - - 99 80", 2), 31998);
}

TEST_F(SyzygyBases, SwitchedOffTheyAnswerNothing) {
    MakeAndLoad({"KRvK"});
    options.SetOption("Syzygy Use", "false");
    EXPECT_EQ(Search(WhiteToMove, 0), NoAnswer);
    Move move{};
    EXPECT_FALSE(dtzBase.ProbeRoot(move, Position(WhiteToMove)));
    (void)Info(wdlBase, WhiteToMove, "b1b4", false);
    (void)Info(dtzBase, WhiteToMove, "b1b4", false);
    options.SetOption("Syzygy Use", "true");
    EXPECT_EQ(Search(WhiteToMove, 0), 32000);
}

TEST_F(SyzygyBases, EachAnswersItsOwnQuestionsOnly) {
    MakeAndLoad({"KRvK"});
    Move move{};
    Score score = 0;
    EXPECT_FALSE(wdlBase.ProbeRoot(move, Position(WhiteToMove)));
    EXPECT_FALSE(dtzBase.ProbeSearch(score, Position(WhiteToMove), 3, 3));
    EXPECT_TRUE(dtzBase.ProbeRoot(move, Position(WhiteToMove)));
}

TEST_F(SyzygyBases, TheRootScoreIsTheDistance) {
    MakeAndLoad({"KRvK"});
    Move move{};
    ASSERT_TRUE(dtzBase.ProbeRoot(move, Position(WhiteToMove)));
    EXPECT_EQ(move.Order(), Dtz(WhiteToMove));
    EXPECT_GT(move.Order(), 10);
    ASSERT_TRUE(dtzBase.ProbeRoot(move, Position(BlackToMove)));
    EXPECT_EQ(move.Order(), Dtz(BlackToMove));
    EXPECT_LT(move.Order(), 0);
    EXPECT_FALSE(dtzBase.ProbeRoot(move, Position("k7/1Q6/K7/8/8/8/8/8 b - - 0 1")));
    EXPECT_FALSE(dtzBase.ProbeRoot(move, Position("k6R/8/1K6/8/8/8/8/8 b - - 0 1"))) << "mated";
}

TEST_F(SyzygyBases, TheListingMarksWinsLossesAndDraws) {
    MakeAndLoad({"KRvK"});
    const BaseMoveInfo win = Info(wdlBase, WhiteToMove, "b1b4");
    EXPECT_EQ(win.text, "+M?");
    EXPECT_EQ(win.move.Order(), 32000);
    const BaseMoveInfo draw = Info(wdlBase, "8/8/8/8/8/8/1k6/3R3K b - - 0 1", "b2c2");
    EXPECT_EQ(draw.text, "-M?");
    EXPECT_EQ(draw.move.Order(), -32000);
    const BaseMoveInfo taken = Info(wdlBase, "8/8/8/8/8/8/2k5/3R3K b - - 0 1", "c2d1");
    EXPECT_EQ(taken.text, "0");
    EXPECT_EQ(taken.move.Order(), 0);
}

TEST_F(SyzygyBases, AnIllegalMoveHasNoMark) {
    MakeAndLoad({"KRvK"});
    const CPosition position = Position("8/8/8/8/8/8/2k5/KR6 w - - 0 1");
    BaseMoveInfo info;
    EXPECT_FALSE(wdlBase.ProbeMoveInfo(info, Move::Make(A1, B2), position));
    EXPECT_FALSE(dtzBase.ProbeMoveInfo(info, Move::Make(A1, B2), position));
}

/// The copy that the move is made on knows the outermost rooks alone. Castling with an inner one
/// went wrong on it: both rooks vanished, and bare kings are a draw.
TEST_F(SyzygyBases, CastlingWithAnInnerRookHasNoMark) {
    WriteFlat("KRRvK", 2, 0);
    Load();
    constexpr const char* Fen = "8/8/3k4/8/8/8/8/4KR1R w F - 0 1";
    for (IBase* const base : {static_cast<IBase*>(&wdlBase), static_cast<IBase*>(&dtzBase)}) {
        (void)Info(*base, Fen, "e1g1", false);
    }
}

TEST_F(SyzygyBases, TheListingShowsTheLineToMate) {
    MakeAndLoad({"KRvK"});
    const BaseMoveInfo info = Info(dtzBase, "7k/8/5K2/8/8/8/8/R7 w - - 0 1", "f6g6");
    EXPECT_EQ(info.text, "+Z2");
    EXPECT_EQ(info.move.Order(), 32000 - 2);
    ASSERT_EQ(info.line.count, 2);
    EXPECT_EQ(info.line[0].Identity(), Move::Make(H8, G8).Identity());
    EXPECT_EQ(info.line[1].Identity(), Move::Make(A1, A8).Identity());
}

TEST_F(SyzygyBases, TheSortScoreOfDistancesIsTurnedForBlackAndTheTextIsNot) {
    MakeAndLoad({"KRvK"});
    const BaseMoveInfo info = Info(dtzBase, "7K/8/5k2/8/8/8/8/r7 b - - 0 1", "f6g6");
    EXPECT_EQ(info.text, "+Z2");
    EXPECT_EQ(info.move.Order(), 2 - 32000);
    const BaseMoveInfo loss = Info(dtzBase, "8/8/8/3k4/8/8/8/KR6 b - - 0 1", "d5d4");
    EXPECT_EQ(loss.text.substr(0, 2), "-Z");
    EXPECT_GT(loss.move.Order(), 31900);
}

TEST_F(SyzygyBases, AMoveThatMatesHasNoLineAndNoDistance) {
    MakeAndLoad({"KRvK"});
    (void)Info(dtzBase, "k7/8/1K6/8/8/8/8/7R w - - 0 1", "h1h8", false);
    const BaseMoveInfo info = Info(wdlBase, "k7/8/1K6/8/8/8/8/7R w - - 0 1", "h1h8");
    EXPECT_EQ(info.text, "+M?");
}

TEST_F(SyzygyBases, ADrawnLineEndsAtTheTwoHundredAndTwentiethMove) {
    MakeAndLoad({"KBvK"});
    const BaseMoveInfo info = Info(dtzBase, "8/8/8/3k4/8/8/8/KB6 w - - 0 1", "b1h7");
    EXPECT_EQ(info.text, "0");
    EXPECT_EQ(info.move.Order(), 0);
    EXPECT_EQ(info.line.count, 220);
}

TEST_F(SyzygyBases, TheCountOfMenIsTakenBeforeTheMove) {
    MakeAndLoad({"KRvK"});
    // Four men before the capture, three after it.
    (void)Info(wdlBase, "8/8/8/3k4/8/8/8/KRr5 w - - 0 1", "b1c1", false);
    (void)Info(dtzBase, "8/8/8/3k4/8/8/8/KRr5 w - - 0 1", "b1c1", false);
}

TEST_F(SyzygyBases, TheOptionsHaveTheirDefaults) {
    EXPECT_EQ(options.path.value, "<empty>");
    EXPECT_TRUE(options.use.enabled);
    EXPECT_TRUE(options.fiftyMovesRule.enabled);
    EXPECT_TRUE(found.empty());
}

}  // namespace
}  // namespace brenquil
