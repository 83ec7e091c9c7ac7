// What every source of ready answers has in common: opening book and endgame tables.
//
// The rest of the engine knows only the list of these objects and asks it at three moments: at a
// node of the search for a score, at the root before any search for a move, and in the console's
// move listing for a mark beside a move. The first object of the list that answers ends the asking.
#pragma once

#include "board/move_list.h"
#include "board/position.h"
#include "board/types.h"
#include "platform/relaxed.h"

#include <cstdint>
#include <string>
#include <vector>

namespace brenquil {

/// One row of the move listing.
struct BaseMoveInfo {
    Move move{0};      ///< its upper half is the signed sort score of the row
    std::string text;  ///< the mark shown beside the move
    PvLine line;       ///< moves that follow it
};

/// One source of answers. No operation reports an error: false sends the question on to the next.
class IBase {
public:
    IBase() = default;
    IBase(const IBase&) = delete;
    IBase& operator=(const IBase&) = delete;
    virtual ~IBase() = default;

    /// Rank in the list, 0 (asked first) to 3.
    [[nodiscard]] virtual std::uint32_t GetPriority() const = 0;

    /// Asked by all search threads at once, each with its own position. `score` is from the view of
    /// the side to move.
    [[nodiscard]] virtual bool ProbeSearch(Score& score, const CPosition& position, int depth,
                                           int ply) = 0;

    /// Asked by `go`. The upper half of `move` is its signed score, in the units of the source.
    [[nodiscard]] virtual bool ProbeRoot(Move& move, const CPosition& position) = 0;

    /// Asked by the move listing, with the position before the move.
    [[nodiscard]] virtual bool ProbeMoveInfo(BaseMoveInfo& info, Move move,
                                             const CPosition& position) = 0;
};

/// The sources in the order in which they are asked, and how often they have answered.
class CBaseList {
public:
    static constexpr std::uint32_t Priorities = 4;
    static constexpr int AnyMen = 64;

    /// Adds an object that outlives the list and orders the list by priority, equal ones as they
    /// came. An object of a priority outside 0 to 3 is dropped. `menInSearch` is the number of men
    /// above which the object never answers in the search, 0 if it never does.
    void Add(IBase& base, int menInSearch = AnyMen);

    [[nodiscard]] const std::vector<IBase*>& Bases() const noexcept { return bases_; }

    /// First answer of the list for a node; counts it. Nearly every node of a game has more men
    /// than any table, so these pay for one comparison and ask nobody.
    [[nodiscard]] bool ProbeSearch(Score& score, const CPosition& position, int depth, int ply) {
        if (position.MenCount() > menInSearch_) [[likely]] {
            return false;
        }
        return AskInSearch(score, position, depth, ply);
    }

    /// First answer of the list for a root move; counts it.
    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition& position);

    /// Answers since the last `go`. All search threads count without a lock; a lost one is
    /// accepted.
    Relaxed<std::uint64_t> hits{0};

private:
    [[nodiscard]] bool AskInSearch(Score& score, const CPosition& position, int depth, int ply);

    std::vector<IBase*> bases_;
    std::vector<IBase*> askedInSearch_;  ///< those that ever answer there, in the same order
    int menInSearch_ = 0;                ///< largest of all objects
};

}  // namespace brenquil
