#include "platform/bits.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace brenquil {
namespace {

// The definition itself: one step a bit.
int CountOneByOne(std::uint64_t word) {
    int count = 0;
    for (; word != 0; word >>= 1U) {
        count += static_cast<int>(word & 1U);
    }
    return count;
}

// Random words from nearly empty to nearly full.
class RandomWords {
public:
    std::uint64_t Next() {
        const std::uint64_t word = generator_();
        switch (round_++ % 4) {
        case 0: return word;
        case 1: return word & generator_() & generator_();
        case 2: return word | generator_() | generator_();
        default: return word >> (word % 64);
        }
    }

private:
    std::mt19937_64 generator_{20240229};
    int round_ = 0;
};

// A table that is built before main, as the attack tables are.
const int CountedBeforeMain = PopCount(0xF0F0F0F0F0F0F0F0U);

TEST(PopCount, KnowsTheEnds) {
    EXPECT_EQ(PopCount(0), 0);
    EXPECT_EQ(PopCount(~std::uint64_t{0}), 64);
    EXPECT_EQ(PopCountPortable(0), 0);
    EXPECT_EQ(PopCountPortable(~std::uint64_t{0}), 64);
}

TEST(PopCount, CountsEverySingleBit) {
    for (int bit = 0; bit < 64; ++bit) {
        EXPECT_EQ(PopCount(std::uint64_t{1} << bit), 1) << bit;
        EXPECT_EQ(PopCountPortable(std::uint64_t{1} << bit), 1) << bit;
        EXPECT_EQ(PopCountPortable(~(std::uint64_t{1} << bit)), 63) << bit;
    }
}

TEST(PopCount, AllWaysAgreeWithCountingOneByOne) {
    RandomWords words;
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t word = words.Next();
        const int expected = CountOneByOne(word);
        ASSERT_EQ(PopCount(word), expected) << word;
        ASSERT_EQ(PopCountPortable(word), expected) << word;
        ASSERT_EQ(PopCount<false>(word), expected) << word;
        if (HasPopcount) {
            ASSERT_EQ(PopCountHardware(word), expected) << word;
            ASSERT_EQ(PopCount<true>(word), expected) << word;
        }
    }
}

TEST(PopCount, HardwareWayLeavesItsArgumentAlone) {
    if (!HasPopcount) {
        return;
    }
    const std::uint64_t word = 0x123456789ABCDEFU;
    const int count = PopCountHardware(word);
    EXPECT_EQ(word, 0x123456789ABCDEFU);
    EXPECT_EQ(count, 32);
}

TEST(PopCount, WorksBeforeMain) {
    EXPECT_EQ(CountedBeforeMain, 32);
}

TEST(PopCount, FlagIsTheBitOfTheProcessor) {
#if defined(__x86_64__)
    EXPECT_EQ(HasPopcount, ((Cpuid(1).ecx >> 23U) & 1U) != 0);
#else
    EXPECT_TRUE(HasPopcount);
#endif
}

TEST(Bits, LowestBitIsTheNumberOfZerosBelowIt) {
    for (int bit = 0; bit < 64; ++bit) {
        EXPECT_EQ(LowestBit(std::uint64_t{1} << bit), bit);
        EXPECT_EQ(LowestBit(~std::uint64_t{0} << bit), bit);
    }
}

TEST(Bits, HighestBitIsTheNumberOfTheLastBit) {
    for (int bit = 0; bit < 64; ++bit) {
        EXPECT_EQ(HighestBit(std::uint64_t{1} << bit), bit);
        EXPECT_EQ(HighestBit(~std::uint64_t{0} >> (63 - bit)), bit);
    }
}

TEST(Bits, PopLowestBitWalksUpwardsAndEmptiesTheWord) {
    std::uint64_t word = 0x8000000100000021U;
    EXPECT_EQ(PopLowestBit(word), 0);
    EXPECT_EQ(PopLowestBit(word), 5);
    EXPECT_EQ(word, 0x8000000100000000U);
    EXPECT_EQ(PopLowestBit(word), 32);
    EXPECT_EQ(PopLowestBit(word), 63);
    EXPECT_EQ(word, 0U);
}

TEST(Bits, ReverseBytesTurnsTheEightBytesRound) {
    EXPECT_EQ(ReverseBytes(0x0123456789ABCDEFU), 0xEFCDAB8967452301U);
    EXPECT_EQ(ReverseBytes(ReverseBytes(0xDEADBEEF12345678U)), 0xDEADBEEF12345678U);
}

TEST(Bits, MultiplyHighIsTheUpperHalfOfTheProduct) {
    EXPECT_EQ(MultiplyHigh(~std::uint64_t{0}, ~std::uint64_t{0}), ~std::uint64_t{0} - 1);
    EXPECT_EQ(MultiplyHigh(std::uint64_t{1} << 63, 2), 1U);
    EXPECT_EQ(MultiplyHigh(std::uint64_t{1} << 63, 1), 0U);

    // Long multiplication by halves of 32 bits.
    RandomWords words;
    for (int i = 0; i < 10000; ++i) {
        const std::uint64_t left = words.Next();
        const std::uint64_t right = words.Next();
        const std::uint64_t low = (left & 0xFFFFFFFFU) * (right & 0xFFFFFFFFU);
        const std::uint64_t middle = (left >> 32U) * (right & 0xFFFFFFFFU) + (low >> 32U);
        const std::uint64_t other = (left & 0xFFFFFFFFU) * (right >> 32U) + (middle & 0xFFFFFFFFU);
        const std::uint64_t high =
            (left >> 32U) * (right >> 32U) + (middle >> 32U) + (other >> 32U);
        ASSERT_EQ(MultiplyHigh(left, right), high) << left << " * " << right;
    }
}

TEST(Bits, PrefetchAcceptsAnyAddress) {
    const std::array<int, 4> array = {1, 2, 3, 4};
    Prefetch(array.data());
    Prefetch(nullptr);
    Prefetch(reinterpret_cast<const void*>(~std::uintptr_t{0}));
    EXPECT_EQ(array[3], 4);
}

}  // namespace
}  // namespace brenquil
