#include "eval/material_table.h"

#include "eval/material.h"

namespace brenquil {

namespace {

/// For bishops on both colours of squares. A constant that does not follow the piece values.
constexpr Score BishopPairBonus = 50;

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
    entry.key = IsExact(position.menKey) ? position.menKey : ~MenKey{0};
    entry.balance =
        material.value[White] - material.value[Black] +
        BishopPairBonus * (int{material.hasBishopPair[White]} - int{material.hasBishopPair[Black]});
    entry.phase = static_cast<std::int16_t>(material.phase);
    const bool isDraw = CannotMate(position, White) && CannotMate(position, Black);
    entry.ending = isDraw ? UnknownEnding : FindEnding(position);
    entry.isSpecial = isDraw || entry.ending != UnknownEnding;
}

}  // namespace brenquil
