#include "platform/memory.h"
#include "platform/system_pages.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <emscripten/heap.h>

namespace brenquil {

namespace {

/// A cache line is all that the tables need.
constexpr std::size_t Alignment = 64;

}  // namespace

/// The browser tells nobody how much it would grant. What it refuses, malloc refuses.
std::size_t AvailableMemory() noexcept {
    return emscripten_get_heap_max();
}

void PreferHugePages(void* /*start*/, std::size_t /*bytes*/) noexcept {}

void* ReservePages(std::size_t bytes) noexcept {
    const std::size_t rounded = (bytes + Alignment - 1) / Alignment * Alignment;
    void* const data = rounded < bytes ? nullptr : std::aligned_alloc(Alignment, rounded);
    if (data != nullptr) {
        std::memset(data, 0, rounded);
    }
    return data;
}

void ReleasePages(void* data, std::size_t /*bytes*/) noexcept {
    std::free(data);
}

}  // namespace brenquil
