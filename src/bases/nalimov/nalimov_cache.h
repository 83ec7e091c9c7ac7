// The cache of table blocks: decoded pieces of 8192 bytes, shared by all searching threads.
//
// One memory area is cut into headers and blocks. A block that is in use stands in the hash chain
// of its bucket (32 for each side of each table) and in one list from the newest to the oldest,
// from whose end it is taken when another one is needed. An entry is free, claimed (in no list,
// being filled by one thread) or linked.
//
// Locks, in the order in which they are taken: the lock of a bucket, then the lock of the list; the
// file lock of a side, then the lock of the decode buffers. Nobody waits for a bucket while it
// holds the list, which is why an eviction looks twice. Decoding runs outside all locks.
//
// Two threads can read the same block at the same time, and both then link their copy; the newer
// one is found, the other one ages away. A hit costs two short locks; nothing is allocated. A block
// that cannot be read disables its file and is an answer of `NoValue`; nothing is printed.
//
// Resize, Clear and the constructor are for the thread that sets the options, while no probe is
// under way.
#pragma once

#include "bases/host.h"
#include "bases/nalimov/data_comp.h"
#include "bases/nalimov/nalimov_spin_lock.h"
#include "bases/nalimov/nalimov_tables.h"
#include "platform/memory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace brenquil {

/// Header of one block of the cache.
struct NalimovCacheEntry {
    int table = 0;
    int side = 0;
    std::uint32_t block = 0;
    NalimovCacheEntry* lruNext = nullptr;  ///< towards the older end; next free entry
    NalimovCacheEntry* lruPrev = nullptr;  ///< towards the newer end
    NalimovCacheEntry* chainNext = nullptr;
    NalimovCacheEntry* chainPrev = nullptr;
    std::uint8_t* data = nullptr;  ///< a block, and the spare bytes of the decoder
};

/// What a header counts for in the division of the memory: its size with pointers of 64 bits, so
/// that a cache has the same number of blocks on every machine.
inline constexpr std::size_t NalimovHeaderBytes = 56;

static_assert(sizeof(NalimovCacheEntry) == NalimovHeaderBytes || sizeof(void*) < 8);
static_assert(sizeof(NalimovCacheEntry) <= NalimovHeaderBytes);

class CNalimovCache {
public:
    /// The value that means that there is not an answer.
    static constexpr int NoValue = 32767;

    /// Bytes of a block and of the header with it.
    static constexpr std::size_t DataStride = NalimovBlockSize + DataCompSpareBytes;
    static constexpr std::size_t EntrySize = NalimovHeaderBytes + DataStride;
    static_assert(DataStride == 8228 && EntrySize == 8284);

    /// Most threads that can decode at the same time without waiting; as many as are advertised.
    static constexpr std::size_t DecodeBufferCount = 32;

    /// A cache without blocks over tables that outlive it.
    /// @param host  ends the program when there is no memory for decoding
    CNalimovCache(IHost& host, CNalimovTables& tables) noexcept : host_(host), tables_(tables) {}

    CNalimovCache(const CNalimovCache&) = delete;
    CNalimovCache& operator=(const CNalimovCache&) = delete;
    ~CNalimovCache() = default;

    /// Gives the cache this many mebibytes and empties it. The present size changes nothing. With
    /// 0, or when there is no memory, there are no blocks, and then there are no answers.
    void Resize(int megabytes);

    /// Before other tables are registered: takes all blocks out of the chains that will go.
    void Clear() noexcept;

    /// After tables were registered: makes the decode buffers if there is something to decode. Ends
    /// the program when there is no memory for them.
    void PrepareDecoding();

    [[nodiscard]] int Megabytes() const noexcept { return megabytes_; }

    /// For tests: how many blocks the present size gives.
    [[nodiscard]] std::size_t BlockCount() const noexcept { return blockCount_; }

    /// The value at an index of a table's side; `NoValue` if it cannot be had. Positive values win
    /// for the side to move, negative ones lose.
    [[nodiscard]] int ReadValue(int table, int side, std::uint64_t index) noexcept;

    /// One signed byte of a block of a side; `NoValue` if it cannot be read.
    [[nodiscard]] int CacheByte(int table, int side, std::uint32_t block,
                                std::uint32_t offset) noexcept;

private:
    struct DecodeBuffer {
        DecodeState state;
        std::array<std::uint8_t, NalimovBlockSize> stored;
    };

    /// Which block an entry held at some moment.
    struct BlockName {
        int table = 0;
        int side = 0;
        std::uint32_t block = 0;
    };

    /// The list of linked entries, and those that hold no block: given back, or not made yet.
    struct NalimovLruLock {
        CSpinLock lock;
        NalimovCacheEntry* newest = nullptr;
        NalimovCacheEntry* oldest = nullptr;
        NalimovCacheEntry* free = nullptr;
        std::size_t madeCount = 0;  ///< of the entries that the memory has room for
    };

    [[nodiscard]] NalimovBucket& BucketOf(int table, int side, std::uint32_t block) noexcept;
    [[nodiscard]] NalimovCacheEntry* Make(std::size_t index) noexcept;
    [[nodiscard]] NalimovCacheEntry* Claim() noexcept;
    [[nodiscard]] NalimovCacheEntry* Evict(NalimovCacheEntry* oldest,
                                           const BlockName& seen) noexcept;
    [[nodiscard]] bool Fill(NalimovCacheEntry& entry) noexcept;
    [[nodiscard]] bool OpenExtent(NalimovSide& side, NalimovExtent& extent) noexcept;
    [[nodiscard]] bool FillDecoded(NalimovSide& side, NalimovExtent& extent, std::uint32_t block,
                                   std::uint8_t* target) noexcept;
    [[nodiscard]] std::unique_ptr<DecodeBuffer> TakeDecodeBuffer() noexcept;
    void GiveDecodeBufferBack(std::unique_ptr<DecodeBuffer> buffer) noexcept;
    void GiveUp(NalimovCacheEntry& entry, NalimovExtent& extent) noexcept;

    void LinkNewest(NalimovCacheEntry& entry) noexcept;
    void UnlinkFromList(NalimovCacheEntry& entry) noexcept;
    static void LinkInChain(NalimovBucket& bucket, NalimovCacheEntry& entry) noexcept;
    static void UnlinkFromChain(NalimovBucket& bucket, NalimovCacheEntry& entry) noexcept;

    IHost& host_;
    CNalimovTables& tables_;
    int megabytes_ = 0;
    CPages pages_;
    std::size_t blockCount_ = 0;
    NalimovLruLock lru_;
    CSpinLock decodeLock_;
    std::array<std::unique_ptr<DecodeBuffer>, DecodeBufferCount> decodeBuffers_;
};

}  // namespace brenquil
