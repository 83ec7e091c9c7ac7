#include "platform/memory.h"
#include "platform/system_pages.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace brenquil {

namespace {

constexpr std::size_t HugePageSize = std::size_t{2} << 20U;
constexpr std::uint64_t Unlimited = std::numeric_limits<std::uint64_t>::max();

/// `bytes` rounded up to whole pages; 0 when that is beyond the type.
std::size_t RoundToPages(std::size_t bytes) {
    const std::size_t pageSize = sysconf(_SC_PAGESIZE);
    return (bytes + pageSize - 1) / pageSize * pageSize;
}

/// The number after the word `key` in a file of lines "key number", `missing` when there is none.
std::uint64_t ReadKey(const std::string& path, std::string_view key, std::uint64_t missing) {
    std::ifstream file(path);
    std::string word;
    while (file >> word) {
        if (word == key) {
            std::uint64_t value = 0;
            return file >> value ? value : missing;
        }
        file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return missing;
}

/// The number that is the whole of a file. `missing` when there is no such file and for the word
/// "max".
std::uint64_t ReadNumber(const std::string& path, std::uint64_t missing) {
    std::ifstream file(path);
    std::uint64_t value = 0;
    return file >> value ? value : missing;
}

std::uint64_t Subtract(std::uint64_t left, std::uint64_t right) {
    return left - std::min(left, right);
}

/// What the whole machine has left: the free memory, the file cache that it would drop, and the
/// swap space.
std::uint64_t AvailableToMachine() {
    constexpr std::uint64_t Kibibyte = 1024;
    const std::uint64_t memory = ReadKey("/proc/meminfo", "MemAvailable:", Unlimited);
    if (memory == Unlimited) {
        // No /proc to ask: leave the decision to the system.
        return Unlimited;
    }
    return (memory + ReadKey("/proc/meminfo", "SwapFree:", 0)) * Kibibyte;
}

/// The names under which one version of the control groups keeps its figures.
struct GroupFiles {
    std::string_view mount;
    std::string_view
        linePrefix;  // marks the line of /proc/self/cgroup that holds the path of our group
    std::string_view limit;
    std::string_view usage;
    std::string_view cacheKey;  // the file cache inside the usage, in memory.stat
};

constexpr GroupFiles Version1 = {"/sys/fs/cgroup/memory", ":memory:", "/memory.limit_in_bytes",
                                 "/memory.usage_in_bytes", "total_cache"};
constexpr GroupFiles Version2 = {"/sys/fs/cgroup", "0::", "/memory.max", "/memory.current", "file"};

/// The path of our own group, starting with a slash; empty when we are in none.
std::string GroupPath(const GroupFiles& files) {
    std::ifstream groups("/proc/self/cgroup");
    std::string line;
    while (std::getline(groups, line)) {
        const std::size_t found = line.find(files.linePrefix);
        if (found != std::string::npos) {
            return line.substr(found + files.linePrefix.size());
        }
    }
    return {};
}

/// What the control groups leave us: the least of our group and of all groups around it. Inside a
/// container the path may name a folder that only the host can see; then only the outer folders
/// answer.
std::uint64_t AvailableToGroup(const GroupFiles& files) {
    std::uint64_t available = Unlimited;
    std::string path = GroupPath(files);
    while (!path.empty()) {
        const std::string folder = std::string(files.mount) + (path == "/" ? "" : path);
        const std::uint64_t limit = ReadNumber(folder + std::string(files.limit), Unlimited);
        if (limit != Unlimited) {
            const std::uint64_t usage = ReadNumber(folder + std::string(files.usage), 0);
            const std::uint64_t cache = ReadKey(folder + "/memory.stat", files.cacheKey, 0);
            available = std::min(available, Subtract(limit, Subtract(usage, cache)));
        }
        // Up one folder; the root is written "/" and is the last.
        const std::size_t slash = path.rfind('/');
        if (path == "/" || slash == std::string::npos) {
            break;
        }
        path.resize(std::max<std::size_t>(slash, 1));
    }
    return available;
}

}  // namespace

std::size_t AvailableMemory() noexcept {
    return std::min({AvailableToMachine(), AvailableToGroup(Version1), AvailableToGroup(Version2)});
}

void PreferHugePages(void* start, std::size_t bytes) noexcept {
    const auto begin = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t first = (begin + HugePageSize - 1) / HugePageSize * HugePageSize;
    const std::uintptr_t last = (begin + bytes) / HugePageSize * HugePageSize;
    if (first < last) {
        madvise(static_cast<std::byte*>(start) + (first - begin), last - first, MADV_HUGEPAGE);
    }
}

void* ReservePages(std::size_t bytes) noexcept {
    assert(bytes > 0);
    // A huge page must start at a multiple of its size. The system aligns to small pages only, so
    // ask for more and give the ends back.
    const std::size_t mappedBytes = RoundToPages(bytes);
    const std::size_t slack = mappedBytes >= HugePageSize ? HugePageSize : 0;
    if (mappedBytes < bytes || mappedBytes + slack < mappedBytes) {
        return nullptr;
    }
    void* const mapped = mmap(nullptr, mappedBytes + slack, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        return nullptr;
    }
    if (slack == 0) {
        return mapped;
    }

    auto* const start = static_cast<std::byte*>(mapped);
    const std::size_t misalignment = reinterpret_cast<std::uintptr_t>(mapped) % HugePageSize;
    const std::size_t head = misalignment == 0 ? 0 : HugePageSize - misalignment;
    std::byte* const data = start + head;
    const std::size_t tail = slack - head;
    if (head != 0) {
        munmap(start, head);
    }
    if (tail != 0) {
        munmap(data + mappedBytes, tail);
    }
    PreferHugePages(data, mappedBytes);
    return data;
}

void ReleasePages(void* data, std::size_t bytes) noexcept {
    munmap(data, RoundToPages(bytes));
}

}  // namespace brenquil
