// The levels above the node, which only the master's thread has: iterative deepening, the choice of
// root moves, the lines of MultiPV, and every report.
//
//     if (root.Begin(limits)) {   // before the thread starts; false when the answer was ready
//         root.Think();           // on the thread: deepens, reports, prints the best move
//     }
//
// The tree below is the work of the thread's `CSearch`, which knows this object as its
// `ISearchMaster`. When the search ends is decided by the rules of `CTimeControl`.
#pragma once

#include "bases/base.h"
#include "board/move_generator.h"
#include "board/move_list.h"
#include "board/position.h"
#include "board/score.h"
#include "platform/relaxed.h"
#include "search/hash_table.h"
#include "search/search.h"
#include "search/search_limits.h"
#include "search/search_manners.h"
#include "search/search_master.h"
#include "search/search_options.h"
#include "search/search_receiver.h"
#include "search/time_control.h"
#include "search/workers.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace brenquil {

class CRootSearch final : private ISearchMaster {
public:
    /// All outlive this object. The position is the one that `search` is bound to.
    CRootSearch(CSearch& search, CPosition& position, const SearchContext& context,
                IWorkers& workers, ISearchReceiver& receiver,
                const SearchManners& manners = {}) noexcept;

    /// All that comes before the thread of a search: tells the receiver the root, asks the bases,
    /// and readies the table, the clock and the record. False when a base has answered: its move
    /// has been reported as the best, and neither the clock nor the age of the table has changed.
    [[nodiscard]] bool Begin(const SearchLimits& limits);

    /// The part of `Begin` after the table: forgets the last search and starts the clock. A stop
    /// that is requested from here on counts.
    void Prepare(const SearchLimits& limits) noexcept;

    /// Deepens until a limit or a stop, reports on the way and prints the best move. The nodes of
    /// the `CSearch` are those of all threads at the end.
    void Think();

    /// The move that is pondered over has been played. Any thread may call it.
    void ClearPause() noexcept { timeControl_.ClearPause(); }

    /// Nobody waits for more: the search stops, and its answer is held back no longer. Any thread
    /// may call it.
    void Release() noexcept {
        isReleased_ = true;
        search_.RequestStop();
    }

private:
    /// A root move's line, kept while "MultiPV" asks for more than one.
    struct ScoredLine {
        PvLine line;
        Score score = 0;
    };

    static constexpr std::size_t LineSlots = 20;
    static constexpr std::int64_t ChecksPerLookAtClock = 8191;

    // What the search asks and tells.
    [[nodiscard]] std::int64_t LookAtLimits() noexcept override;
    [[nodiscard]] bool IsRootMoveWanted(Move move) const noexcept override;
    void RootMoveBegins(Move move, int number) override;
    void RootMoveEnds(Move move, int depth) override;
    void RootMoveIsScored(Move move, Score value) noexcept override;

    [[nodiscard]] bool AnswerFromBases(const MoveList& wanted);
    [[nodiscard]] bool IsPlayable(Move move, const MoveList& wanted);
    [[nodiscard]] Move FirstMove();
    void Iterate();
    void HoldBack() noexcept;
    [[nodiscard]] bool DropWorstLine(Score value) noexcept;
    void NameSomeMove();
    void FinishLine(PvLine& line, int length) noexcept;
    void LookAtClock() noexcept;
    void ExtractHashLine(PvLine& line, int maxLength) noexcept;
    void OutputPv(int depth, Score score);
    void OutputLines(int depth, int selectiveDepth);
    void PrintStatus();
    void PrintResult();
    [[nodiscard]] std::uint64_t Nodes() const noexcept;
    [[nodiscard]] SearchStatistics Statistics() const noexcept;

    CSearch& search_;
    CPosition& position_;
    CHashTable& hash_;
    CBaseList& bases_;
    const CSearchOptions& options_;
    CMoveGenerator generator_;
    IWorkers& workers_;
    ISearchReceiver& receiver_;
    const SearchManners manners_;
    CTimeControl timeControl_;
    std::int64_t checksToClock_ = ChecksPerLookAtClock;  ///< used under a node limit
    bool areMovesReported_ = false;  ///< each root move; from the first status line on
    Relaxed<bool> isReleased_{false};
    PvLine bestLine_;                ///< of the last finished iteration
    Score firstScore_ = -MateScore;  ///< of a first iteration that was stopped
    std::array<ScoredLine, LineSlots> lines_;
    std::size_t lineCount_ = 0;
};

}  // namespace brenquil
