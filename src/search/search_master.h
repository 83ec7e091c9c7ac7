// What the search in the tree asks the object above it and tells it, in the one thread that has
// such an object.
#pragma once

#include "board/types.h"

#include <cstdint>

namespace brenquil {

/// The upper half of the master's search. Called on the master's thread, from inside the tree.
class ISearchMaster {
public:
    ISearchMaster() = default;
    ISearchMaster(const ISearchMaster&) = delete;
    ISearchMaster& operator=(const ISearchMaster&) = delete;
    virtual ~ISearchMaster() = default;

    /// Tests the limits and stops the search when one is reached. Returns after how many checks the
    /// next look is due, 1 or more.
    [[nodiscard]] virtual std::int64_t LookAtLimits() noexcept = 0;

    /// Whether this root move is to be searched.
    [[nodiscard]] virtual bool IsRootMoveWanted(Move move) const noexcept = 0;

    /// The root move stands on the board and is about to be searched. `number` counts from 1.
    virtual void RootMoveBegins(Move move, int number) = 0;

    /// The root move has been searched, or the search was stopped, and still stands on the board.
    virtual void RootMoveEnds(Move move, int depth) = 0;

    /// The root move has this value and has been taken back. Not called when the search was
    /// stopped.
    virtual void RootMoveIsScored(Move move, Score value) noexcept = 0;
};

}  // namespace brenquil
