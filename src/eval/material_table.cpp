#include "eval/material_table.h"

#include "eval/material.h"

namespace brenquil {

namespace {

/// For bishops on both colours of squares. A constant that does not follow the piece values.
constexpr Score BishopPairBonus = 50;

/// A known ending has five men at most, the kings included.
constexpr int MostMenOfKnownEnding = 5;

}  // namespace

const MaterialEntry& CMaterialTable::Find(const CPosition& position,
                                          const CEvaluationOptions& options) noexcept {
    if (const MaterialEntry* const known = Known(position, options)) {
        return *known;
    }
    const std::uint32_t version = options.pieceValuesVersion.load(std::memory_order_acquire);
    if (version != version_) {
        Empty(version);
    }
    MaterialEntry& entry = entries_[IndexOf(position.menKey)];
    Fill(entry, position, options);
    return entry;
}

void CMaterialTable::Empty(std::uint32_t version) noexcept {
    entries_.fill(MaterialEntry{});
    version_ = version;
}

void CMaterialTable::Fill(MaterialEntry& entry, const CPosition& position,
                          const CEvaluationOptions& options) noexcept {
    const Material material = ComputeMaterial(position, options.pieceValues);
    const int kings = position.pieceCount[WhiteKing] + position.pieceCount[BlackKing];
    entry.key = position.HasExactMenKey() ? position.menKey : ~MenKey{0};
    entry.balance =
        material.value[White] - material.value[Black] +
        BishopPairBonus * (int{material.hasBishopPair[White]} - int{material.hasBishopPair[Black]});
    entry.phase = static_cast<std::int16_t>(material.phase);
    // Two kings are the fewest that a known ending has; with other numbers of kings the closer look
    // finds nothing.
    entry.isSpecial = position.MenCount() - kings <= MostMenOfKnownEnding - 2 ||
                      (CannotMate(position, White) && CannotMate(position, Black));
}

}  // namespace brenquil
