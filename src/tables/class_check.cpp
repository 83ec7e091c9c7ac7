#include "tables/class_check.h"

#include "bases/syzygy/syzygy_tables.h"
#include "bases/syzygy/tb_lookup.h"
#include "bases/syzygy/tb_probe.h"
#include "tables/distance_check.h"
#include "tables/quiet_host.h"
#include "tables/syzygy_family.h"

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace brenquil {

namespace {

constexpr int SignOf(int value) noexcept {
    return value == 0 ? 0 : value > 0 ? 1 : -1;
}

/// The reader's tables; distances are for one thread only, so each has its own.
struct OpenTables {
    CQuietHost host;
    CSyzygyTables tables{host};
};

/// The distance, where the table holds that side to move: what the reader makes of the other side
/// follows from it.
void CheckDistance(CSyzygyTables& tables, const Ending& ending, const EndingSquares& squares,
                   Colour colour, DistanceToZeroing::Code code, std::uint64_t order,
                   CTableFaults& faults) {
    if (code == 0) {
        return;
    }
    const TbPosition position = TbPositionOf(ending, squares, colour);
    const DtzEntry* const entry = tables.TbFindDtz(position);
    int stored = 0;
    if (entry != nullptr && LookUpDtz(*entry, position, DistanceToZeroing::ValueOf(code), stored) ==
                                TbSuccess::OtherSide) {
        return;
    }
    // Plies are held in halves. Mates count as far as one ply.
    const int expected = SignOf(code) * std::max(1, DistanceToZeroing::PliesOf(code));
    TbSuccess success = TbSuccess::Failed;
    const int found = TbProbeDtz(tables, position, success);
    if (success == TbSuccess::Failed || std::abs(found - expected) > 1) {
        faults.Add(order, [&] {
            return FaultText(ending, squares, colour, "distance " + std::to_string(found),
                             std::to_string(expected));
        });
    }
}

}  // namespace

void CheckClasses(const std::string& folder, const ZeroingCodes& codes,
                  const SolvedValues* distances, CWorkers& workers, CProgress& progress,
                  CTableFaults& faults) {
    const Ending& ending = codes.Of();
    const CEndingIndex& index = codes.Index();
    std::vector<std::unique_ptr<OpenTables>> opened(workers.Count());
    for (std::unique_ptr<OpenTables>& open : opened) {
        open = std::make_unique<OpenTables>();
        (void)open->tables.SyzygyInit(folder);
    }
    ForPositions(
        ending, index, workers, progress,
        [&](CEndingIndex::Place place, const EndingSquares& squares) {
            return index.IsCanonical(place, squares);
        },
        [&](CEndingIndex::Place place, const EndingSquares& squares, Colour colour,
            std::size_t thread) {
            CSyzygyTables& tables = opened[thread]->tables;
            const std::uint64_t order = CTableFaults::OrderOf(place, colour);
            const DistanceToZeroing::Code code = codes.At(place, colour);
            const TbPosition position = TbPositionOf(ending, squares, colour);
            TbSuccess success = TbSuccess::Failed;

            const int right = DistanceToZeroing::ValueOf(code);
            const int found = TbProbeWdl(tables, position, success);
            if (success == TbSuccess::Failed || found != right) {
                faults.Add(order, [&] {
                    return FaultText(ending, squares, colour, "class " + std::to_string(found),
                                     "class " + std::to_string(right));
                });
            }

            CheckDistance(tables, ending, squares, colour, code, order, faults);
            if (distances != nullptr && SignOf(distances->At(place, colour)) != SignOf(right)) {
                faults.Add(order, [&] {
                    return FenOfEnding(ending, squares, colour) + ": the Nalimov table has " +
                           TextOfDistance(distances->At(place, colour)) + ", the class is " +
                           std::to_string(right);
                });
            }
        });
}

}  // namespace brenquil
