#include "search/time_control.h"

#include "board/score.h"
#include "platform/clock.h"

#include <algorithm>
#include <cassert>

namespace brenquil {

namespace {

constexpr std::uint32_t MovesBeyondControl = 10;  // kept in reserve
constexpr std::uint32_t ShortClock = 5000;        // ms; below, the increment is not spent
constexpr std::uint32_t HardPerSoft = 3;
constexpr std::int32_t StatusInterval = 1000;  // ms

}  // namespace

CTimeControl::CTimeControl() noexcept
    : startTicks_(TickCount()), startClock_(WallClock()), statusTicks_(startTicks_) {}

void CTimeControl::Start(const SearchLimits& limits, Colour sideToMove,
                         bool pausesToPonder) noexcept {
    limits_ = limits;
    startTicks_ = TickCount();
    startClock_ = WallClock();
    statusTicks_ = startTicks_;
    countedFrom_ = startTicks_;
    pausesToPonder_ = pausesToPonder;
    pause_ = pausesToPonder && limits.ponder;
    ShareOut(sideToMove);
}

/// All of this is arithmetic on unsigned 32-bit milliseconds: negative numbers of a `go` line are
/// very long times.
void CTimeControl::ShareOut(Colour sideToMove) noexcept {
    softLimit_ = NoLimit;
    hardLimit_ = NoLimit;
    const bool isWhite = sideToMove == White;
    const std::int32_t clock = isWhite ? limits_.wtime : limits_.btime;
    if (clock != ClockNotGiven) {
        const std::uint32_t time = clock;
        const std::uint32_t increment = isWhite ? limits_.winc : limits_.binc;
        const std::uint32_t moves = limits_.movestogo + MovesBeyondControl;
        softLimit_ = time / std::max(moves, 1U) + (time > ShortClock ? increment : 0);
        hardLimit_ = std::min(HardPerSoft * softLimit_, time / 2);
    }
    if (limits_.movetime != ClockNotGiven) {
        softLimit_ = limits_.movetime;
        hardLimit_ = softLimit_;
    }
}

int CTimeControl::IterationBound() const noexcept {
    if (limits_.mate != 0) {
        return std::min(limits_.mate, DeepestIteration) + 1;  // plies, not moves
    }
    return (limits_.depth > 0 ? std::min(limits_.depth, DeepestIteration) : DeepestIteration) + 1;
}

bool CTimeControl::MayFinish(Score score, int depth) const noexcept {
    assert(depth > 0);
    // Negative when this side is mated, which ends the search at any depth.
    const int distance = MateDistance(score);
    if (distance != 0 && depth >= distance) {
        return true;
    }
    return softLimit_ != NoLimit && CountedTicks() > softLimit_;
}

bool CTimeControl::IsHardLimitPassed() const noexcept {
    return !IsPaused() && !limits_.infinite && hardLimit_ != NoLimit && CountedTicks() > hardLimit_;
}

bool CTimeControl::IsStatusDue() noexcept {
    const std::uint32_t now = TickCount();
    const std::int32_t passed = now - statusTicks_;
    if (passed < StatusInterval) {
        return false;
    }
    statusTicks_ = now;
    return true;
}

void CTimeControl::ClearPause() noexcept {
    if (IsPaused()) {
        countedFrom_ = TickCount();
        pause_.store(false, std::memory_order_release);
    }
}

std::uint32_t CTimeControl::CountedTicks() const noexcept {
    return TickCount() - countedFrom_;
}

std::uint32_t CTimeControl::Ticks() const noexcept {
    return TickCount() - startTicks_;
}

int CTimeControl::Clock() const noexcept {
    const std::uint32_t now = WallClock();
    return now - startClock_;
}

}  // namespace brenquil
