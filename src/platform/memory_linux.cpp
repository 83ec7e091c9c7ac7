#include "platform/memory.h"
#include "platform/system_pages.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace brenquil {

namespace {

constexpr std::size_t HugePageSize = HugePageAlignment;
constexpr std::uint64_t Unlimited = std::numeric_limits<std::uint64_t>::max();

/// Limits from here on are none: the word "max" counts as `Unlimited`, and version 1 of the control
/// groups writes the last whole page before 2^63.
constexpr std::uint64_t NoLimit = std::uint64_t{1} << 62U;

/// `bytes` rounded up to whole pages; 0 when that is beyond the type.
std::size_t RoundToPages(std::size_t bytes) {
    const std::size_t pageSize = sysconf(_SC_PAGESIZE);
    return (bytes + pageSize - 1) / pageSize * pageSize;
}

/// The whole of a file that the system shows, empty when there is none.
std::string ReadText(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The number that a text begins with, after blanks; `missing` when there is none.
std::uint64_t NumberIn(std::string_view text, std::uint64_t missing) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::uint64_t value = 0;
    const bool isNumber =
        std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
    return isNumber ? value : missing;
}

/// The number after the word `key` in a text of lines "key number", `missing` when there is none.
std::uint64_t NumberOf(std::string_view key, std::string_view text, std::uint64_t missing) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1);
        if (text.starts_with(key) && text.substr(key.size()).starts_with(' ')) {
            return NumberIn(text.substr(key.size(), end - key.size()), missing);
        }
        text.remove_prefix(end + 1);
    }
    return missing;
}

std::uint64_t Subtract(std::uint64_t left, std::uint64_t right) {
    return left - std::min(left, right);
}

/// What the whole machine has left: the free memory, the file cache that it would drop, and the
/// swap space.
std::uint64_t AvailableToMachine() {
    constexpr std::uint64_t Kibibyte = 1024;
    const std::string text = ReadText("/proc/meminfo");
    const std::uint64_t memory = NumberOf("MemAvailable:", text, Unlimited);
    if (memory == Unlimited) {
        // No /proc to ask: leave the decision to the system.
        return Unlimited;
    }
    return (memory + NumberOf("SwapFree:", text, 0)) * Kibibyte;
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

/// The path of our own group, starting with a slash, from the text of /proc/self/cgroup; empty when
/// we are in none.
std::string GroupPath(std::string_view groups, const GroupFiles& files) {
    const std::size_t found = groups.find(files.linePrefix);
    if (found == std::string_view::npos) {
        return {};
    }
    groups.remove_prefix(found + files.linePrefix.size());
    return std::string(groups.substr(0, groups.find('\n')));
}

/// What the control groups leave us: the least of our group and of all groups around it. Inside a
/// container the path may name a folder that only the host can see; then only the outer folders
/// answer.
std::uint64_t AvailableToGroup(std::string_view groups, const GroupFiles& files) {
    std::uint64_t available = Unlimited;
    std::string path = GroupPath(groups, files);
    while (!path.empty()) {
        const std::string folder = std::string(files.mount) + (path == "/" ? "" : path);
        const std::uint64_t limit =
            NumberIn(ReadText(folder + std::string(files.limit)), Unlimited);
        if (limit < NoLimit) {
            const std::uint64_t usage = NumberIn(ReadText(folder + std::string(files.usage)), 0);
            const std::uint64_t cache =
                NumberOf(files.cacheKey, ReadText(folder + "/memory.stat"), 0);
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
    const std::string groups = ReadText("/proc/self/cgroup");
    return std::min({AvailableToMachine(), AvailableToGroup(groups, Version1),
                     AvailableToGroup(groups, Version2)});
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
