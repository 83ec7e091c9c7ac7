// The console command `test`: the engine checked against published figures and against itself.
//
// | run             | checks                   | by                                              |
// |-----------------|--------------------------|-------------------------------------------------|
// | move generation | legal moves              | node counts of known positions                  |
// | board           | making and taking back   | rebuilding all derived data after every step    |
// | evaluation      | equal rules for all      | the same position with the colours exchanged    |
// | hash            | the position's key       | published keys, from FENs and after moves       |
//
// The object has a position of its own, so the game stays as it was. Its lines go to the sink and
// never to the log. A failed row does not stop a run, and only the printed words tell of it. A full
// run takes minutes by design and cannot be interrupted. The object takes some 50 kB, with 230 kB
// more for the lists of its perft, and belongs on the heap.
#pragma once

#include "interface/console/perft.h"
#include "interface/console/self_test_tables.h"
#include "interface/line_output.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace brenquil {

/// The runs, on their two tables.
class CSelfTest {
public:
    /// The static score of a position from the view of the side to move.
    using Evaluator = std::function<Score(const CPosition& position)>;

    /// @param sink      takes the lines
    /// @param evaluate  what the run on the evaluation checks
    /// @param chess960  adds the Chess960 positions
    CSelfTest(ILineSink& sink, Evaluator evaluate, bool chess960);

    void TestMoveGeneration();
    void TestBoard();
    void TestEvaluation();

    /// Two runs: on the FENs, and on the moves.
    void TestHash();

    /// Is each position consistent, and are both the same: men on bitboards, mailbox, counts and
    /// keys. The second one is a rebuilt copy of the first.
    [[nodiscard]] static bool AreBoardsRight(const CPosition& position, const CPosition& rebuilt);

    std::vector<PerftTestRow> perftTable;
    std::vector<HashTestRow> hashTable;

private:
    void PrintHead(std::string_view title, std::size_t ruleLength);
    void PrintEnd(bool isPassed);
    void SetFen(std::string_view fen);
    void TestRows(std::string_view title, bool (CSelfTest::*test)(const PerftTestRow& row));
    [[nodiscard]] bool TestCounts(const PerftTestRow& row);
    [[nodiscard]] bool TestMakeAndUndo(const PerftTestRow& row);
    [[nodiscard]] bool WalkBoard(int depth);
    [[nodiscard]] bool IsBoardRight();
    [[nodiscard]] bool TestSymmetry(const PerftTestRow& row);
    [[nodiscard]] bool TestKey(std::uint64_t key);
    [[nodiscard]] bool PlayMoves(std::string_view moves);

    CPerft perft_;  ///< its position is the one under test
    CPosition rebuilt_;
    CLineOutput output_;  ///< has no log
    Evaluator evaluate_;
};

}  // namespace brenquil
