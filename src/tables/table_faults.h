// What a check of a table finds, and the walk over its positions.
#pragma once

#include "tables/ending_index.h"
#include "tables/ending_node.h"
#include "tables/progress.h"
#include "tables/workers.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

namespace brenquil {

/// Counts faults of a table and describes the first one by its place, whatever thread meets it.
class CTableFaults {
public:
    /// Faults that have no position are told when there are no others.
    static constexpr std::uint64_t WithoutPosition = ~std::uint64_t{0};

    /// What a fault of a position is ordered by.
    [[nodiscard]] static constexpr std::uint64_t OrderOf(CEndingIndex::Place place,
                                                         Colour sideToMove) noexcept {
        return place.slice << 40U | place.index << 1U | sideToMove;
    }

    void Add(std::uint64_t order, const std::function<std::string()>& describe) {
        ++count_;
        const std::lock_guard guard(mutex_);
        if (first_.empty() || order < firstOrder_) {
            firstOrder_ = order;
            first_ = describe();
        }
    }

    /// "3 faults, the first: ..."; empty if there are none.
    [[nodiscard]] std::string Text() const {
        return count_ == 0
                 ? std::string()
                 : CountText(count_) + (count_ == 1 ? " fault: " : " faults, the first: ") + first_;
    }

private:
    std::atomic<std::uint64_t> count_{0};
    std::mutex mutex_;
    std::uint64_t firstOrder_ = 0;
    std::string first_;
};

/// "8/8/... w - - 0 1 holds X, should be Y".
[[nodiscard]] inline std::string FaultText(const Ending& ending, const EndingSquares& squares,
                                           Colour sideToMove, const std::string& found,
                                           const std::string& expected) {
    return FenOfEnding(ending, squares, sideToMove) + " holds " + found + ", should be " + expected;
}

/// Calls `look(place, squares, side to move, thread)` for the legal positions of all places for
/// which `isWanted(place, squares)` is true, shared out among the threads.
template <class IsWanted, class Look>
void ForPositions(const Ending& ending, const CEndingIndex& index, CWorkers& workers,
                  CProgress& progress, const IsWanted& isWanted, const Look& look) {
    constexpr std::size_t CheckingChunk = std::size_t{1} << 14U;
    const std::size_t chunks = (index.SliceSize() + CheckingChunk - 1) / CheckingChunk;
    const std::size_t count = chunks * index.Slices();
    progress.BeginPhase("checking", 2 * std::uint64_t{index.SliceSize()} * index.Slices());
    std::atomic<std::size_t> done{0};
    workers.ForEach(count, [&](std::size_t item, std::size_t thread) {
        const std::size_t first = item % chunks * CheckingChunk;
        const std::size_t end = std::min(index.SliceSize(), first + CheckingChunk);
        for (std::size_t at = first; at < end; ++at) {
            const CEndingIndex::Place place = {item / chunks, at};
            const EndingSquares squares = index.SquaresOf(place);
            if (!isWanted(place, squares)) {
                continue;
            }
            for (const Colour colour : {White, Black}) {
                if (CEndingNode(ending, squares, colour).IsLegal()) {
                    look(place, squares, colour, thread);
                }
            }
        }
        const std::size_t finished = done.fetch_add(1, std::memory_order_relaxed) + 1;
        if (thread == 0) {
            progress.Report(Share(finished, count));
        }
    });
}

}  // namespace brenquil
