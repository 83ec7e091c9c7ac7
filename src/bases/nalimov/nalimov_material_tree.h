// From the piece counts of a position to the number of its table.
//
// A tree of ten levels, one for each count, in the order white pawns, knights, bishops, rooks,
// queens, then the same of Black. Together the counts are at most 4, so a node knows how many men
// are left for it and has a child for each number up to that. Finding a table is ten loads.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace brenquil {

/// White's pawns, knights, bishops, rooks and queens, then Black's.
using NalimovCounts = std::array<int, 10>;

class CNalimovMaterialTree {
public:
    /// A tree without tables.
    CNalimovMaterialTree();

    /// Sets the table of these counts. False when there are too many men for the tree.
    [[nodiscard]] bool Enter(const NalimovCounts& counts, int table) noexcept;

    /// The number entered for these counts: positive where White is the first side of the table,
    /// negative where Black is, 0 where there is no table or there are too many men.
    [[nodiscard]] int Find(const NalimovCounts& counts) const noexcept;

private:
    static constexpr int MostMen = 4;
    static constexpr std::size_t NoEntry = 0;

    int AddNode(int level, int limit);
    [[nodiscard]] std::size_t EntryOf(const NalimovCounts& counts) const noexcept;

    /// All nodes: first the limit, then limit + 1 entries, which are the places of the children
    /// or, on the last level, table numbers. Place 0 is taken by nothing.
    std::vector<int> nodes_{0};
    int root_ = 0;
};

}  // namespace brenquil
