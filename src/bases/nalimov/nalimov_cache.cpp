#include "bases/nalimov/nalimov_cache.h"

#include "bases/nalimov/nalimov_fatal.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <span>
#include <thread>
#include <utility>

namespace brenquil {

namespace {

constexpr int KppkpTable = 36;

/// Places of kppkp with Black to move that are known to be wrong in the files: White's pawns on e3
/// and e4 win slowly.
constexpr std::array<std::uint64_t, 7> WrongPlaces = {0x362BC7C, 0x362DE44, 0x3637648, 0x3639810,
                                                      0x38D4F29, 0x40A2CAB, 0x43C778C};
constexpr int WrongPlacesValue = -32639;

constexpr std::uint32_t BlocksOfExtentShift = 18;
static_assert(std::uint64_t{NalimovBlockSize} << BlocksOfExtentShift == std::uint64_t{1}
                                                                            << NalimovExtentShift);

/// A byte of a one-byte table as a value: distances count from 32767 and -32766 towards 0, and the
/// two bytes at the lower end carry on where the others stop.
int ValueOfByte(int byte) noexcept {
    constexpr int Shift = 32640;
    constexpr int Broken = 127;
    if (byte == 0) {
        return 0;
    }
    if (byte == Broken) {
        return CNalimovCache::NoValue;
    }
    if (byte == -127) {
        return -Shift;
    }
    if (byte == -128) {
        return Shift;
    }
    return byte > 0 ? byte + Shift : byte - Shift;
}

/// What a plain file does not hold of its last block: the mark for "no answer" of both encodings.
void MarkBroken(std::span<std::uint8_t> rest, bool isTwoByte) noexcept {
    std::fill(rest.begin(), rest.end(), std::uint8_t{0x7F});
    for (std::size_t index = 0; isTwoByte && index < rest.size(); ++index) {
        // Blocks have an even number of bytes, so the low byte of a value is even from the end.
        rest[index] = (rest.size() - index) % 2 == 0 ? 0xFF : 0x7F;
    }
}

}  // namespace

void CNalimovCache::Resize(int megabytes) {
    if (megabytes == megabytes_) {
        return;
    }
    megabytes_ = megabytes;
    pages_.Release();
    blockCount_ = 0;
    if (megabytes > 0) {
        const std::size_t size = megabytes;
        pages_ = CPages::Allocate(size << 20U);
        blockCount_ = pages_.Size() / EntrySize;
    }
    tables_.CloseFiles();
    Clear();
}

void CNalimovCache::Clear() noexcept {
    lru_.newest = nullptr;
    lru_.oldest = nullptr;
    lru_.free = nullptr;
    lru_.madeCount = 0;
    for (int number = 0; number <= NalimovTableCount; ++number) {
        for (const std::unique_ptr<NalimovSide>& side : tables_.Table(number).sides) {
            if (side != nullptr) {
                std::for_each(side->buckets.begin(), side->buckets.end(),
                              [](NalimovBucket& bucket) { bucket.head = nullptr; });
            }
        }
    }
}

void CNalimovCache::PrepareDecoding() {
    try {
        for (std::unique_ptr<DecodeBuffer>& buffer : decodeBuffers_) {
            if (!tables_.HasCompressedFiles()) {
                buffer.reset();
            } else if (buffer == nullptr) {
                buffer = std::make_unique<DecodeBuffer>();
            }
        }
    } catch (const std::bad_alloc&) {
        NalimovFatal(host_, "Cannot allocate decode block: error code " +
                                std::to_string(DataCompOutOfMemory));
    }
}

int CNalimovCache::ReadValue(int table, int side, std::uint64_t index) noexcept {
    assert(side == 0 || side == 1);
    const NalimovTable& row = tables_.Table(table);
    side = row.IsSymmetric() ? 0 : side;
    if (table == KppkpTable && side == 1 &&
        std::find(WrongPlaces.begin(), WrongPlaces.end(), index) != WrongPlaces.end()) {
        return WrongPlacesValue;
    }
    const std::size_t place = side;
    if (blockCount_ == 0 || row.sides[place] == nullptr || index >= row.positions[place]) {
        return NoValue;
    }
    const std::uint64_t byteIndex = row.IsTwoByte() ? index * 2 : index;
    const auto block = static_cast<std::uint32_t>(byteIndex / NalimovBlockSize);
    const std::uint32_t offset = byteIndex % NalimovBlockSize;
    const int low = CacheByte(table, side, block, offset);
    if (low == NoValue) {
        return NoValue;
    }
    if (!row.IsTwoByte()) {
        return ValueOfByte(low);
    }
    // The block may go and come back in between, which changes nothing.
    const int high = CacheByte(table, side, block, offset + 1);
    return high == NoValue ? NoValue : (low & 0xFF) + 256 * high;
}

int CNalimovCache::CacheByte(int table, int side, std::uint32_t block,
                             std::uint32_t offset) noexcept {
    assert(offset < NalimovBlockSize);
    const auto byteOf = [offset](const NalimovCacheEntry& found) {
        return static_cast<std::int8_t>(found.data[offset]);
    };
    NalimovBucket& bucket = BucketOf(table, side, block);
    {
        const std::lock_guard bucketGuard(bucket.lock);
        NalimovCacheEntry* found = bucket.head;
        while (found != nullptr && found->block != block) {
            found = found->chainNext;
        }
        if (found != nullptr) {
            {
                const std::lock_guard listGuard(lru_.lock);
                if (lru_.newest != found) {
                    UnlinkFromList(*found);
                    LinkNewest(*found);
                }
            }
            if (bucket.head != found) {
                UnlinkFromChain(bucket, *found);
                LinkInChain(bucket, *found);
            }
            return byteOf(*found);
        }
    }

    NalimovSide& files = *tables_.Table(table).sides[side];
    const bool isSplit = tables_.Table(table).IsSplit();
    const std::size_t extentNumber = isSplit ? block >> BlocksOfExtentShift : 0;
    if (extentNumber >= files.extents.size() || !files.extents[extentNumber].usable) {
        return NoValue;
    }
    NalimovCacheEntry& entry = *Claim();
    entry.table = table;
    entry.side = side;
    entry.block = block;
    if (!Fill(entry)) {
        GiveUp(entry, files.extents[extentNumber]);
        return NoValue;
    }
    const std::lock_guard bucketGuard(bucket.lock);
    const std::lock_guard listGuard(lru_.lock);
    LinkNewest(entry);
    LinkInChain(bucket, entry);
    return byteOf(entry);
}

NalimovBucket& CNalimovCache::BucketOf(int table, int side, std::uint32_t block) noexcept {
    NalimovSide& files = *tables_.Table(table).sides[side];
    return files.buckets[block % NalimovBuckets];
}

/// The entry at a place of the memory area, with its block. Entries are made one by one as they are
/// needed: a cache that is never asked takes no memory.
NalimovCacheEntry* CNalimovCache::Make(std::size_t index) noexcept {
    auto* const headers = pages_.As<std::byte>();
    auto* const entry = std::construct_at(
        reinterpret_cast<NalimovCacheEntry*>(headers + index * sizeof(NalimovCacheEntry)));
    entry->data = reinterpret_cast<std::uint8_t*>(
        headers + blockCount_ * sizeof(NalimovCacheEntry) + index * DataStride);
    return entry;
}

/// An entry that is in no list: a free one, or else a new one, or else the oldest.
NalimovCacheEntry* CNalimovCache::Claim() noexcept {
    for (;;) {
        NalimovCacheEntry* oldest = nullptr;
        BlockName seen;
        {
            const std::lock_guard listGuard(lru_.lock);
            if (lru_.free != nullptr) {
                return std::exchange(lru_.free, lru_.free->lruNext);
            }
            if (lru_.madeCount < blockCount_) {
                return Make(lru_.madeCount++);
            }
            oldest = lru_.oldest;
            if (oldest != nullptr) {
                seen = {oldest->table, oldest->side, oldest->block};
            }
        }
        if (oldest == nullptr) {
            std::this_thread::yield();  // other threads are filling every block there is
        } else if (NalimovCacheEntry* const entry = Evict(oldest, seen)) {
            return entry;
        }
    }
}

/// Takes the oldest entry out of its lists; nullptr if it is not what it was when it was `seen`:
/// between the two looks nothing was locked.
NalimovCacheEntry* CNalimovCache::Evict(NalimovCacheEntry* oldest, const BlockName& seen) noexcept {
    NalimovBucket& bucket = BucketOf(seen.table, seen.side, seen.block);
    const std::lock_guard bucketGuard(bucket.lock);
    {
        const std::lock_guard listGuard(lru_.lock);
        if (lru_.oldest != oldest || oldest->table != seen.table || oldest->side != seen.side ||
            oldest->block != seen.block) {
            return nullptr;
        }
        UnlinkFromList(*oldest);
    }
    UnlinkFromChain(bucket, *oldest);
    return oldest;
}

/// Reads the block that the entry names into its data.
bool CNalimovCache::Fill(NalimovCacheEntry& entry) noexcept {
    const NalimovTable& table = tables_.Table(entry.table);
    NalimovSide& side = *table.sides[entry.side];
    std::uint32_t block = entry.block;
    std::size_t extentNumber = 0;
    if (table.IsSplit()) {
        extentNumber = block >> BlocksOfExtentShift;
        block %= 1U << BlocksOfExtentShift;
    }
    NalimovExtent& extent = side.extents[extentNumber];

    side.fileLock.lock();
    if (!OpenExtent(side, extent)) {
        side.fileLock.unlock();
        return false;
    }
    if (extent.decodeInfo != nullptr) {
        return FillDecoded(side, extent, block, entry.data);
    }
    const std::span<std::uint8_t> data(entry.data, NalimovBlockSize);
    bool isRead = extent.file.Seek(std::uint64_t{block} * NalimovBlockSize);
    if (isRead) {
        const std::size_t size = extent.file.Read(data);
        MarkBroken(data.subspan(size), table.IsTwoByte());
        isRead = size == data.size() || !extent.file.HasFailed();
    }
    side.fileLock.unlock();
    return isRead;
}

/// Opens the file of an extent if it is not open. Comes and goes with the side's file lock held,
/// which is not held in between when the system has no more files to give: then all files are
/// closed, this thread's side among them, and one more attempt is made.
bool CNalimovCache::OpenExtent(NalimovSide& side, NalimovExtent& extent) noexcept {
    if (extent.file.IsOpen()) {
        return true;
    }
    if (!extent.usable) {
        return false;
    }
    if (extent.file.Open(extent.fileName)) {
        return true;
    }
    side.fileLock.unlock();
    tables_.CloseFiles();
    side.fileLock.lock();
    return extent.file.IsOpen() || extent.file.Open(extent.fileName);
}

/// Comes with the side's file lock held and releases it before it decodes.
bool CNalimovCache::FillDecoded(NalimovSide& side, NalimovExtent& extent, std::uint32_t block,
                                std::uint8_t* target) noexcept {
    const DataCompInfo& info = *extent.decodeInfo;
    if (block >= info.blocks) {
        side.fileLock.unlock();
        return false;
    }
    std::unique_ptr<DecodeBuffer> buffer = TakeDecodeBuffer();
    const std::uint32_t start = DataCompBlockStart(info, block);
    const std::uint32_t length = DataCompBlockStart(info, block + 1) - start;
    DecodeState& state = buffer->state;
    state = DecodeState();
    state.cookie = DecodeState::Cookie;
    state.target = target;
    state.stored = buffer->stored.data();
    state.block = block;
    state.size = block + 1 == info.blocks ? info.lastBlockSize : info.blockSize;
    state.storedSize = length;

    const std::span<std::uint8_t> stored = std::span(buffer->stored).first(length);
    bool isRead = extent.file.Seek(start) && extent.file.Read(stored) == length;
    side.fileLock.unlock();

    if (isRead && length == state.size) {
        std::memcpy(target, stored.data(), length);  // was not worth coding
    } else if (isRead) {
        isRead = DataCompDecode(info, state, state.size);
    }
    GiveDecodeBufferBack(std::move(buffer));
    return isRead;
}

/// Never waits as long as no more than `DecodeBufferCount` threads search.
std::unique_ptr<CNalimovCache::DecodeBuffer> CNalimovCache::TakeDecodeBuffer() noexcept {
    for (;;) {
        {
            const std::lock_guard guard(decodeLock_);
            for (std::unique_ptr<DecodeBuffer>& buffer : decodeBuffers_) {
                if (buffer != nullptr) {
                    return std::move(buffer);
                }
            }
        }
        std::this_thread::yield();
    }
}

void CNalimovCache::GiveDecodeBufferBack(std::unique_ptr<DecodeBuffer> buffer) noexcept {
    const std::lock_guard guard(decodeLock_);
    *std::find(decodeBuffers_.begin(), decodeBuffers_.end(), nullptr) = std::move(buffer);
}

/// The extent is not tried again.
void CNalimovCache::GiveUp(NalimovCacheEntry& entry, NalimovExtent& extent) noexcept {
    const std::lock_guard listGuard(lru_.lock);
    extent.usable = false;
    entry.lruNext = std::exchange(lru_.free, &entry);
}

void CNalimovCache::LinkNewest(NalimovCacheEntry& entry) noexcept {
    entry.lruPrev = nullptr;
    entry.lruNext = lru_.newest;
    (lru_.newest != nullptr ? lru_.newest->lruPrev : lru_.oldest) = &entry;
    lru_.newest = &entry;
}

void CNalimovCache::UnlinkFromList(NalimovCacheEntry& entry) noexcept {
    (entry.lruPrev != nullptr ? entry.lruPrev->lruNext : lru_.newest) = entry.lruNext;
    (entry.lruNext != nullptr ? entry.lruNext->lruPrev : lru_.oldest) = entry.lruPrev;
}

void CNalimovCache::LinkInChain(NalimovBucket& bucket, NalimovCacheEntry& entry) noexcept {
    entry.chainPrev = nullptr;
    entry.chainNext = bucket.head;
    if (bucket.head != nullptr) {
        bucket.head->chainPrev = &entry;
    }
    bucket.head = &entry;
}

void CNalimovCache::UnlinkFromChain(NalimovBucket& bucket, NalimovCacheEntry& entry) noexcept {
    (entry.chainPrev != nullptr ? entry.chainPrev->chainNext : bucket.head) = entry.chainNext;
    if (entry.chainNext != nullptr) {
        entry.chainNext->chainPrev = entry.chainPrev;
    }
}

}  // namespace brenquil
