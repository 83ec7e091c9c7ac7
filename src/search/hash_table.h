// The transposition table that all search threads share, and the pawn hash beside it.
//
// One memory size is divided 90 to 10 between the two. The table has one entry per index and no
// buckets; the index is the key modulo the number of entries, so every megabyte is used and no size
// needs rounding. Threads read and write without locks: an entry holds its key XORed with its data,
// and for a reader that meets halves of two different stores the comparison fails. The bound is
// outside that protection, so a torn entry can match with a wrong bound; that is accepted, and a
// move from the table is tested before it is played.
//
// Scores are kept as the search holds them, mate scores included: they are relative to the root of
// the search that stored them and are not corrected by ply. That is required behaviour.
//
// Clearing costs nothing, whatever the size: an entry notes the epoch it was written in, `Clear`
// begins another, and what is of an earlier one counts as empty. Only one clearing in 256, when the
// epochs have run out, goes through the table.
//
// Cost of a probe: two multiplications and one cache line.
#pragma once

#include "board/types.h"
#include "eval/pawn_hash.h"
#include "platform/bits.h"
#include "platform/exact_modulo.h"
#include "platform/memory.h"
#include "platform/relaxed.h"

#include <cstdint>
#include <optional>

namespace brenquil {

/// How the stored score bounds the true one.
enum class Bound : std::uint8_t { Exact = 0, Upper = 1, Lower = 2 };

/// An entry as a reader sees it.
struct HashHit {
    int depth;  ///< 0 to 65535: a negative depth was stored wrapped round, as it stands
    Score score;
    Move move;  ///< `NoMove` if none is known; not yet tested against the position
    Bound bound;
};

/// The sizing and clearing operations are called while no search runs.
class CHashTable {
public:
    /// Bytes that one entry counts for in the division of the memory.
    static constexpr double EntryBytes = 24.0;

    /// Starts without memory: probes find nothing, stores are dropped.
    CHashTable() noexcept = default;
    CHashTable(const CHashTable&) = delete;
    CHashTable& operator=(const CHashTable&) = delete;
    CHashTable(CHashTable&&) = delete;
    CHashTable& operator=(CHashTable&&) = delete;
    ~CHashTable() = default;

    /// Gives both tables their share of this many mebibytes, emptied, with the age at 0. Asked for
    /// its present size, the table keeps everything. False if the memory cannot be had: the size
    /// stays as it was.
    [[nodiscard]] bool Resize(std::uint32_t megabytes);

    /// Empties the main table and sets the age to 0. The pawn hash keeps its contents: they are
    /// exact for their keys.
    void Clear() noexcept;

    /// Readies the table for a search: empties it, or else ends the protection that entries have
    /// within one search. `Hashfull` counts from here.
    void BeginSearch(bool isFromNothing) noexcept;

    [[nodiscard]] std::optional<HashHit> Probe(std::uint64_t key) const noexcept {
        if (blocks_ == nullptr) [[unlikely]] {
            return std::nullopt;
        }
        const Slot slot = SlotOf(key);
        const std::uint64_t data = slot.block->data[slot.index];
        if (slot.block->verification[slot.index] != (data ^ key) || !IsOfThisEpoch(data)) {
            return std::nullopt;
        }
        return HashHit{DepthOf(data), static_cast<std::int16_t>(data >> ScoreShift),
                       Move{static_cast<std::uint32_t>(data >> MoveShift)},
                       slot.block->bound[slot.index]};
    }

    /// Replaces what the slot holds, whatever its key, unless that is deeper and of this search. A
    /// store without a move overwrites one with a move.
    /// True if this claimed an entry, which the caller counts and notes with others: all threads
    /// share the number, and a cache line that each of them wrote at every store would go back and
    /// forth between their processors.
    bool Store(std::uint64_t key, Score score, int depth, Bound bound, Move move) noexcept;

    /// Counts so many claimed entries for `Hashfull`.
    void NoteClaims(std::uint32_t count) noexcept { freeCount_.SubtractLossily(count); }

    /// Asks the processor for the cache line of a key that will soon be probed.
    void Prefetch(std::uint64_t key) const noexcept {
        if (blocks_ != nullptr) [[likely]] {
            brenquil::Prefetch(SlotOf(key).block);
        }
    }

    /// Entries claimed since `BeginSearch`, in thousandths of the table, at most 1000.
    [[nodiscard]] std::uint32_t Hashfull() const noexcept;

    [[nodiscard]] std::uint32_t SizeMegabytes() const noexcept { return sizeMegabytes_; }

    // For tests: the entries, how many of them are not claimed yet, and the searches since the
    // table was cleared.

    [[nodiscard]] std::uint32_t EntryCount() const noexcept { return entryCount_; }

    [[nodiscard]] std::uint32_t FreeCount() const noexcept { return freeCount_; }

    [[nodiscard]] std::uint32_t Age() const noexcept { return age_; }

    CPawnHash pawnHash;

private:
    // The packed word of an entry:
    //
    // | bits  | type   | meaning                                  |
    // |-------|--------|------------------------------------------|
    // | 0-7   | u8     | age of the writing search, low byte      |
    // | 8-15  | u8     | epoch: how often the table was cleared   |
    // | 16-31 | u16    | depth                                    |
    // | 32-47 | i16    | score                                    |
    // | 48-63 | u16    | move, low half; 0 if none                |
    static constexpr unsigned EpochShift = 8;
    static constexpr unsigned DepthShift = 16;
    static constexpr unsigned ScoreShift = 32;
    static constexpr unsigned MoveShift = 48;

    static constexpr std::uint32_t EntriesPerBlock = 3;

    /// Three entries share a cache line, so that no probe touches two.
    struct alignas(64) Block {
        Relaxed<std::uint64_t> verification[EntriesPerBlock];  ///< key XOR data
        Relaxed<std::uint64_t> data[EntriesPerBlock];
        Relaxed<Bound> bound[EntriesPerBlock];
    };

    static_assert(sizeof(Block) == 64);

    struct Slot {
        Block* block;
        std::uint32_t index;
    };

    [[nodiscard]] Slot SlotOf(std::uint64_t key) const noexcept {
        const auto entry = static_cast<std::uint32_t>(modulo_(key));
        return {blocks_ + entry / EntriesPerBlock, entry % EntriesPerBlock};
    }

    [[nodiscard]] static constexpr int DepthOf(std::uint64_t data) noexcept {
        return static_cast<std::uint16_t>(data >> DepthShift);
    }

    [[nodiscard]] bool IsOfThisEpoch(std::uint64_t data) const noexcept {
        return static_cast<std::uint8_t>(data >> EpochShift) == epoch_;
    }

    void Wipe() noexcept;
    [[nodiscard]] bool Allocate(std::uint32_t megabytes);
    void Release() noexcept;

    Block* blocks_ = nullptr;
    CExactModulo modulo_{1};
    std::uint32_t entryCount_ = 0;
    std::uint32_t age_ = 0;
    std::uint32_t sizeMegabytes_ = 0;
    std::uint8_t epoch_ = 0;  ///< back to 0 when the byte has run out and the entries are wiped
    CPages pages_;
    /// Entries not yet written in this search. Replacing an entry of depth 0 counts again each
    /// time, so the figure can run past zero; a decrement lost between threads is accepted.
    alignas(64) Relaxed<std::uint32_t> freeCount_{0};
};

}  // namespace brenquil
