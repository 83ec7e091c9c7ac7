// Whole pages of memory for the large tables.
//
//     CPages pages = CPages::Allocate(bytes);
//     if (pages.Data() == nullptr) { ... keep what you had ... }
//
// The memory is filled with zeros and aligned to a page at least. Zeroing costs nothing at first:
// the system hands out each page when it is touched, so an unused table takes no memory. Large
// blocks ask for huge pages, which saves the processor most of the address translations of random
// reads.
//
// A block that the machine cannot hold is refused at once. Linux would promise it and end the
// program when the pages are used; so the size is compared with the memory that is free now. The
// answer is an estimate, as memory can be taken by others in the next moment.
//
// No exceptions.
#pragma once

#include <cstddef>

namespace brenquil {

// The sizes of the hash table and of the cache for Nalimov tables, in mebibytes, until somebody
// asks for others. A page in a browser shares the memory of a phone with other pages.
#if defined(__EMSCRIPTEN__)
inline constexpr int DefaultHashMegabytes = 16;
inline constexpr int DefaultTableCacheMegabytes = 2;
#else
inline constexpr int DefaultHashMegabytes = 64;
inline constexpr int DefaultTableCacheMegabytes = 32;
#endif

class CPages {
public:
    /// Owns nothing.
    CPages() noexcept = default;
    CPages(const CPages&) = delete;
    CPages& operator=(const CPages&) = delete;
    CPages(CPages&& other) noexcept;
    CPages& operator=(CPages&& other) noexcept;
    ~CPages();

    /// `bytes` bytes of zeros; empty when `bytes` is 0 or the machine cannot give them.
    [[nodiscard]] static CPages Allocate(std::size_t bytes) noexcept;

    /// Gives the block back; the object owns nothing afterwards.
    void Release() noexcept;

    /// The start of the block, nullptr when there is none.
    [[nodiscard]] void* Data() const noexcept { return data_; }

    /// The same as an array of a type whose objects may begin as zeros.
    template <class T>
    [[nodiscard]] T* As() const noexcept {
        return static_cast<T*>(data_);
    }

    /// The number of bytes asked for, 0 when there is no block.
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }

private:
    CPages(void* data, std::size_t size) noexcept : data_(data), size_(size) {}

    void* data_ = nullptr;
    std::size_t size_ = 0;
};

// Where a large table or object begins, so that huge pages can hold it. The formats of programs for
// other systems know no such alignment; there it is a cache line.
#if defined(__linux__)
inline constexpr std::size_t HugePageAlignment = std::size_t{2} << 20U;
#else
inline constexpr std::size_t HugePageAlignment = 64;
#endif

/// Asks the system to back what lies in this memory with huge pages, as far as it fills whole ones.
/// Called before the memory is first written. A wish only: nothing else changes.
void PreferHugePages(void* start, std::size_t bytes) noexcept;

/// For large objects that are read and written all the time: `new` makes an object of a class
/// derived from this in huge pages, where the system has them. One fault then brings its memory
/// instead of hundreds. Throws std::bad_alloc like any other `new`.
class CInHugePages {
public:
    [[nodiscard]] static void* operator new(std::size_t bytes);
    static void operator delete(void* object) noexcept;

protected:
    CInHugePages() = default;
    ~CInHugePages() = default;
    CInHugePages(const CInHugePages&) = default;
    CInHugePages& operator=(const CInHugePages&) = default;
};

/// The number of bytes that the program could take now without driving the machine out of memory;
/// the limits of a container count. An estimate.
[[nodiscard]] std::size_t AvailableMemory() noexcept;

}  // namespace brenquil
