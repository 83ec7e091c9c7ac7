#include "tables/distance_check.h"

#include "bases/nalimov/nalimov_index.h"
#include "platform/bits.h"
#include "tables/ending_exits.h"
#include "tables/rules.h"

#include <cstddef>

namespace brenquil {

namespace {

/// Which places of a file have a position: a bit each, set by any thread.
class CUsedPlaces {
public:
    explicit CUsedPlaces(std::size_t places) : bits_((places + 7) / 8) {}

    void Mark(std::uint64_t place) noexcept {
        if (place / 8 < bits_.size()) {
            std::atomic_ref<std::uint8_t>(bits_[place / 8])
                .fetch_or(ToByte(1U << place % 8), std::memory_order_relaxed);
        }
    }

    [[nodiscard]] bool Has(std::uint64_t place) const noexcept {
        return (bits_[place / 8] >> place % 8 & 1U) != 0;
    }

private:
    std::vector<std::uint8_t> bits_;
};

/// What the moves of a position come to, by the values of the positions after them.
int ExpectedDistance(CEndingNode& node, const CEndingExits<DistanceToMate>& exits,
                     const SolvedValues& values) {
    node.PrepareMoves();
    ExitSum sum = exits.Find(node);
    const Ending& ending = node.Of();
    for (std::size_t man = 0; man < ending.pieces; ++man) {
        if (ending.man[man].colour != node.SideToMove()) {
            continue;
        }
        for (Bitboard targets = node.QuietTargets(man); targets != 0;) {
            EndingSquares after = node.Squares();
            after[man] = PopLowestBit(targets);
            DistanceToMate::Add(sum, values.At(after, ~node.SideToMove()));
        }
    }
    if (!sum.hasMove) {
        return node.IsInCheck() ? DistanceToMate::LossCode(0) : 0;
    }
    return CodeOfExits<DistanceToMate>(sum);
}

/// A place that no position has must say so.
void CheckMarks(const NalimovContents& contents, const std::array<CUsedPlaces, 2>& used,
                CTableFaults& faults) {
    for (std::size_t side = 0; side < contents.size(); ++side) {
        for (std::size_t place = 0; place < contents[side].size(); ++place) {
            if (contents[side][place] != NalimovNoValue && !used[side].Has(place)) {
                faults.Add(CTableFaults::WithoutPosition, [&] {
                    return "place " + std::to_string(place) + " of side " + std::to_string(side) +
                           " has a value and no position";
                });
            }
        }
    }
}

}  // namespace

std::string TextOfDistance(int code) {
    if (code == 0) {
        return "a draw";
    }
    return code > 0 ? "a win in " + std::to_string(code) : "a loss in " + std::to_string(-code - 1);
}

void CheckDistances(const Ending& ending, const SolvedEndings& solved,
                    const NalimovContents& contents, CWorkers& workers, CProgress& progress,
                    CTableFaults& faults) {
    const SolvedValues& values = *solved[ending.number];
    const CEndingExits<DistanceToMate> exits(solved, values);
    std::array<CUsedPlaces, 2> used = {CUsedPlaces(contents[0].size()),
                                       CUsedPlaces(contents[1].size())};
    const bool hasOneFile = HasOneNalimovFile(ending);
    ForPositions(
        ending, values.Index(), workers, progress,
        [&](CEndingIndex::Place, const EndingSquares& squares) {
            return AreInOrder(ending, squares);
        },
        [&](CEndingIndex::Place place, const EndingSquares& squares, Colour colour, std::size_t) {
            const std::size_t side = colour == White || hasOneFile ? 0 : 1;
            used[side].Mark(NalimovPlaceOf(ending, squares, colour, Ending::NoMan));
            const std::int8_t found = values.At(place, colour);
            CEndingNode node(ending, squares, colour);
            const int expected = ExpectedDistance(node, exits, values);
            if (found != expected) {
                faults.Add(CTableFaults::OrderOf(place, colour), [&] {
                    return FaultText(ending, squares, colour, TextOfDistance(found),
                                     TextOfDistance(expected));
                });
            }
            // Positions in which a pawn may be taken in passing have an area of their own.
            ForDoubleSteps(ending, squares, colour, [&](std::size_t victim) {
                const std::uint64_t inPassing = NalimovPlaceOf(ending, squares, colour, victim);
                if (inPassing == CNalimovCalculator::NoIndex) {
                    return;
                }
                used[side].Mark(inPassing);
                bool isTaken = false;
                const std::uint8_t wanted =
                    NalimovByteOf(exits.CodeInPassing(squares, colour, victim, isTaken));
                if (inPassing >= contents[side].size() || contents[side][inPassing] != wanted) {
                    faults.Add(CTableFaults::WithoutPosition - 1, [&] {
                        return FenOfEnding(ending, squares, colour) +
                               " is wrong where a pawn may be taken in passing";
                    });
                }
            });
        });
    CheckMarks(contents, used, faults);
}

std::uint64_t DistanceCheckBytes(const Ending& ending) {
    return (NalimovPlaces(ending, 0) + (HasOneNalimovFile(ending) ? 0 : NalimovPlaces(ending, 1))) /
           8;
}

}  // namespace brenquil
