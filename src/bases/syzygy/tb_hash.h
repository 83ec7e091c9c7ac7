// Which table answers for which material: buckets of keys.
//
// The top bits of a key choose a bucket, whose few slots are looked through in order. The list is
// filled before any search; afterwards the only change is that a key is struck out when its table
// turns out to be unusable. Keys are therefore atomic words: striking one out is seen by the others
// sooner or later, which is enough, because reading the table is tried under a lock.
#pragma once

#include "platform/relaxed.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace brenquil {

struct TbEntry;

// NOLINTBEGIN(readability-identifier-naming): spelled as the messages to the user spell them.
inline constexpr std::size_t HSHMAX = 5;         ///< slots of a bucket
inline constexpr std::size_t TBMAX_PIECE = 254;  ///< most tables without pawns
inline constexpr std::size_t TBMAX_PAWN = 256;   ///< most tables with pawns
// NOLINTEND(readability-identifier-naming)

inline constexpr unsigned TbHashBits = 10;

class CTbHash {
public:
    /// A key of 0 is free or struck out; the entry tells which.
    struct Slot {
        Relaxed<std::uint64_t> key{0};
        TbEntry* entry = nullptr;
    };

    /// Frees all slots.
    void Clear() noexcept;

    /// Enters a table under a key, which is not 0.
    /// @return false when the bucket has no free slot
    [[nodiscard]] bool Add(std::uint64_t key, TbEntry& entry);

    /// The slot of the key, which is not 0; nothing if there is none.
    [[nodiscard]] Slot* Find(std::uint64_t key) noexcept {
        assert(key != 0);
        for (Slot& slot : BucketOf(key)) {
            if (slot.key == key) {
                return &slot;
            }
        }
        return nullptr;
    }

private:
    using Bucket = std::array<Slot, HSHMAX>;

    [[nodiscard]] Bucket& BucketOf(std::uint64_t key) noexcept {
        return buckets_[key >> (64 - TbHashBits)];
    }

    std::array<Bucket, std::size_t{1} << TbHashBits> buckets_;
};

}  // namespace brenquil
