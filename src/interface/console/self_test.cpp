#include "interface/console/self_test.h"

#include "board/position_text.h"
#include "interface/uci/uci_text.h"
#include "platform/bits.h"
#include "platform/clock.h"
#include "text/text.h"

#include <algorithm>
#include <utility>

namespace brenquil {

namespace {

/// Each further ply would multiply the moves that the board run makes and takes back by thirty.
constexpr std::uint32_t MaxWalkDepth = 3;

/// Does the count of each kind of man agree with its bitboard.
bool AreCountsRight(const CPosition& position) noexcept {
    for (std::size_t piece = 0; piece < PieceCodes; ++piece) {
        if (position.pieceCount[piece] != PopCount(position.pieces[piece])) {
            return false;
        }
    }
    return true;
}

}  // namespace

CSelfTest::CSelfTest(ILineSink& sink, Evaluator evaluate, bool chess960)
    : perftTable(StandardPerftRows.begin(), StandardPerftRows.end()),
      hashTable(HashRows.begin(), HashRows.end()),
      perft_(sink, CastlingNotation::KingTarget),
      output_(sink),
      evaluate_(std::move(evaluate)) {
    if (chess960) {
        perftTable.insert(perftTable.end(), Chess960PerftRows.begin(), Chess960PerftRows.end());
    }
}

void CSelfTest::PrintHead(std::string_view title, std::size_t ruleLength) {
    const std::string rule(ruleLength, '-');
    output_.PrintLine(rule);
    output_.PrintLine(title);
    output_.PrintLine(rule);
}

void CSelfTest::PrintEnd(bool isPassed) {
    if (isPassed) {
        output_.PrintLine("test complete!");
    }
}

/// Sets the position and says so.
void CSelfTest::SetFen(std::string_view fen) {
    output_.PrintLine("test fen: " + std::string(fen));
    CPositionText(perft_.position).SetFen(fen);
}

/// One run: the title, each position, and the end.
void CSelfTest::TestRows(std::string_view title, bool (CSelfTest::*test)(const PerftTestRow& row)) {
    PrintHead(title, title.size());
    bool isPassed = true;
    for (const PerftTestRow& row : perftTable) {
        isPassed = (this->*test)(row) && isPassed;
        output_.PrintLine("");
    }
    PrintEnd(isPassed);
}

void CSelfTest::TestMoveGeneration() {
    const std::uint32_t start = TickCount();
    TestRows("test move-generation", &CSelfTest::TestCounts);
    output_.PrintLine("time:  " + SecondsText(TickCount() - start));
}

bool CSelfTest::TestCounts(const PerftTestRow& row) {
    SetFen(row.fen);
    if (perft_.Perft(row.depth) == row.nodes) {
        output_.PrintLine("test ok!");
        return true;
    }
    output_.PrintLine("test failed!");
    output_.PrintLine("valid count of nodes = " + std::to_string(row.nodes));
    return false;
}

void CSelfTest::TestBoard() {
    TestRows("test board-correctness", &CSelfTest::TestMakeAndUndo);
}

bool CSelfTest::TestMakeAndUndo(const PerftTestRow& row) {
    SetFen(row.fen);
    const int maxDepth = std::min(row.depth, MaxWalkDepth);
    bool isRight = true;
    for (int depth = 1; depth <= maxDepth && isRight; ++depth) {
        isRight = WalkBoard(depth);
    }
    output_.PrintLine(isRight ? "test ok!" : "test failed!");
    return isRight;
}

/// Checks the board after each move made and each move taken back, up to the first fault.
bool CSelfTest::WalkBoard(int depth) {
    if (depth == 0) {
        return true;
    }
    for (const Move move : perft_.MoveListFor(depth)) {
        if (!perft_.position.MakeMove(move)) {
            continue;
        }
        const bool isRight = IsBoardRight() && WalkBoard(depth - 1);
        perft_.position.UndoMove(move);
        if (!isRight || !IsBoardRight()) {
            return false;
        }
    }
    return true;
}

bool CSelfTest::IsBoardRight() {
    rebuilt_.CopyFrom(perft_.position);
    return AreBoardsRight(perft_.position, rebuilt_);
}

bool CSelfTest::AreBoardsRight(const CPosition& position, const CPosition& rebuilt) {
    return position.pieces == rebuilt.pieces && position.pieceCount == rebuilt.pieceCount &&
           AreCountsRight(position) && AreCountsRight(rebuilt) &&
           position.colours == rebuilt.colours && position.board == rebuilt.board &&
           position.colourCount == rebuilt.colourCount && position.key == rebuilt.key &&
           position.pawnKingKey == rebuilt.pawnKingKey;
}

void CSelfTest::TestEvaluation() {
    TestRows("test evaluation symmetric", &CSelfTest::TestSymmetry);
}

bool CSelfTest::TestSymmetry(const PerftTestRow& row) {
    SetFen(row.fen);
    const Score score = evaluate_(perft_.position);
    CPositionText text(perft_.position);
    text.SetFen(CPositionText::FlipFen(text.GetFen()));
    const Score flipped = evaluate_(perft_.position);
    if (score == flipped) {
        output_.PrintLine("test ok!");
        return true;
    }
    output_.PrintLine("test failed!");
    output_.PrintLine("eval = " + std::to_string(score) +
                      " => eval flip = " + std::to_string(flipped));
    return false;
}

void CSelfTest::TestHash() {
    constexpr std::size_t RuleLength = 31;  // this once not the length of the titles
    PrintHead("test hash correctness (fen)", RuleLength);
    bool isPassed = true;
    for (const HashTestRow& row : hashTable) {
        SetFen(row.fen);
        isPassed = TestKey(row.key) && isPassed;
        output_.PrintLine("");
    }
    PrintEnd(isPassed);

    PrintHead("test hash correctness (moves)", RuleLength);
    isPassed = true;
    for (const HashTestRow& row : hashTable) {
        output_.PrintLine("test moves: " + std::string(row.moves));
        isPassed = PlayMoves(row.moves) && isPassed;
        isPassed = TestKey(row.key) && isPassed;
        output_.PrintLine("");
    }
    PrintEnd(isPassed);
}

/// Plays the moves from the start position and reports each that cannot be played.
bool CSelfTest::PlayMoves(std::string_view moves) {
    CPosition& position = perft_.position;
    CPositionText(position).SetFen({});
    bool isPassed = true;
    for (const std::string& word : Split(moves, ' ')) {
        const Move move = CPositionText::TextToMove(word, position, false);
        if (move.IsNone() || !position.MakeMove(move)) {
            output_.PrintLine("Illegal move: " + word);
            isPassed = false;
        }
    }
    return isPassed;
}

bool CSelfTest::TestKey(std::uint64_t key) {
    if (perft_.position.key == key) {
        output_.PrintLine("test ok!");
        return true;
    }
    output_.PrintLine("test failed!");
    output_.PrintLine("hash = " + std::to_string(perft_.position.key) +
                      " => hash test = " + std::to_string(key));
    return false;
}

}  // namespace brenquil
