// The contents of Syzygy files: which value each number of a table must have, and the file around
// the compressed values.
//
// A table need not be right where a reader does not ask it. Where a capture or promotion is as good
// as the position is, a class may be anything that is not better; a distance is asked for only
// where it does not follow from a capture or a pawn move. Positions that cannot be may have any
// value. What is free is chosen so that it compresses well.
#pragma once

#include "tables/byte_list.h"
#include "tables/ending_values.h"
#include "tables/progress.h"
#include "tables/rules.h"
#include "tables/workers.h"

#include <cstdint>
#include <span>

namespace brenquil {

using ZeroingCodes = CEndingValues<DistanceToZeroing::Code>;

/// What a reader asks of each place, in the solver's numbering, one byte a place.
class CSyzygyDemands {
public:
    CSyzygyDemands(const ZeroingCodes& codes, const SolvedEndings& solved, CWorkers& workers,
                   CProgress& progress);

    [[nodiscard]] std::uint8_t At(CEndingIndex::Place place, Colour sideToMove) const noexcept {
        return demands_.At(place, sideToMove);
    }

    static constexpr std::uint8_t Anything = 0xFF;  ///< no position
    static constexpr std::uint8_t ClassMask = 7;    ///< class + 2
    static constexpr std::uint8_t AtMost = 8;       ///< any class up to that one will do
    static constexpr std::uint8_t Distance = 16;    ///< the distance is asked for

private:
    CEndingValues<std::uint8_t> demands_;
};

/// The bytes of both files.
struct SyzygyFiles {
    ByteList wdl;
    ByteList dtz;
};

[[nodiscard]] SyzygyFiles MakeSyzygyFiles(const ZeroingCodes& codes, const CSyzygyDemands& demands,
                                          CWorkers& workers, CProgress& progress);

/// Whether a file ends with the sum that this program puts there, and whether that is right. Files
/// of other makers end differently, and nothing is known of that.
enum class SyzygySum { Right, Wrong, None };

[[nodiscard]] SyzygySum CheckSyzygySum(std::span<const std::uint8_t> file) noexcept;

}  // namespace brenquil
