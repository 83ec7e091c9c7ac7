// What a search has to say, and to whom: the search reports through this receiver and never knows
// how a line is printed.
#pragma once

#include "board/move_list.h"
#include "board/position.h"
#include "board/types.h"

#include <cstdint>

namespace brenquil {

/// Figures of the moment, taken by the reporting search.
struct SearchStatistics {
    std::uint64_t nodes = 0;     ///< of all threads together
    std::uint32_t hashfull = 0;  ///< entries written by this search, in thousandths of the table
    std::uint64_t baseHits = 0;
    std::uint32_t ticks = 0;  ///< milliseconds since the search began, wraps
    std::int32_t clock = 0;   ///< the same by the clock of the program
};

/// One finished line of one iteration.
struct PvReport {
    int depth = 0;
    int selectiveDepth = 0;
    Score score = 0;
    Score alpha = 0;  ///< a score below is an upper bound
    Score beta = 0;   ///< a score above is a lower bound
    const PvLine* line = nullptr;
    int multiPv = 0;  ///< 1 and up; 0 when only one line is asked for
};

/// Called on the master's thread, or before it starts. Moves are those of lines that begin at the
/// search's root.
class ISearchReceiver {
public:
    ISearchReceiver() = default;
    ISearchReceiver(const ISearchReceiver&) = delete;
    ISearchReceiver& operator=(const ISearchReceiver&) = delete;
    virtual ~ISearchReceiver() = default;

    /// The position that the next lines begin from; called before any of them.
    virtual void SetRoot(const CPosition& root) = 0;

    virtual void PrintPv(const PvReport& report, const SearchStatistics& statistics) = 0;

    /// `number` counts the root moves of the iteration from 1.
    virtual void PrintCurrMove(Move move, int number) = 0;

    /// `line` is the reply that refutes `move`, without the move itself.
    virtual void PrintRefutation(Move move, const PvLine& line) = 0;

    virtual void PrintStats(const SearchStatistics& statistics) = 0;

    /// The moves from the root to the node that the master is at; called after `PrintStats`.
    virtual void PrintCurrentLine(const PvLine& line) = 0;

    /// The end of a search. `ponder` is `NoMove` when the line has no second move.
    virtual void PrintBestMove(Move best, Move ponder) = 0;

    /// The end of a search that found nothing to play.
    virtual void PrintNoBestMove() = 0;
};

}  // namespace brenquil
