#include "tables/huffman.h"

#include <algorithm>
#include <functional>
#include <queue>
#include <utility>

namespace brenquil {

namespace {

/// Depths of the leaves of a tree that joins the two lightest again and again. Ties are broken by
/// number, so the result depends on the weights alone.
std::vector<std::uint32_t> TreeDepths(const std::vector<std::uint64_t>& weights) {
    using Node = std::pair<std::uint64_t, std::size_t>;
    std::priority_queue<Node, std::vector<Node>, std::greater<>> open;
    for (std::size_t leaf = 0; leaf < weights.size(); ++leaf) {
        open.emplace(weights[leaf], leaf);
    }
    std::vector<std::size_t> parent(2 * weights.size());
    std::size_t next = weights.size();
    while (open.size() > 1) {
        const Node first = open.top();
        open.pop();
        const Node second = open.top();
        open.pop();
        parent[first.second] = next;
        parent[second.second] = next;
        open.emplace(first.first + second.first, next++);
    }
    std::vector<std::uint32_t> depths(next);
    for (std::size_t node = next - 1; node-- > 0;) {
        depths[node] = depths[parent[node]] + 1;
    }
    depths.resize(weights.size());
    return depths;
}

}  // namespace

std::vector<std::uint32_t> CodeLengths(std::span<const std::uint64_t> frequencies,
                                       unsigned longest) {
    std::vector<std::uint32_t> lengths(frequencies.size());
    std::vector<std::size_t> used;
    std::vector<std::uint64_t> weights;
    for (std::size_t symbol = 0; symbol < frequencies.size(); ++symbol) {
        if (frequencies[symbol] != 0) {
            used.push_back(symbol);
            weights.push_back(frequencies[symbol]);
        }
    }
    if (used.size() == 1) {
        lengths[used.front()] = 1;
        return lengths;
    }
    if (used.empty()) {
        return lengths;
    }
    std::vector<std::uint32_t> depths = TreeDepths(weights);
    // Flatter weights make a flatter tree; it is hardly ever needed.
    while (*std::max_element(depths.begin(), depths.end()) > longest) {
        for (std::uint64_t& weight : weights) {
            weight = weight / 2 + 1;
        }
        depths = TreeDepths(weights);
    }
    for (std::size_t place = 0; place < used.size(); ++place) {
        lengths[used[place]] = depths[place];
    }
    return lengths;
}

PrefixCode::PrefixCode(std::vector<std::uint32_t> wordLengths)
    : lengths(std::move(wordLengths)), words(lengths.size()) {
    const std::uint32_t longest =
        lengths.empty() ? 0 : *std::max_element(lengths.begin(), lengths.end());
    std::uint32_t word = 0;
    for (std::uint32_t length = 1; length <= longest; ++length, word <<= 1U) {
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            if (lengths[symbol] == length) {
                words[symbol] = word++;
            }
        }
    }
}

}  // namespace brenquil
