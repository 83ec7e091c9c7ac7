// Counts over whole tables: positions, wins, draws, losses, the longest mate, and how distances are
// spread.
//
// Positions are counted once up to the symmetries of the board, like men not told apart; only those
// that can be, and without the right to take in passing.
#pragma once

#include "tables/progress.h"
#include "tables/workers.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace brenquil {

/// The counts of one side to move.
struct SideStatistics {
    std::uint64_t wins = 0;
    std::uint64_t draws = 0;
    std::uint64_t losses = 0;
    std::uint64_t spoilt = 0;    ///< wins and losses that the fifty-move rule turns into draws
    int longest = 0;             ///< moves of the longest mate, or plies to a zeroing move
    bool longestIsLoss = false;  ///< for the side to move
    std::string longestFen;      ///< a position that has it; empty if there is none
    std::vector<std::uint64_t> winsIn;    ///< by distance
    std::vector<std::uint64_t> lossesIn;  ///< by distance

    [[nodiscard]] std::uint64_t Positions() const noexcept { return wins + draws + losses; }
};

struct TableStatistics {
    std::string name;
    bool isSyzygy = false;
    std::array<SideStatistics, 2> sides;  ///< White to move, Black to move
};

struct FolderStatistics {
    std::vector<TableStatistics> tables;
    std::vector<std::string> faults;  ///< what is wrong with those that are left out
};

/// The statistics of all tables in a folder. Throws `CTableError` when there are none.
[[nodiscard]] FolderStatistics CollectStatistics(const std::string& folder,
                                                 std::uint64_t memoryBytes, CWorkers& workers,
                                                 CProgress& progress);

enum class StatisticsForm { Text, Markdown, Picture };

/// The statistics as columns, as a table in Markdown or as an SVG picture: for each ending a bar of
/// won, drawn and lost for each side to move, and the histogram of the distances.
[[nodiscard]] std::string StatisticsText(const std::vector<TableStatistics>& tables,
                                         StatisticsForm form);

}  // namespace brenquil
