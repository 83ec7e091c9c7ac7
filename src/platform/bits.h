// Questions about 64-bit words that the processor answers in an instruction or two.
//
// The population count is the one that old x86-64 processors lack. A portable build therefore
// carries both ways and asks `HasPopcount`, which is read once at start:
//
//     PopCount(word)            chooses at each call, by a branch that always predicts
//     PopCount<Hardware>(word)  chooses at compile time, for a hot caller that is itself a template
//                               over the choice and asks HasPopcount once, far outside its loop
//
// A build for a processor that has the instruction (-march=native) uses it everywhere and without a
// question.
//
// Cost: everything is inline; one to three cycles each, the portable count about ten.
#pragma once

#include "platform/processor.h"

#include <bit>
#include <cassert>
#include <cstdint>

namespace brenquil {

namespace platform_detail {

[[nodiscard]] inline bool DetectPopcount() noexcept {
#if defined(__x86_64__)
    constexpr std::uint32_t FeatureLeaf = 1;
    constexpr std::uint32_t PopcountFlag = 1U << 23U;
    return (Cpuid(FeatureLeaf).ecx & PopcountFlag) != 0;
#else
    // Every 64-bit processor family but x86 counts bits from its first model on, and the compiler
    // knows how.
    return true;
#endif
}

}  // namespace platform_detail

/// True when the processor counts bits by an instruction.
///
/// Tables of other files are built before main. Any file that includes this header initialises the
/// flag before its own variables; code that is reached earlier still sees false, counts the
/// portable way and gets the same numbers.
inline const bool HasPopcount = platform_detail::DetectPopcount();

/// The number of set bits, by halving: sums of 2, 4 and 8 bits side by side, then a multiplication
/// that adds the eight bytes in the topmost one.
[[nodiscard]] constexpr int PopCountPortable(std::uint64_t word) noexcept {
    word -= (word >> 1U) & 0x5555555555555555U;
    word = (word & 0x3333333333333333U) + ((word >> 2U) & 0x3333333333333333U);
    word = (word + (word >> 4U)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<int>((word * 0x0101010101010101U) >> 56U);
}

/// The number of set bits, by the processor's instruction. Only where HasPopcount is true.
[[nodiscard]] inline int PopCountHardware(std::uint64_t word) noexcept {
#if defined(__x86_64__) && !defined(__POPCNT__)
    assert(HasPopcount);
    // The compiler may not emit the instruction in a portable build, the assembler may. Source and
    // target are one register because many processors wait for the old value of the target, though
    // it plays no part; and a memory operand is not offered because Clang would always take it.
    asm("popcnt %0, %0" : "+r"(word) : : "cc");
    return static_cast<int>(word);
#else
    return std::popcount(word);
#endif
}

/// The number of set bits, by the way chosen at compile time.
template <bool Hardware>
[[nodiscard]] inline int PopCount(std::uint64_t word) noexcept {
#if defined(__x86_64__) && !defined(__POPCNT__)
    if constexpr (Hardware) {
        return PopCountHardware(word);
    } else {
        return PopCountPortable(word);
    }
#else
    // There is nothing to choose.
    return PopCountHardware(word);
#endif
}

/// The number of set bits, by the best way that this processor has.
[[nodiscard]] inline int PopCount(std::uint64_t word) noexcept {
#if defined(__x86_64__) && !defined(__POPCNT__)
    return HasPopcount ? PopCountHardware(word) : PopCountPortable(word);
#else
    return PopCountHardware(word);
#endif
}

/// The index of the lowest set bit. `word` is not 0: std::countr_zero would pay for that case with
/// a branch on processors without BMI.
[[nodiscard]] constexpr int LowestBit(std::uint64_t word) noexcept {
    assert(word != 0);
    return __builtin_ctzll(word);
}

/// The index of the highest set bit. `word` is not 0.
[[nodiscard]] constexpr int HighestBit(std::uint64_t word) noexcept {
    assert(word != 0);
    return 63 - __builtin_clzll(word);
}

/// Clears the lowest set bit and returns its index. `word` is not 0.
constexpr int PopLowestBit(std::uint64_t& word) noexcept {
    const int index = LowestBit(word);
    word &= word - 1;
    return index;
}

/// The eight bytes in the opposite order.
[[nodiscard]] constexpr std::uint64_t ReverseBytes(std::uint64_t word) noexcept {
    return __builtin_bswap64(word);
}

/// A number that fits a byte, as a byte.
[[nodiscard]] constexpr std::uint8_t ToByte(std::uint64_t number) noexcept {
    assert(number <= 0xFFU);
    return static_cast<std::uint8_t>(number);
}

/// The upper half of the 128-bit product.
[[nodiscard]] constexpr std::uint64_t MultiplyHigh(std::uint64_t left,
                                                   std::uint64_t right) noexcept {
#if defined(__wasm__)
    // There is no instruction for it, and the wide type would call a function that works out the
    // lower half as well: four products of halves, and the carries between them.
    constexpr unsigned Half = 32;
    constexpr std::uint64_t LowMask = 0xFFFFFFFFU;
    const std::uint64_t leftLow = left & LowMask;
    const std::uint64_t leftHigh = left >> Half;
    const std::uint64_t rightLow = right & LowMask;
    const std::uint64_t rightHigh = right >> Half;
    const std::uint64_t middle = leftHigh * rightLow + ((leftLow * rightLow) >> Half);
    const std::uint64_t other = leftLow * rightHigh + (middle & LowMask);
    return leftHigh * rightHigh + (middle >> Half) + (other >> Half);
#else
    __extension__ using Wide = unsigned __int128;
    return static_cast<std::uint64_t>((static_cast<Wide>(left) * right) >> 64U);
#endif
}

/// Asks for the cache line of `address`, which may be any value; a bad one is ignored.
inline void Prefetch(const void* address) noexcept {
    // A function that only fetches has no effect in the eyes of GCC 12, which drops calls of it
    // that it does not inline. The empty statement is an effect.
    asm volatile("");
    __builtin_prefetch(address);
}

}  // namespace brenquil
