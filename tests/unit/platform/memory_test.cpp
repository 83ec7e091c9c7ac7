#include "platform/memory.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#if defined(__linux__)
#include <unistd.h>
#endif

namespace brenquil {
namespace {

constexpr std::size_t Mebibyte = std::size_t{1} << 20U;

bool IsZeroAndWritable(const CPages& pages) {
    auto* const bytes = static_cast<unsigned char*>(pages.Data());
    const bool zero = std::all_of(bytes, bytes + pages.Size(), [](auto byte) { return byte == 0; });
    std::fill_n(bytes, pages.Size(), static_cast<unsigned char>(0xA5));
    return zero && bytes[0] == 0xA5 && bytes[pages.Size() - 1] == 0xA5;
}

TEST(Pages, AreZeroAlignedAndWritableInEverySize) {
    // Below a page, around the size of a huge page, and odd sizes.
    for (const std::size_t bytes :
         {std::size_t{1}, std::size_t{4096}, std::size_t{5000}, 2 * Mebibyte - 1, 2 * Mebibyte,
          2 * Mebibyte + 1, 7 * Mebibyte + 12345}) {
        const CPages pages = CPages::Allocate(bytes);
        ASSERT_NE(pages.Data(), nullptr) << bytes;
        EXPECT_EQ(pages.Size(), bytes);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pages.Data()) % 4096, 0U) << bytes;
        EXPECT_TRUE(IsZeroAndWritable(pages)) << bytes;
    }
}

TEST(Pages, AreZeroAgainWhenTheMemoryIsReused) {
    for (int i = 0; i < 20; ++i) {
        const CPages pages = CPages::Allocate(4 * Mebibyte);
        ASSERT_NE(pages.Data(), nullptr);
        ASSERT_TRUE(IsZeroAndWritable(pages)) << "round " << i;
    }
}

TEST(Pages, NothingIsAskedForAndNothingGiven) {
    const CPages pages = CPages::Allocate(0);
    EXPECT_EQ(pages.Data(), nullptr);
    EXPECT_EQ(pages.Size(), 0U);
}

TEST(Pages, WhatTheMachineCannotHoldIsRefused) {
    constexpr std::size_t Most = std::numeric_limits<std::size_t>::max();
    for (const std::size_t bytes :
         {Most, Most - 4096, Most / 2, Mebibyte << 20U, Mebibyte << 24U}) {
        EXPECT_EQ(CPages::Allocate(bytes).Data(), nullptr) << bytes;
    }
}

// Makes the system really hand out the memory.
void TouchEveryPage(const CPages& pages) {
    constexpr std::size_t PageSize = 4096;
    for (std::size_t offset = 0; offset < pages.Size(); offset += PageSize) {
        static_cast<unsigned char*>(pages.Data())[offset] = 1;
    }
}

TEST(PagesSerial, ABlockAboveTheFreeMemoryIsRefusedBeforeItIsTouched) {
    constexpr std::size_t Much = 512 * Mebibyte;
    const CPages used = CPages::Allocate(Much);
    ASSERT_NE(used.Data(), nullptr);
    TouchEveryPage(used);
    // More than is free but less than the machine has: the system itself would always promise that,
    // as it counts pages only when they are used. Other programs may free memory between the two
    // looks at what is available, but not every time.
    bool refused = false;
    for (int attempt = 0; attempt < 50 && !refused; ++attempt) {
        const CPages tooMuch = CPages::Allocate(AvailableMemory() + Much * 3 / 4);
        refused = tooMuch.Data() == nullptr;
        std::this_thread::sleep_for(std::chrono::milliseconds(refused ? 0 : 20));
    }
    EXPECT_TRUE(refused);
}

TEST(Pages, AMoveHandsTheBlockOver) {
    CPages first = CPages::Allocate(Mebibyte);
    void* const data = first.Data();
    CPages second = std::move(first);
    EXPECT_EQ(second.Data(), data);
    EXPECT_EQ(second.Size(), Mebibyte);

    CPages third = CPages::Allocate(2 * Mebibyte);
    third = std::move(second);
    EXPECT_EQ(third.Data(), data);
    EXPECT_EQ(third.Size(), Mebibyte);
    EXPECT_TRUE(IsZeroAndWritable(third));
}

TEST(Pages, ReleaseLeavesNothingAndMayBeRepeated) {
    CPages pages = CPages::Allocate(Mebibyte);
    ASSERT_NE(pages.Data(), nullptr);
    pages.Release();
    EXPECT_EQ(pages.Data(), nullptr);
    EXPECT_EQ(pages.Size(), 0U);
    pages.Release();
}

/// Larger than a huge page, and no multiple of one.
struct LargeObject : CInHugePages {
    std::array<unsigned char, 3 * Mebibyte + 5> bytes;
};

TEST(InHugePages, AnObjectBeginsWhereAPageCanAndEachHasItsOwnMemory) {
    const auto first = std::make_unique<LargeObject>();
    const auto second = std::make_unique<LargeObject>();
    first->bytes.fill(1);
    second->bytes.fill(2);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first.get()) % HugePageAlignment, 0U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(second.get()) % HugePageAlignment, 0U);
    EXPECT_TRUE(std::ranges::all_of(first->bytes, [](auto byte) { return byte == 1; }));
}

#if defined(__linux__)

constexpr std::size_t Block = 64 * Mebibyte;

// The memory that this process holds.
std::size_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(Pages, MemoryIsTakenWhenTouchedAndGivenBackByRelease) {
    const std::size_t before = ResidentBytes();
    CPages pages = CPages::Allocate(Block);
    ASSERT_NE(pages.Data(), nullptr);
    EXPECT_LT(ResidentBytes(), before + Block / 2);
    TouchEveryPage(pages);
    EXPECT_GT(ResidentBytes(), before + Block / 2);
    pages.Release();
    EXPECT_LT(ResidentBytes(), before + Block / 2);
}

// What the machine has left: free memory, the file cache that it would drop, and swap space.
std::size_t BytesToldByTheSystem() {
    std::ifstream file("/proc/meminfo");
    std::size_t kibibytes = 0;
    std::string word;
    while (file >> word) {
        std::size_t number = 0;
        if ((word == "MemAvailable:" || word == "SwapFree:") && file >> number) {
            kibibytes += number;
        }
    }
    return kibibytes * 1024;
}

TEST(PagesSerial, AvailableIsWhatTheSystemTells) {
    const std::size_t before = BytesToldByTheSystem();
    const std::size_t available = AvailableMemory();
    // A container may leave less, and what runs beside takes and gives back meanwhile.
    EXPECT_GT(available, 0U);
    EXPECT_LE(available, std::max(before, BytesToldByTheSystem()) + 256 * Mebibyte);
}

TEST(Pages, DestructionAndReplacementGiveTheMemoryBack) {
    const std::size_t before = ResidentBytes();
    {
        CPages pages = CPages::Allocate(Block);
        ASSERT_NE(pages.Data(), nullptr);
        TouchEveryPage(pages);
        pages = CPages::Allocate(Mebibyte);
        EXPECT_LT(ResidentBytes(), before + Block / 2);
        pages = CPages::Allocate(Block);
        ASSERT_NE(pages.Data(), nullptr);
        TouchEveryPage(pages);
    }
    EXPECT_LT(ResidentBytes(), before + Block / 2);
}

#endif

}  // namespace
}  // namespace brenquil
