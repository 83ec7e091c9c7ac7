// What an evaluation needs to know of the material, by the key that the position keeps: summed once
// for each set of men instead of at every leaf.
//
// One small table for each thread, four thousand entries of 64 KiB together: a search meets few
// sets of men at a time. A change of the piece values empties it at the next look.
#pragma once

#include "board/position.h"
#include "eval/endgame.h"
#include "eval/evaluation_options.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace brenquil {

/// The material of both sides in sum.
struct MaterialEntry {
    MenKey key = ~MenKey{0};  ///< no set of men has this one, nor is an inexact key kept
    Score balance = 0;        ///< White's material less Black's, bishop pairs included
    std::int16_t phase = 0;   ///< as `Material::phase`
    /// Neither side can mate, or the men are those of a known ending: the evaluation looks closer.
    /// False for nearly all positions.
    bool isSpecial = false;
    EndingNumber ending = UnknownEnding;  ///< of special ones that are no certain draw
};

static_assert(sizeof(MaterialEntry) == 16);

class CMaterialTable {
public:
    /// The entry of the position's men for the piece values as they are now, if it is there.
    [[nodiscard]] const MaterialEntry* Known(const CPosition& position,
                                             const CEvaluationOptions& options) const noexcept {
        const std::uint32_t version = options.pieceValuesVersion.load(std::memory_order_acquire);
        const MenKey key = position.menKey;
        const MaterialEntry& entry = entries_[IndexOf(key)];
        return version == version_ && entry.key == key ? &entry : nullptr;
    }

    /// The same entry, which is summed if it is not there. Valid until the next call.
    [[nodiscard]] const MaterialEntry& Find(const CPosition& position,
                                            const CEvaluationOptions& options) noexcept;

private:
    static constexpr unsigned IndexBits = 12;
    static constexpr std::uint64_t Spread = 0x9E3779B97F4A7C15;  ///< 2^64 by the golden ratio

    [[nodiscard]] static constexpr std::size_t IndexOf(MenKey key) noexcept {
        return key * Spread >> (64 - IndexBits);
    }

    void Empty(std::uint32_t version) noexcept;
    static void Fill(MaterialEntry& entry, const CPosition& position,
                     const CEvaluationOptions& options) noexcept;

    std::array<MaterialEntry, std::size_t{1} << IndexBits> entries_{};
    std::uint32_t version_ = 0;
};

}  // namespace brenquil
