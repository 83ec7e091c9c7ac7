// The two questions that the engine asks the Syzygy tables about a position: its class, and its
// best move.
//
// Neither castling rights nor the en passant square are handed over: the tables are asked as if
// there were none, in the search and at the root. That is deliberate; en passant is seen only when
// it arises in the probe's own moves.
//
// A position with more men than the largest table costs one comparison.
#pragma once

#include "bases/syzygy/syzygy_options.h"
#include "bases/syzygy/syzygy_tables.h"
#include "board/position.h"

#include <cstdint>

namespace brenquil {

/// The answer of a root probe in one word.
///
/// | bits  | meaning                                                     |
/// |-------|-------------------------------------------------------------|
/// | 0-3   | class + 2, with the fifty-move counter taken into account   |
/// | 4-9   | destination of the best move                                |
/// | 10-15 | its origin                                                  |
/// | 16-18 | its promotion, `TbPromotion`                                |
/// | 19    | it is an en passant capture; always 0, see above            |
/// | 20-31 | plies to the next zeroing move                              |
struct TbResult {
    std::uint32_t word;

    [[nodiscard]] constexpr int Class() const noexcept { return word & 15U; }

    [[nodiscard]] constexpr Square To() const noexcept { return word >> 4U & 63U; }

    [[nodiscard]] constexpr Square From() const noexcept { return word >> 10U & 63U; }

    [[nodiscard]] constexpr unsigned Promotion() const noexcept { return word >> 16U & 7U; }

    [[nodiscard]] constexpr bool IsEnPassant() const noexcept { return (word >> 19U & 1U) != 0; }

    [[nodiscard]] constexpr int Distance() const noexcept { return word >> 20U; }

    friend constexpr bool operator==(TbResult, TbResult) = default;
};

inline constexpr TbResult TbResultFailed{0xFFFFFFFF};
inline constexpr TbResult TbResultCheckmate{4};
inline constexpr TbResult TbResultStalemate{2};

/// Answer of `SyzygyProbeWDL` for a position that no table covers.
inline constexpr int TbNoClass = -1;

/// Asks the tables as the options say.
class CSyzygyProbe {
public:
    /// Both outlive the object.
    CSyzygyProbe(CSyzygyTables& tables, const CSyzygyOptions& options) noexcept
        : tables_(&tables), options_(&options) {}

    /// Are the tables in use, and is there any with this many men.
    [[nodiscard]] bool Covers(int men) const noexcept {
        return tables_->Covers(men) && options_->use.enabled;
    }

    /// 0 loss, 1 loss saved by the fifty-move rule, 2 draw, 3 win spoiled by the rule, 4 win, in
    /// the view of the side to move; -1 if no table answers. Any number of threads.
    [[nodiscard]] int SyzygyProbeWDL(const CPosition& position) const;

    /// The best move and what it leads to. For the thread of the command loop only.
    [[nodiscard]] TbResult SyzygyProbeRoot(const CPosition& position) const;

    /// The move of an answer, its score in the upper half: the distance to the next zeroing move,
    /// negative for the loser, 0 for a draw.
    /// @return false for a failure, a checkmate or a stalemate
    [[nodiscard]] bool TbResultToMove(TbResult result, Move& move) const noexcept;

    [[nodiscard]] bool SyzygyRule50() const noexcept { return options_->fiftyMovesRule.enabled; }

    /// 1 for a class that counts as a win, 0 as a draw, -1 as a loss. The two classes beside the
    /// draw are draws as long as the fifty-move rule is in force.
    [[nodiscard]] int SignOf(int tbClass) const noexcept;

private:
    CSyzygyTables* tables_;
    const CSyzygyOptions* options_;
};

}  // namespace brenquil
