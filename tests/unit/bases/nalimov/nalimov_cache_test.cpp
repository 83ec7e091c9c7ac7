// The block cache: sizes, eviction, encodings and failures.

#include "nalimov_cache_fixture.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

using test::CDataCompWriter;

using NalimovCache = CNalimovCacheTest;

TEST_F(NalimovCache, OneMegabyteHasOneHundredAndTwentySixBlocks) {
    cache->Resize(1);
    EXPECT_EQ(cache->BlockCount(), 126U);
    cache->Resize(32);
    EXPECT_EQ(cache->BlockCount(), 4050U);
}

TEST_F(NalimovCache, SizesThatGiveNoBlocksGiveNoAnswers) {
    WriteThreeMen();
    EXPECT_EQ(cache->ReadValue(1, 0, 5), NoValue) << "never resized";
    cache->Resize(1);
    EXPECT_NE(cache->ReadValue(1, 0, 5), NoValue);
    for (const int size : {0, -1, 2000000000}) {
        cache->Resize(size);
        EXPECT_EQ(cache->BlockCount(), 0U) << size;
        EXPECT_EQ(cache->Megabytes(), size);
        EXPECT_EQ(cache->ReadValue(1, 0, 5), NoValue) << size;
    }
    cache->Resize(1);
    EXPECT_NE(cache->ReadValue(1, 0, 5), NoValue);
}

TEST_F(NalimovCache, EvictionAtEveryMissKeepsTheAnswersRight) {
    WriteThreeMen();
    cache->Resize(1);
    // All blocks of all tables, again and again: more than there is room for, oldest first.
    std::uint64_t blocks = 0;
    for (int round = 0; round < 4; ++round) {
        for (std::size_t file = 0; file < contents.size(); ++file) {
            for (std::size_t at = 0; at < contents[file].size(); at += 4001) {
                const int table = static_cast<int>(file / 2) + 1;
                ASSERT_EQ(cache->ReadValue(table, static_cast<int>(file % 2), at),
                          Meaning(contents[file][at]));
            }
            blocks += round == 0 ? contents[file].size() / 8192 + 1 : 0;
        }
    }
    EXPECT_LT(blocks, 126U);
    // With four-men files there are more blocks than entries.
    const Bytes large = Pattern(Positions("kqkr", 0), 99);
    folder.Write("kqkr.nbw.emd", test::Compressed(large));
    Register();
    ASSERT_GT(large.size() / 8192, 126U);
    for (int round = 0; round < 2; ++round) {
        for (std::size_t at = 0; at < large.size(); at += 8191) {
            ASSERT_EQ(cache->ReadValue(TableNumber("kqkr"), 0, at), Meaning(large[at]));
            // And a block of another table, of which every one has its turn.
            const std::size_t file = at % contents.size();
            const Bytes& other = contents[file];
            ASSERT_EQ(cache->ReadValue(static_cast<int>(file / 2) + 1, static_cast<int>(file % 2),
                                       at % other.size()),
                      Meaning(other[at % other.size()]));
        }
    }
}

TEST_F(NalimovCache, BlockThatIsStoredAtItsFullSizeIsCopied) {
    const Bytes bytes = Pattern(Positions("kqk", 0), 3);
    CDataCompWriter writer;
    for (std::size_t at = 0; at < bytes.size(); at += NalimovBlockSize) {
        const auto size = std::min<std::size_t>(NalimovBlockSize, bytes.size() - at);
        const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        const Bytes block(start, start + static_cast<std::ptrdiff_t>(size));
        if (at == NalimovBlockSize) {
            writer.AddBytes(block);  // one that is coded between those that are not
        } else {
            writer.AddUncoded(block);
        }
    }
    folder.Write("kqk.nbw.emd", writer.Finish());
    Register();
    cache->Resize(1);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        ASSERT_EQ(cache->ReadValue(TableNumber("kqk"), 0, at), Meaning(bytes[at])) << at;
    }
}

TEST_F(NalimovCache, BytesMeanWhatTheEncodingSays) {
    Bytes bytes(static_cast<std::size_t>(Positions("kqk", 0)));
    for (std::size_t byte = 0; byte < 256; ++byte) {
        bytes[byte] = static_cast<std::uint8_t>(byte);
    }
    folder.Write("kqk.nbw", bytes);
    Register();
    cache->Resize(1);
    const auto value = [this](int byte) {
        return cache->ReadValue(TableNumber("kqk"), 0, static_cast<std::uint8_t>(byte));
    };
    EXPECT_EQ(value(0), 0);
    EXPECT_EQ(value(1), 32641);
    EXPECT_EQ(value(126), 32766);
    EXPECT_EQ(value(127), NoValue);
    EXPECT_EQ(value(-1), -32641);
    EXPECT_EQ(value(-126), -32766);
    EXPECT_EQ(value(-127), -32640);
    EXPECT_EQ(value(-128), 32640);
}

TEST_F(NalimovCache, IndexBehindTheLastPositionHasNoValue) {
    WriteThreeMen();
    cache->Resize(1);
    EXPECT_NE(cache->ReadValue(1, 0, Positions("kpk", 0) - 1), NoValue);
    EXPECT_EQ(cache->ReadValue(1, 0, Positions("kpk", 0)), NoValue);
    EXPECT_EQ(cache->ReadValue(1, 0, CNalimovCalculator::NoIndex), NoValue);
    EXPECT_NE(cache->ReadValue(1, 0, 5), NoValue) << "the file is still in use";
}

TEST_F(NalimovCache, KnownWrongPlacesAnswerWithoutAnyFile) {
    for (const std::uint64_t index :
         {0x362BC7CU, 0x362DE44U, 0x3637648U, 0x3639810U, 0x38D4F29U, 0x40A2CABU, 0x43C778CU}) {
        EXPECT_EQ(cache->ReadValue(36, 1, index), -32639);
        EXPECT_EQ(cache->ReadValue(36, 0, index), NoValue);
        EXPECT_EQ(cache->ReadValue(37, 1, index), NoValue);
        EXPECT_EQ(cache->ReadValue(36, 1, index + 1), NoValue);
    }
}

TEST_F(NalimovCache, TwoByteValuesBeyondTwoGigabytes) {
    const int table = TableNumber("kppkpp");
    ASSERT_TRUE(tables->Table(table).IsTwoByte());
    ASSERT_FALSE(tables->Table(table).IsSplit());
    const std::uint64_t positions = Positions("kppkpp", 0);
    folder.WriteSparse("kppkpp.nbw", positions * 2);
    const std::uint64_t far = (std::uint64_t{1} << 30) + 777;  // at byte 2^31 + 1554
    folder.Poke("kppkpp.nbw", far * 2, {0x34, 0x12});
    folder.Poke("kppkpp.nbw", (far + 1) * 2, {0xFE, 0xFF});
    folder.Poke("kppkpp.nbw", (far + 2) * 2, {0xFF, 0x7F});
    folder.Poke("kppkpp.nbw", (positions - 1) * 2, {0x02, 0x80});
    Register();
    cache->Resize(1);
    EXPECT_EQ(cache->ReadValue(table, 0, far), 0x1234);
    EXPECT_EQ(cache->ReadValue(table, 0, far + 1), -2);
    EXPECT_EQ(cache->ReadValue(table, 0, far + 2), NoValue) << "the mark";
    EXPECT_EQ(cache->ReadValue(table, 0, positions - 1), -32766);
    EXPECT_EQ(cache->ReadValue(table, 1, far), 0x1234) << "equal sides have one file";
    EXPECT_EQ(cache->ReadValue(table, 0, 5), 0);
}

TEST_F(NalimovCache, PlainFileBeyondFourGigabytes) {
    const int table = TableNumber("kbnkbn");
    ASSERT_FALSE(tables->Table(table).IsSplit());
    const std::uint64_t positions = Positions("kbnkbn", 0);
    ASSERT_GT(positions, std::uint64_t{5} << 30);
    folder.WriteSparse("kbnkbn.nbw", positions);
    for (const std::uint64_t at :
         {std::uint64_t{1} << 31, (std::uint64_t{1} << 32) + 9, positions - 1}) {
        folder.Poke("kbnkbn.nbw", at, {77});
    }
    Register();
    cache->Resize(1);
    EXPECT_EQ(cache->ReadValue(table, 0, std::uint64_t{1} << 31), 77 + 32640);
    EXPECT_EQ(cache->ReadValue(table, 0, (std::uint64_t{1} << 32) + 9), 77 + 32640);
    EXPECT_EQ(cache->ReadValue(table, 0, positions - 1), 77 + 32640);
    EXPECT_EQ(cache->ReadValue(table, 0, 9), 0);
}

TEST_F(NalimovCache, SplitTableReadsEachExtentAndMissesTheMissingOne) {
    const int table = TableNumber("knnknp");  // two bytes a position
    const std::uint64_t extent = std::uint64_t{1} << 31;
    folder.WriteSparse("knnknp.0.nbw", extent);
    folder.WriteSparse("knnknp.1.nbw", extent);
    folder.Poke("knnknp.0.nbw", extent - 2, {0x11, 0x22});
    folder.Poke("knnknp.1.nbw", 0, {0x33, 0x44});
    Register();
    cache->Resize(1);
    EXPECT_EQ(cache->ReadValue(table, 0, extent / 2 - 1), 0x2211);
    EXPECT_EQ(cache->ReadValue(table, 0, extent / 2), 0x4433);
    EXPECT_EQ(cache->ReadValue(table, 0, extent), NoValue) << "extent 2 is not there";
    EXPECT_EQ(cache->ReadValue(table, 0, extent / 2), 0x4433);
    EXPECT_EQ(cache->ReadValue(table, 1, 0), NoValue) << "the other side is not there";
}

TEST_F(NalimovCache, FileRemovedAfterRegistrationFailsItsPositionsOnlyAndStaysDisabled) {
    WriteThreeMen();
    cache->Resize(1);
    std::filesystem::remove(folder / "kpk.nbb");
    EXPECT_EQ(cache->ReadValue(1, 1, 5), NoValue);
    EXPECT_NE(cache->ReadValue(1, 0, 5), NoValue);
    folder.Write("kpk.nbb", contents[1]);
    EXPECT_EQ(cache->ReadValue(1, 1, 5), NoValue) << "not tried again";
    Register();
    EXPECT_EQ(cache->ReadValue(1, 1, 5), Meaning(contents[1][5])) << "until the next registration";
}

TEST_F(NalimovCache, PlainFileCutShortFailsItsPositionsOnly) {
    WriteThreeMen();
    cache->Resize(1);
    ASSERT_TRUE(std::filesystem::exists(folder / "kpk.nbb"));
    std::filesystem::resize_file(folder / "kpk.nbb", 10000);
    EXPECT_EQ(cache->ReadValue(1, 1, 9999), Meaning(contents[1][9999]));
    EXPECT_EQ(cache->ReadValue(1, 1, 10000), NoValue);
    EXPECT_EQ(cache->ReadValue(1, 1, 40000), NoValue);
    EXPECT_EQ(cache->ReadValue(1, 1, 5), Meaning(contents[1][5]));
}

TEST_F(NalimovCache, CompressedBlockCutShortFails) {
    WriteThreeMen();
    cache->Resize(1);
    ASSERT_TRUE(std::filesystem::exists(folder / "kpk.nbw.emd"));
    const auto size = std::filesystem::file_size(folder / "kpk.nbw.emd");
    std::filesystem::resize_file(folder / "kpk.nbw.emd", size - 1);
    EXPECT_EQ(cache->ReadValue(1, 0, 5), Meaning(contents[0][5])) << "an earlier block is whole";
    EXPECT_EQ(cache->ReadValue(1, 0, contents[0].size() - 1), NoValue);
    EXPECT_EQ(cache->ReadValue(1, 0, 5), Meaning(contents[0][5])) << "it is in the cache";
    EXPECT_EQ(cache->ReadValue(1, 0, 30000), NoValue) << "the file is not asked again";
    EXPECT_EQ(cache->ReadValue(1, 1, 5), Meaning(contents[1][5])) << "other files are";
}

TEST_F(NalimovCache, DamagedCompressedBlocksNeverDoMoreThanFail) {
    WriteThreeMen();
    std::mt19937 random(5);
    const std::string name = "kpk.nbw.emd";
    const auto size = std::filesystem::file_size(folder / name);
    for (int round = 0; round < 50; ++round) {
        Bytes noise(64);
        for (std::uint8_t& byte : noise) {
            byte = static_cast<std::uint8_t>(random());
        }
        folder.Poke(name, size - 64 - random() % (size / 2), noise);
        Register();
        cache->Resize(round % 2 + 1);
        for (std::uint64_t at = 0; at < contents[0].size(); at += 8192) {
            (void)cache->ReadValue(1, 0, at);
        }
        EXPECT_EQ(cache->ReadValue(1, 1, 5), Meaning(contents[1][5]));
    }
}

TEST_F(NalimovCache, NewRegistrationForgetsWhatWasCached) {
    folder.Write("kqk.nbw", Bytes(static_cast<std::size_t>(Positions("kqk", 0)), 1));
    Register();
    cache->Resize(1);
    EXPECT_EQ(cache->ReadValue(5, 0, 5), 32641);
    folder.Write("kqk.nbw", Bytes(static_cast<std::size_t>(Positions("kqk", 0)), 2));
    EXPECT_EQ(cache->ReadValue(5, 0, 5), 32641) << "from the cache";
    Register();
    EXPECT_EQ(cache->ReadValue(5, 0, 5), 32642);
}

TEST_F(NalimovCache, HoldsAllItsBlocksAlsoAfterClear) {
    const auto write = [this](std::uint8_t value) {
        folder.Write("kqkr.nbw", Bytes(static_cast<std::size_t>(Positions("kqkr", 0)), value));
    };
    const auto expectBlocks = [this](std::size_t count, int value) {
        for (std::size_t block = 0; block < count; ++block) {
            ASSERT_EQ(cache->ReadValue(TableNumber("kqkr"), 0, block * 8192), value) << block;
        }
    };
    cache->Resize(1);
    for (int round = 0; round < 3; ++round) {
        write(1);
        Register();
        expectBlocks(126, 32641);
        write(2);
        expectBlocks(126, 32641);
        // One more, and the oldest goes.
        EXPECT_EQ(cache->ReadValue(TableNumber("kqkr"), 0, 126U * 8192), 32642);
        EXPECT_EQ(cache->ReadValue(TableNumber("kqkr"), 0, 0), 32642);
        EXPECT_EQ(cache->ReadValue(TableNumber("kqkr"), 0, 2U * 8192), 32641);
    }
}

}  // namespace
}  // namespace brenquil
