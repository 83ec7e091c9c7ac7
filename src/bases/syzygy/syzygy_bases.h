// The Syzygy tables as sources of ready answers: win/draw/loss scores for the search, and the move
// to play at the root.
#pragma once

#include "bases/base.h"
#include "bases/syzygy/syzygy_probe.h"
#include "bases/syzygy/tb_material.h"

namespace brenquil {

/// Answers in the search, and in the move listing where no other table does.
class CSyzygyBasesWDL final : public IBase {
public:
    static constexpr int MostMen = TbMaxTableMen;

    /// Both outlive the object.
    CSyzygyBasesWDL(CSyzygyTables& tables, const CSyzygyOptions& options) noexcept
        : probe_(tables, options) {}

    [[nodiscard]] std::uint32_t GetPriority() const override { return 3; }

    /// A mate score for a win or a loss, as if the mate were here: the tables know no distance to
    /// it.
    [[nodiscard]] bool ProbeSearch(Score& score, const CPosition& position, int depth,
                                   int ply) override;

    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition& position) override;

    /// "+M?" for a move that wins, "-M?" for one that loses, "0" for a draw.
    [[nodiscard]] bool ProbeMoveInfo(BaseMoveInfo& info, Move move,
                                     const CPosition& position) override;

private:
    CSyzygyProbe probe_;
};

/// Answers at the root with the move that zeroes the fifty-move counter soonest, and in the move
/// listing with a line of such moves.
class CSyzygyBasesDTZ final : public IBase {
public:
    /// Both outlive the object.
    CSyzygyBasesDTZ(CSyzygyTables& tables, const CSyzygyOptions& options) noexcept
        : probe_(tables, options) {}

    [[nodiscard]] std::uint32_t GetPriority() const override { return 1; }

    [[nodiscard]] bool ProbeSearch(Score& score, const CPosition& position, int depth,
                                   int ply) override;

    /// The score is a number of plies towards the next capture or pawn move.
    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition& position) override;

    /// "+Z" or "-Z" and the number of plies, "0" for a draw. The row's sort score, unlike the text,
    /// is in White's view.
    [[nodiscard]] bool ProbeMoveInfo(BaseMoveInfo& info, Move move,
                                     const CPosition& position) override;

private:
    CSyzygyProbe probe_;
};

}  // namespace brenquil
