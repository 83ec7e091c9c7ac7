#include "tables/repetitions.h"

#include "platform/bits.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace brenquil {

namespace {

constexpr std::size_t WordBits = 64;
constexpr std::size_t WordBytes = sizeof(std::uint64_t);

std::uint64_t LoadWord(const std::uint8_t* bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, WordBytes);
    return word;
}

/// Bit i: the bytes i of both words are equal.
std::uint64_t EqualBytes(std::uint64_t a, std::uint64_t b) noexcept {
    constexpr std::uint64_t LowBits = 0x7F7F7F7F7F7F7F7F;
    const std::uint64_t difference = a ^ b;
    // The top bit of each byte that differs; nothing is carried from one to the next.
    const std::uint64_t differs = ((difference & LowBits) + LowBits) | difference;
    const std::uint64_t equal = (~differs & ~LowBits) >> 7U;
    // Brings bit 8 i to bit 56 + i.
    constexpr std::uint64_t Gather = 0x0102040810204080;
    return equal * Gather >> 56U;
}

std::uint64_t EqualBytesOfWord(const std::uint8_t* a, const std::uint8_t* b) noexcept {
    std::uint64_t equal = 0;
    for (std::size_t part = 0; part < WordBits; part += WordBytes) {
        equal |= EqualBytes(LoadWord(a + part), LoadWord(b + part)) << part;
    }
    return equal;
}

PlaceSet EqualPlaces(std::span<const std::uint8_t> block, std::size_t distance) noexcept {
    assert(distance > 0 && block.size() <= EmdBlockSize);
    PlaceSet equal{};
    std::size_t at = distance;
    const auto compareUpTo = [&](std::size_t end) {
        for (; at < end; ++at) {
            const bool isEqual = block[at] == block[at - distance];
            equal[at / WordBits] |= std::uint64_t{isEqual} << at % WordBits;
        }
    };
    compareUpTo(std::min((at + WordBits - 1) / WordBits * WordBits, block.size()));
    for (; at + WordBits <= block.size(); at += WordBits) {
        equal[at / WordBits] = EqualBytesOfWord(&block[at], &block[at - distance]);
    }
    compareUpTo(block.size());
    return equal;
}

}  // namespace

PlaceSet StartsOfRuns(std::span<const std::uint8_t> block, std::size_t distance) noexcept {
    const PlaceSet equal = EqualPlaces(block, distance);
    PlaceSet starts{};
    for (std::size_t word = distance / WordBits; word < equal.size(); ++word) {
        const std::uint64_t next = word + 1 < equal.size() ? equal[word + 1] : 0;
        const std::uint64_t second = equal[word] >> 1U | next << (WordBits - 1);
        const std::uint64_t third = equal[word] >> 2U | next << (WordBits - 2);
        starts[word] = equal[word] & second & third;
    }
    return starts;
}

PlaceSet PlacesOfRuns(const PlaceSet& starts) noexcept {
    PlaceSet places{};
    std::uint64_t before = 0;
    for (std::size_t word = 0; word < starts.size(); ++word) {
        const std::uint64_t second = starts[word] << 1U | before >> (WordBits - 1);
        const std::uint64_t third = starts[word] << 2U | before >> (WordBits - 2);
        places[word] = starts[word] | second | third;
        before = starts[word];
    }
    return places;
}

std::uint32_t CountPlaces(const PlaceSet& places) noexcept {
    return CountPlacesWithout(places, PlaceSet{});
}

std::uint32_t CountPlacesWithout(const PlaceSet& places, const PlaceSet& others) noexcept {
    std::uint32_t count = 0;
    for (std::size_t word = 0; word < places.size(); ++word) {
        count += PopCount(places[word] & ~others[word]);
    }
    return count;
}

}  // namespace brenquil
