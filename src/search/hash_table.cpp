#include "search/hash_table.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace brenquil {

namespace {

constexpr double BytesPerMegabyte = 1024.0 * 1024.0;
constexpr double TableShare = 0.9;
constexpr double PawnHashShare = 0.1;
constexpr double PawnEntriesPerByte = 0.03125;  // 32 bytes an entry

double EntriesOf(std::uint32_t megabytes) noexcept {
    return TableShare * megabytes * BytesPerMegabyte / CHashTable::EntryBytes;
}

/// The lower 16 bits, to be packed.
constexpr std::uint64_t Low16(int number) noexcept {
    return static_cast<std::uint16_t>(number);
}

double PawnEntriesOf(std::uint32_t megabytes) noexcept {
    return megabytes * PawnHashShare * BytesPerMegabyte * PawnEntriesPerByte;
}

}  // namespace

bool CHashTable::Resize(std::uint32_t megabytes) {
    if (megabytes == sizeMegabytes_) {
        return true;
    }
    const std::uint32_t before = sizeMegabytes_;
    Release();
    if (Allocate(megabytes)) {
        return true;
    }
    // What was there a moment ago can be had again, though emptied; failing even that, the engine
    // goes on without a table.
    if (!Allocate(before)) {
        Release();
    }
    return false;
}

bool CHashTable::Allocate(std::uint32_t megabytes) {
    const double entries = EntriesOf(megabytes);
    if (entries > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    const auto count = static_cast<std::uint32_t>(entries);
    if (count != 0) {
        const std::uint64_t blockCount =
            (std::uint64_t{count} + EntriesPerBlock - 1) / EntriesPerBlock;
        const std::uint64_t bytes = blockCount * sizeof(Block);
        if (bytes > std::numeric_limits<std::size_t>::max()) {
            return false;  // more than can be addressed where addresses have 32 bits
        }
        pages_ = CPages::Allocate(static_cast<std::size_t>(bytes));
        if (pages_.Data() == nullptr) {
            return false;
        }
        // Pages of zeros are entries of zeros: `Relaxed` has the layout of what it holds.
        blocks_ = pages_.As<Block>();
        modulo_ = CExactModulo(count);
    }
    entryCount_ = count;
    freeCount_ = count;
    sizeMegabytes_ = megabytes;
    if (!pawnHash.Resize(static_cast<std::uint32_t>(PawnEntriesOf(megabytes)))) {
        Release();
        return false;
    }
    return true;
}

void CHashTable::Release() noexcept {
    blocks_ = nullptr;
    pages_.Release();
    entryCount_ = 0;
    freeCount_ = 0;
    age_ = 0;
    epoch_ = 0;
    sizeMegabytes_ = 0;
    static_cast<void>(pawnHash.Resize(0));
}

void CHashTable::Clear() noexcept {
    age_ = 0;
    freeCount_ = entryCount_;
    if (blocks_ == nullptr) {
        return;
    }
    if (++epoch_ == 0) {
        Wipe();
    }
    // The key 0 matches an empty entry, and finds it here. The bound stays.
    const std::uint64_t empty = std::uint64_t{epoch_} << EpochShift;
    blocks_->data[0] = empty;
    blocks_->verification[0] = empty;
}

/// Makes every entry an empty one of epoch 0. The bounds stay.
void CHashTable::Wipe() noexcept {
    const std::size_t blockCount = pages_.Size() / sizeof(Block);
    for (Block* block = blocks_; block != blocks_ + blockCount; ++block) {
        for (std::uint32_t index = 0; index < EntriesPerBlock; ++index) {
            block->verification[index] = 0;
            block->data[index] = 0;
        }
    }
}

void CHashTable::BeginSearch(bool isFromNothing) noexcept {
    if (isFromNothing) {
        Clear();
    } else {
        ++age_;
        freeCount_ = entryCount_;
    }
}

bool CHashTable::Store(std::uint64_t key, Score score, int depth, Bound bound, Move move) noexcept {
    if (blocks_ == nullptr) [[unlikely]] {
        return false;
    }
    const Slot slot = SlotOf(key);
    const std::uint64_t found = slot.block->data[slot.index];
    const std::uint64_t old = IsOfThisEpoch(found) ? found : 0;
    const auto oldAge = static_cast<std::uint8_t>(old);
    const int oldDepth = DepthOf(old);
    // The byte against the whole counter: from the 256th search on no entry is of this search's
    // age.
    if (oldAge == age_ && oldDepth > depth) {
        return false;
    }
    const std::uint64_t data = (age_ & 0xFFU) | std::uint64_t{epoch_} << EpochShift |
                               Low16(depth) << DepthShift | Low16(score) << ScoreShift |
                               std::uint64_t{move.Identity()} << MoveShift;
    slot.block->data[slot.index] = data;
    slot.block->bound[slot.index] = bound;
    slot.block->verification[slot.index] = data ^ key;
    return oldDepth == 0 || oldAge < age_;
}

std::uint32_t CHashTable::Hashfull() const noexcept {
    if (entryCount_ == 0) {
        return 0;
    }
    const std::uint32_t claimed = entryCount_ - freeCount_;
    const double thousandths = static_cast<double>(claimed) / entryCount_ * 1000.0;
    return static_cast<std::uint32_t>(std::min(thousandths, 1000.0));
}

}  // namespace brenquil
