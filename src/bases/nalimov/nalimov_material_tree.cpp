#include "bases/nalimov/nalimov_material_tree.h"

#include <tuple>

namespace brenquil {

namespace {

constexpr int Levels = std::tuple_size_v<NalimovCounts>;

}  // namespace

CNalimovMaterialTree::CNalimovMaterialTree() : root_(AddNode(0, MostMen)) {}

int CNalimovMaterialTree::AddNode(int level, int limit) {
    const std::size_t place = nodes_.size();
    nodes_.push_back(limit);
    nodes_.resize(nodes_.size() + limit + 1, 0);
    if (level + 1 < Levels) {
        for (int count = 0; count <= limit; ++count) {
            const int child = AddNode(level + 1, limit - count);
            nodes_[place + 1 + count] = child;
        }
    }
    return static_cast<int>(place);
}

std::size_t CNalimovMaterialTree::EntryOf(const NalimovCounts& counts) const noexcept {
    std::size_t place = root_;
    for (std::size_t level = 0;; ++level) {
        const int count = counts[level];
        if (count < 0 || count > nodes_[place]) {
            return NoEntry;
        }
        const std::size_t entry = place + 1 + count;
        if (level + 1 == counts.size()) {
            return entry;
        }
        place = nodes_[entry];
    }
}

bool CNalimovMaterialTree::Enter(const NalimovCounts& counts, int table) noexcept {
    const std::size_t entry = EntryOf(counts);
    if (entry == NoEntry) {
        return false;
    }
    nodes_[entry] = table;
    return true;
}

int CNalimovMaterialTree::Find(const NalimovCounts& counts) const noexcept {
    const std::size_t entry = EntryOf(counts);
    return entry == NoEntry ? 0 : nodes_[entry];
}

}  // namespace brenquil
