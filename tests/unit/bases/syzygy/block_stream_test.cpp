#include "bases/syzygy/block_stream.h"
#include "syzygy_writer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace brenquil {
namespace {

using testing_support::Bytes;
using testing_support::MakeStream;
using testing_support::StreamParts;
using testing_support::StreamShape;

/// A stream alone in a file.
struct OneStream {
    Bytes file;
    std::unique_ptr<BlockStream> stream;
    std::uint8_t flags = 0;
    bool isSound = false;
};

OneStream ReadParts(const StreamParts& parts, std::uint64_t count, bool wdl) {
    OneStream one;
    one.file = parts.header;
    BlockStreamPlaces places;
    places.indexTable = one.file.size();
    one.file.insert(one.file.end(), parts.indexTable.begin(), parts.indexTable.end());
    places.sizeTable = one.file.size();
    one.file.insert(one.file.end(), parts.sizeTable.begin(), parts.sizeTable.end());
    places.data = one.file.size();
    one.file.insert(one.file.end(), parts.data.begin(), parts.data.end());

    BlockStreamSizes sizes;
    std::uint64_t position = 0;
    one.stream = SetupBlockStream(one.file, count, sizes, position, one.flags, wdl);
    if (one.stream != nullptr) {
        EXPECT_EQ(position, parts.header.size());
        one.isSound = PlaceBlockStream(*one.stream, one.file, count, sizes, places);
    }
    return one;
}

void ExpectAllValues(const std::vector<std::uint8_t>& values, const StreamShape& shape) {
    const OneStream one = ReadParts(MakeStream(values, shape, 0, true), values.size(), true);
    ASSERT_TRUE(one.isSound);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(DecompressValue(*one.stream, i), values[i]) << i;
    }
}

std::vector<std::uint8_t> RandomValues(std::size_t count, unsigned alphabet, unsigned seed) {
    std::mt19937_64 random(seed);
    std::vector<std::uint8_t> values(count);
    std::uint8_t value = 0;
    for (std::uint8_t& entry : values) {
        if (random() % 5 == 0) {
            value = static_cast<std::uint8_t>(random() % alphabet * 255 / alphabet);
        }
        entry = value;
    }
    return values;
}

TEST(BlockStreams, ASingleValueNeedsNoBlock) {
    const std::vector<std::uint8_t> values(1000, 3);
    const StreamParts parts = MakeStream(values, {}, 0, true);
    ASSERT_EQ(parts.header, (Bytes{0x80, 3}));
    const OneStream one = ReadParts(parts, values.size(), true);
    ASSERT_TRUE(one.isSound);
    EXPECT_EQ(one.stream->data, nullptr);
    EXPECT_EQ(DecompressValue(*one.stream, 0), 3);
    EXPECT_EQ(DecompressValue(*one.stream, 999), 3);
}

TEST(BlockStreams, ASingleDistanceIsZeroWhateverIsStored) {
    const OneStream one = ReadParts({{0x84, 7}, {}, {}, {}}, 10, false);
    ASSERT_TRUE(one.isSound);
    EXPECT_EQ(one.flags, 0x84);
    EXPECT_EQ(DecompressValue(*one.stream, 5), 0);
}

TEST(BlockStreams, AllValuesComeBack) {
    for (const unsigned alphabet : {2U, 5U, 40U}) {
        for (const unsigned indexBits : {1U, 4U, 9U}) {
            for (const unsigned pairings : {0U, 3U, 40U}) {
                StreamShape shape;
                shape.indexBits = indexBits;
                shape.pairings = pairings;
                ExpectAllValues(RandomValues(3001, alphabet, indexBits + pairings), shape);
            }
        }
    }
}

TEST(BlockStreams, BlocksOfAnySizeComeBack) {
    for (const unsigned blockSize : {2U, 3U, 5U, 8U, 12U}) {
        StreamShape shape;
        shape.blockSize = blockSize;
        ExpectAllValues(RandomValues(2000, 4, blockSize), shape);
    }
}

/// The rows of the index name middles: the first values of a block lie before them, so that the
/// walk begins by going back.
TEST(BlockStreams, TheFirstAndTheLastValueOfEachBlockAreFound) {
    const std::vector<std::uint8_t> values = RandomValues(20000, 5, 77);
    for (const unsigned indexBits : {2U, 8U, 14U}) {
        StreamShape shape;
        shape.indexBits = indexBits;
        const OneStream one = ReadParts(MakeStream(values, shape, 0, true), values.size(), true);
        ASSERT_TRUE(one.isSound);
        std::size_t first = 0;
        for (std::uint32_t block = 0; block < one.stream->storedBlocks; ++block) {
            const std::uint8_t* const size = one.stream->sizeTable + 2 * block;
            const std::size_t last = first + static_cast<std::size_t>(size[0] | size[1] << 8);
            ASSERT_EQ(DecompressValue(*one.stream, first), values[first]);
            ASSERT_EQ(DecompressValue(*one.stream, last), values[last]);
            if (first > 0) {
                ASSERT_EQ(DecompressValue(*one.stream, first - 1), values[first - 1]);
            }
            first = last + 1;
        }
        EXPECT_EQ(first, values.size());
    }
}

TEST(BlockStreams, TheMiddleOfTheLastRowMayLieBehindAllValues) {
    StreamShape shape;
    shape.indexBits = 12;
    ExpectAllValues(RandomValues(70, 5, 1), shape);
    shape.emptyBlocks = 2;
    ExpectAllValues(RandomValues(70, 5, 2), shape);
}

TEST(BlockStreams, ARowMayNameABlockWithoutData) {
    StreamShape shape;
    shape.indexBits = 12;
    shape.emptyBlocks = 1;
    const std::vector<std::uint8_t> values = RandomValues(70, 5, 3);
    StreamParts parts = MakeStream(values, shape, 0, true);
    const std::size_t stored = parts.sizeTable.size() / 2 - 1;
    const std::size_t offset = 2048 - 70;
    parts.indexTable = {
        static_cast<std::uint8_t>(stored),      0, 0, 0, static_cast<std::uint8_t>(offset & 255U),
        static_cast<std::uint8_t>(offset >> 8U)};
    const OneStream one = ReadParts(parts, values.size(), true);
    ASSERT_TRUE(one.isSound);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(DecompressValue(*one.stream, i), values[i]) << i;
    }
}

/// One symbol only has a code of one bit, and the other bit stands for nothing.
TEST(BlockStreams, ACodeNeedNotBeComplete) {
    StreamShape shape;
    shape.singleValue = false;
    shape.pairings = 0;
    ExpectAllValues(std::vector<std::uint8_t>(300, 4), shape);
    StreamParts parts = MakeStream(std::vector<std::uint8_t>(300, 4), shape, 0, true);
    std::fill(parts.data.begin(), parts.data.end(), std::uint8_t{0xFF});
    const OneStream one = ReadParts(parts, 300, true);
    ASSERT_TRUE(one.isSound);
    EXPECT_EQ(DecompressValue(*one.stream, 100), 0);
}

TEST(BlockStreams, SymbolsThatReferToThemselvesAreRefused) {
    StreamShape shape;
    shape.pairings = 4;
    const std::vector<std::uint8_t> values = RandomValues(500, 3, 9);
    StreamParts parts = MakeStream(values, shape, 0, true);
    const std::size_t lengths = parts.header[8] - parts.header[9] + 1U;
    const std::size_t patterns = 12 + 2 * lengths;
    const unsigned count = parts.header[patterns - 2];
    // Symbol 0 becomes 0 followed by 0, and then a symbol that is not there.
    parts.header[patterns] = parts.header[patterns + 1] = parts.header[patterns + 2] = 0;
    EXPECT_EQ(ReadParts(parts, values.size(), true).stream, nullptr);
    parts.header[patterns] = static_cast<std::uint8_t>(count);
    EXPECT_EQ(ReadParts(parts, values.size(), true).stream, nullptr);
}

TEST(BlockStreams, RowsThatLeadOutsideAreRefused) {
    const std::vector<std::uint8_t> values = RandomValues(5000, 5, 11);
    const StreamParts parts = MakeStream(values, {}, 0, true);
    ASSERT_TRUE(ReadParts(parts, values.size(), true).isSound);
    const auto isSoundWith = [&](std::size_t place, std::uint8_t value) {
        StreamParts changed = parts;
        changed.indexTable[place] = value;
        return ReadParts(changed, values.size(), true).isSound;
    };
    EXPECT_FALSE(isSoundWith(3, 1)) << "a block far away";
    EXPECT_FALSE(isSoundWith(4, 0)) << "a first row that begins before the first value";
    EXPECT_FALSE(isSoundWith(parts.indexTable.size() - 1, 255)) << "a row after the last value";
    EXPECT_FALSE(ReadParts(parts, values.size() + 2000, true).isSound) << "too few values";
}

TEST(BlockStreams, HeadersThatPromiseTooMuchAreRefused) {
    const std::vector<std::uint8_t> values = RandomValues(500, 3, 12);
    const StreamParts parts = MakeStream(values, {}, 0, true);
    const auto isSoundWith = [&](std::size_t place, std::uint8_t value) {
        StreamParts changed = parts;
        changed.header[place] = value;
        const OneStream one = ReadParts(changed, values.size(), true);
        return one.stream != nullptr && one.isSound;
    };
    EXPECT_FALSE(isSoundWith(1, 200)) << "blocks of 2^200 bytes";
    EXPECT_FALSE(isSoundWith(1, 31)) << "blocks longer than the file";
    EXPECT_FALSE(isSoundWith(2, 200)) << "rows 2^200 values apart";
    EXPECT_FALSE(isSoundWith(6, 255)) << "more blocks than the file has";
    EXPECT_FALSE(isSoundWith(8, 33)) << "codes longer than a word";
    EXPECT_FALSE(isSoundWith(9, static_cast<std::uint8_t>(parts.header[8] + 1)))
        << "the shortest code longer than the longest";
}

}  // namespace
}  // namespace brenquil
