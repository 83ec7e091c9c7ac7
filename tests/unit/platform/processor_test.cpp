#include "platform/processor.h"

#include <cctype>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace brenquil {
namespace {

bool IsZero(const CpuidResult& result) {
    return result.eax == 0 && result.ebx == 0 && result.ecx == 0 && result.edx == 0;
}

TEST(Processor, ThereIsAtLeastOne) {
    EXPECT_GE(ProcessorCount(), 1);
    EXPECT_LE(ProcessorCount(), 65536);
}

TEST(Processor, Has64Bits) {
    EXPECT_TRUE(IsProcessor64Bit());
}

TEST(Processor, LeavesAboveTheHighestAreZero) {
    EXPECT_TRUE(IsZero(Cpuid(0x7FFFFFFF)));
    EXPECT_TRUE(IsZero(Cpuid(0xFFFFFFFF)));
}

#if defined(__x86_64__)

TEST(Processor, LeafZeroNamesTheVendor) {
    const CpuidResult result = Cpuid(0);
    EXPECT_GE(result.eax, 1U) << "every x86-64 processor has leaf 1";
    std::string vendor(12, '\0');
    std::memcpy(vendor.data(), &result.ebx, 4);
    std::memcpy(vendor.data() + 4, &result.edx, 4);
    std::memcpy(vendor.data() + 8, &result.ecx, 4);
    for (const char character : vendor) {
        EXPECT_TRUE(std::isprint(static_cast<unsigned char>(character))) << vendor;
    }
    EXPECT_EQ(ProcessorVendor(), vendor);
}

TEST(Processor, LeafOneHasTheFeaturesOfEveryX86With64Bits) {
    constexpr std::uint32_t Sse2 = 1U << 26U;
    EXPECT_NE(Cpuid(1).edx & Sse2, 0U);
}

TEST(Processor, ExtendedLeavesAreReached) {
    constexpr std::uint32_t LongMode = 1U << 29U;
    EXPECT_NE(Cpuid(0x80000001).edx & LongMode, 0U);
}

#else

TEST(Processor, WithoutCpuidEveryLeafIsZero) {
    EXPECT_TRUE(IsZero(Cpuid(0)));
    EXPECT_TRUE(IsZero(Cpuid(1)));
}

TEST(Processor, VendorIsAWordOrNothing) {
    for (const char character : ProcessorVendor()) {
        EXPECT_TRUE(std::isalpha(static_cast<unsigned char>(character)));
    }
}

#endif

}  // namespace
}  // namespace brenquil
