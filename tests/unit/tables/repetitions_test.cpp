// Sets of repeating places, against a walk through the block byte by byte.

#include "tables/repetitions.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace brenquil {
namespace {

using Bytes = std::vector<std::uint8_t>;

bool Has(const PlaceSet& places, std::size_t place) {
    return (places[place / 64] >> place % 64 & 1U) != 0;
}

/// The length of the repetition that starts at each place, 0 where none does.
std::vector<std::size_t> LengthsOfRepetitions(const Bytes& block, std::size_t distance) {
    std::vector<std::size_t> lengths(EmdBlockSize + 1);
    for (std::size_t at = block.size(); at-- > distance;) {
        lengths[at] = block[at] == block[at - distance] ? lengths[at + 1] + 1 : 0;
    }
    return lengths;
}

void ExpectPlacesOf(const Bytes& block, std::size_t distance) {
    const std::vector<std::size_t> lengths = LengthsOfRepetitions(block, distance);
    const PlaceSet starts = StartsOfRuns(block, distance);
    const PlaceSet places = PlacesOfRuns(starts);
    std::uint32_t expectedStarts = 0;
    for (std::size_t at = 0; at < EmdBlockSize; ++at) {
        const bool isStart = lengths[at] >= 3;
        const bool isOfRun =
            isStart || (at >= 1 && lengths[at - 1] >= 3) || (at >= 2 && lengths[at - 2] >= 3);
        ASSERT_EQ(Has(starts, at), isStart) << "place " << at << ", distance " << distance;
        ASSERT_EQ(Has(places, at), isOfRun) << "place " << at << ", distance " << distance;
        expectedStarts += isStart ? 1 : 0;
    }
    EXPECT_EQ(CountPlaces(starts), expectedStarts);
    EXPECT_EQ(CountPlacesWithout(places, starts), CountPlaces(places) - expectedStarts);
}

TEST(Repetitions, AreThoseOfAWalkForBlocksOfAllLengths) {
    std::mt19937_64 random(6);
    for (const std::size_t size : {1U, 2U, 3U, 4U, 63U, 64U, 65U, 66U, 130U, 1000U, 8191U, 8192U}) {
        Bytes block(size);
        for (std::uint8_t& byte : block) {
            byte = static_cast<std::uint8_t>(random() % 3 * 127);
        }
        for (const std::size_t distance : {1U, 2U, 7U, 8U, 61U, 62U, 63U, 64U, 65U, 8191U}) {
            ExpectPlacesOf(block, distance);
        }
        ExpectPlacesOf(block, 1 + random() % size);
    }
}

TEST(Repetitions, EqualBytesRepeatUpToTheEnd) {
    const Bytes block(EmdBlockSize, 255);
    EXPECT_EQ(CountPlaces(StartsOfRuns(block, 1)), EmdBlockSize - 3);
    EXPECT_EQ(CountPlaces(PlacesOfRuns(StartsOfRuns(block, 1))), EmdBlockSize - 1);
    EXPECT_EQ(CountPlaces(StartsOfRuns(block, EmdBlockSize - 2)), 0U);
}

TEST(Repetitions, BytesThatDifferInOneBitAreNoRepetition) {
    for (unsigned bit = 0; bit < 8; ++bit) {
        Bytes block(300, 0);
        block[150] = static_cast<std::uint8_t>(1U << bit);
        ExpectPlacesOf(block, 64);
        EXPECT_FALSE(Has(PlacesOfRuns(StartsOfRuns(block, 64)), 150));
    }
}

}  // namespace
}  // namespace brenquil
