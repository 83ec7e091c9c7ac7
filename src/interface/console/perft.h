// Node counts of the move generator, the instrument that proves the board.
//
// An object has a position of its own, at first the start position, and one move list for each
// remaining depth, so that counting allocates nothing. Every leaf is generated, made and taken
// back: no counting of lists, no table. With its lists an object takes some 250 kB and belongs on
// the heap. Its lines go to the sink and never to the log.
#pragma once

#include "board/move_list.h"
#include "board/position.h"
#include "board/position_text.h"
#include "interface/line_output.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace brenquil {

/// Counts nodes below a position and reports line by line.
class CPerft {
public:
    /// Depths run from 0 to this one; the counting functions answer 0 beyond either end.
    static constexpr int MaxDepth = 255;

    /// @param sink      takes the lines
    /// @param notation  of castling in the divided view
    CPerft(ILineSink& sink, CastlingNotation notation);

    /// The moves of the position, pseudo-legal, in the list of that depth.
    /// @param depth  from 0 to MaxDepth
    [[nodiscard]] const MoveList& MoveListFor(int depth);

    /// The number of legal lines of that length.
    [[nodiscard]] std::uint64_t CountNodes(int depth);

    /// Prints one line for each depth from 1 up, and returns the count of the last.
    std::uint64_t Perft(int depth);

    /// Prints the count below each legal move, then total, time and rate.
    void PerftDivide(int depth);

    /// Prints the count below each legal move as "e2e4: 20", an empty line, and the total as "Nodes
    /// searched: 400".
    void PerftSplit(int depth);

    CPosition position;

    /// Called by PerftSplit at least several times a second. May be null.
    std::function<void()> onLongWork;

private:
    [[nodiscard]] std::uint64_t Count(int depth);
    [[nodiscard]] std::uint64_t CountWatched(int depth);

    CLineOutput output_;
    CastlingNotation notation_;
    std::vector<MoveList> lists_;
};

}  // namespace brenquil
