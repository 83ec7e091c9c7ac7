#include "platform/memory.h"
#include "platform/system_pages.h"

#include <cassert>
#include <cstddef>
#include <windows.h>

namespace brenquil {

std::size_t AvailableMemory() noexcept {
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof(status);
    if (GlobalMemoryStatusEx(&status) == 0) {
        return 0;
    }
    // What this process may still commit: memory and page file together.
    return status.ullAvailPageFile;
}

void PreferHugePages(void* /*start*/, std::size_t /*bytes*/) noexcept {}

void* ReservePages(std::size_t bytes) noexcept {
    assert(bytes > 0);
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void ReleasePages(void* data, std::size_t /*bytes*/) noexcept {
    // The size is known to the system and must be 0 here.
    VirtualFree(data, 0, MEM_RELEASE);
}

}  // namespace brenquil
