#include "board/score.h"
#include "platform/clock.h"
#include "search/search.h"

#include <algorithm>

namespace brenquil {

namespace {

constexpr std::uint32_t MovesBeyondControl = 10;  // kept in reserve
constexpr std::uint32_t ShortClock = 5000;        // ms; below, the increment is not spent
constexpr std::uint32_t HardPerSoft = 3;
constexpr std::int32_t StatusInterval = 1000;  // ms

}  // namespace

/// All of this is arithmetic on unsigned 32-bit milliseconds: negative numbers of a `go` line are
/// very long times.
void CSearch::AllocateTime() noexcept {
    const bool isWhite = position_.sideToMove == White;
    const std::int32_t clock = isWhite ? limits_.wtime : limits_.btime;
    if (clock != ClockNotGiven) {
        const auto time = static_cast<std::uint32_t>(clock);
        const auto increment = static_cast<std::uint32_t>(isWhite ? limits_.winc : limits_.binc);
        const std::uint32_t moves =
            static_cast<std::uint32_t>(limits_.movestogo) + MovesBeyondControl;
        softLimit_ = time / std::max(moves, 1U) + (time > ShortClock ? increment : 0);
        hardLimit_ = std::min(HardPerSoft * softLimit_, time / 2);
    }
    if (limits_.movetime != ClockNotGiven) {
        softLimit_ = static_cast<std::uint32_t>(limits_.movetime);
        hardLimit_ = softLimit_;
    }
}

std::uint32_t CSearch::Elapsed() const noexcept {
    return TickCount() - startTick_;
}

/// Between iterations, for searches that decide themselves when to end.
bool CSearch::MayFinish(Score score, std::int32_t depth) const noexcept {
    // Negative when this side is mated, which ends the search at any depth.
    const std::int32_t distance = MateDistance(score);
    if (distance != 0 && depth >= distance) {
        return true;
    }
    return softLimit_ != NoTimeLimit && Elapsed() > softLimit_;
}

void CSearch::CheckMasterLimits() noexcept {
    if (limits_.nodes != 0 &&
        nodes_ + workers_->Nodes() >= static_cast<std::uint64_t>(limits_.nodes)) {
        stop_ = true;
    }
    if (--countdown_ > 0) {
        return;
    }
    countdown_ = CountdownStart;
    CheckClock();
}

/// A pondering search keeps to the hard limit as if the move were on the board.
void CSearch::CheckClock() noexcept {
    if (!pause_ && !limits_.infinite && hardLimit_ != NoTimeLimit && Elapsed() > hardLimit_) {
        stop_ = true;
    }
    const std::uint32_t now = TickCount();
    if (static_cast<std::int32_t>(now - lastTick_) < StatusInterval) {
        return;
    }
    lastTick_ = now;
    outputMoves_ = true;
    OutputStatus();
}

SearchStatistics CSearch::Statistics() const noexcept {
    return {nodes_ + workers_->Nodes(), hash_.Hashfull(), bases_.hits};
}

void CSearch::OutputStatus() {
    receiver_->PrintStats(Statistics());
    if (currentLine_.count > 0) {
        receiver_->PrintCurrentLine(currentLine_);
    }
}

}  // namespace brenquil
