// The table of pawn structures: what depends on pawns and kings alone, shared by all threads. It is
// larger than the caches of a processor, so an evaluation asks it only for what was fetched ahead
// (`CEvaluation::FetchPawns`) and computes the rest.
//
// One entry per index, no buckets, no locks; a new configuration replaces the old one. A thread can
// meet an entry whose key another thread has just written and whose sums are still to come, or one
// that two threads write at once, and then uses what it finds: that is accepted, because it touches
// the score of one leaf. The fields are relaxed atomics, which are plain loads and stores.
//
// Entries are exact for their key and stay valid for ever, so nothing clears them but `Resize`,
// which may be called only while no thread evaluates.
#pragma once

#include "board/types.h"
#include "eval/term_pair.h"
#include "platform/bits.h"
#include "platform/exact_modulo.h"
#include "platform/memory.h"
#include "platform/relaxed.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace brenquil {

/// What the pawns and kings of one side are worth, from its own point of view.
struct PawnSums {
    TermPair terms;         ///< pawn structure and squares, the kings' squares included
    int shelterDanger = 0;  ///< of all kings of the side; higher is worse
};

/// The sums of one configuration; arrays are by `Colour`, Black first, each from its own side's
/// point of view. Half a cache line.
struct PawnEntry {
    Relaxed<std::uint64_t> key;
    std::array<Relaxed<std::int32_t>, 2> middlegame;
    std::array<Relaxed<std::int32_t>, 2> endgame;
    std::array<Relaxed<std::int32_t>, 2> shelterDanger;

    [[nodiscard]] PawnSums Sums(Colour colour) const noexcept {
        return {TermPair(middlegame[colour], endgame[colour]), shelterDanger[colour]};
    }
};

static_assert(sizeof(PawnEntry) == 32);

class CPawnHash {
public:
    /// Throws the old table away and makes one of `count` empty entries; 0 leaves none.
    /// @return false if the machine has no memory for it; there is no table then
    [[nodiscard]] bool Resize(std::size_t count) noexcept;

    /// False before the first `Resize`, after one to 0 and after one that failed.
    [[nodiscard]] bool HasMemory() const noexcept { return entries_ != nullptr; }

    [[nodiscard]] std::size_t Count() const noexcept {
        return HasMemory() ? static_cast<std::size_t>(slotOf_.Divisor()) : 0;
    }

    /// The one entry that can hold `key`, whatever it holds now. Needs memory.
    [[nodiscard]] PawnEntry& Slot(std::uint64_t key) noexcept {
        assert(HasMemory());
        return entries_[slotOf_(key)];
    }

    /// Fetches the entry of `key` into the cache for an evaluation soon after. Harmless without
    /// memory.
    void Prefetch(std::uint64_t key) const noexcept { brenquil::Prefetch(entries_ + slotOf_(key)); }

private:
    CPages pages_;
    PawnEntry* entries_ = nullptr;
    CExactModulo slotOf_;
};

}  // namespace brenquil
