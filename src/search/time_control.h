// The limits of a search: what `go` asks for, and the clock that it is measured by.
//
// Only the master's search has limits. A worker knows nothing of them and searches until it is told
// to stop.
//
// There are two time limits. The soft one is tested between iterations, the hard one inside the
// tree, at every 8191st check or so. Times are milliseconds of a clock that wraps at 32 bits.
#pragma once

#include "board/types.h"
#include "platform/relaxed.h"
#include "search/search_limits.h"

#include <atomic>
#include <cstdint>

namespace brenquil {

class CTimeControl {
public:
    /// Without limits; the clock runs from here until the first search.
    CTimeControl() noexcept;

    /// Takes over the limits, starts the clock and shares the time out.
    /// @param pausesToPonder  the time limits of `ponder` count from the hit
    void Start(const SearchLimits& limits, Colour sideToMove, bool pausesToPonder = false) noexcept;

    [[nodiscard]] const SearchLimits& Limits() const noexcept { return limits_; }

    /// The first depth that is too deep to be searched: 255 at most, and 1 or less for a negative
    /// `mate`, which leaves nothing to search.
    [[nodiscard]] int IterationBound() const noexcept;

    /// The search holds its move back until it is stopped, or until the hard limit passes.
    [[nodiscard]] bool IsUnbounded() const noexcept {
        return limits_.infinite || (pausesToPonder_ ? IsPaused() : limits_.ponder);
    }

    /// After an iteration of this depth and score: whether a search that may end by itself should.
    /// A mate that no deeper iteration can shorten ends it, and so does the soft limit.
    [[nodiscard]] bool MayFinish(Score score, int depth) const noexcept;

    [[nodiscard]] bool HasNodeLimit() const noexcept { return limits_.nodes != 0; }

    /// `nodes` counts those of all threads. A negative limit is never reached.
    [[nodiscard]] bool IsNodeLimitReached(std::uint64_t nodes) const noexcept {
        return HasNodeLimit() && nodes >= static_cast<std::uint64_t>(limits_.nodes);
    }

    /// A pondering search keeps to the hard limit as if the move were on the board, unless it was
    /// started with a pause.
    [[nodiscard]] bool IsHardLimitPassed() const noexcept;

    /// True once a second at most; a second begins at the start and with each true answer.
    [[nodiscard]] bool IsStatusDue() noexcept;

    /// Milliseconds since the last `Start`, for decisions and for reports alike.
    [[nodiscard]] std::uint32_t Ticks() const noexcept;

    /// The same by the clock of the program, for the figure of the processor load.
    [[nodiscard]] std::int32_t Clock() const noexcept;

    /// Lets the time limits count from now on. Without a pause they do already. Any thread may call
    /// it.
    void ClearPause() noexcept;

private:
    static constexpr std::uint32_t NoLimit = 0xFFFFFFFF;

    void ShareOut(Colour sideToMove) noexcept;

    [[nodiscard]] bool IsPaused() const noexcept { return pause_.load(std::memory_order_acquire); }

    /// Milliseconds that the limits are held against.
    [[nodiscard]] std::uint32_t CountedTicks() const noexcept;

    SearchLimits limits_;
    std::uint32_t startTicks_;
    std::uint32_t startClock_;
    std::uint32_t statusTicks_;  ///< of the last status
    std::uint32_t softLimit_ = NoLimit;
    std::uint32_t hardLimit_ = NoLimit;
    bool pausesToPonder_ = false;
    Relaxed<std::uint32_t> countedFrom_{0};  ///< written before the pause ends
    std::atomic<bool> pause_{false};
};

}  // namespace brenquil
