// The header of compressed files, their codes, and the decoding of a block.

#include "../../../support/data_comp_writer.h"
#include "bases/nalimov/data_comp.h"

#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace brenquil {
namespace {

using test::Bytes;
using test::CBitWriter;
using test::CDataCompWriter;
using test::Token;

std::unique_ptr<DataCompInfo> Parse(const Bytes& file) {
    std::unique_ptr<DataCompInfo> info;
    EXPECT_EQ(DataCompParse(&info, file), 0U);
    return info;
}

std::uint32_t ErrorOf(const Bytes& file) {
    std::unique_ptr<DataCompInfo> info;
    const std::uint32_t error = DataCompParse(&info, file);
    EXPECT_EQ(info == nullptr, error != 0);
    return error;
}

/// Decodes a block of a file in memory; empty when that fails. What lies past the target's spare
/// bytes must stay untouched.
Bytes Decode(const DataCompInfo& info, const Bytes& file, std::uint32_t block) {
    constexpr std::uint8_t Guard = 0xA5;
    const std::uint32_t start = DataCompBlockStart(info, block);
    const Bytes stored(file.begin() + start, file.begin() + DataCompBlockStart(info, block + 1));
    DecodeState state;
    state.size = block + 1 == info.blocks ? info.lastBlockSize : info.blockSize;
    Bytes target(state.size + DataCompSpareBytes + 64, Guard);
    state.target = target.data();
    state.stored = stored.data();
    state.storedSize = static_cast<std::uint32_t>(stored.size());
    state.cookie = DecodeState::Cookie;
    const bool isDecoded = DataCompDecode(info, state, state.size);
    EXPECT_EQ(std::count(target.end() - 64, target.end(), Guard), 64);
    if (!isDecoded) {
        return {};
    }
    EXPECT_EQ(state.position, state.size);
    target.resize(state.size);
    return target;
}

Bytes RandomBytes(std::size_t size, unsigned seed, int letters = 256) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random() % static_cast<unsigned>(letters));
    }
    return bytes;
}

/// Literals, short, middle and long matches.
CDataCompWriter SmallFile() {
    CDataCompWriter writer;
    Bytes bytes = RandomBytes(20000, 1, 4);
    std::fill(bytes.begin() + 300, bytes.begin() + 5000, std::uint8_t{7});
    writer.AddBytes(bytes);
    return writer;
}

TEST(DataCompChecksum, IsTheSumWithTheReversedTest) {
    EXPECT_EQ(DataCompChecksum({}), 0U);
    // A zero byte gives the first entry of the table.
    std::uint32_t entry = 0;
    for (int bit = 0; bit < 8; ++bit) {
        entry = (entry & 1U) != 0 ? entry >> 1U : (entry >> 1U) ^ 0xEDB88320U;
    }
    EXPECT_EQ(DataCompChecksum(Bytes{0}), entry);
    const Bytes bytes = RandomBytes(1000, 2);
    EXPECT_EQ(DataCompChecksum(bytes), CDataCompWriter::Checksum(bytes));
}

TEST(DataCompOpen, FileOfSeveralBlocksComesBackAsItWas) {
    Bytes bytes = RandomBytes(100000, 3, 3);
    CDataCompWriter writer;
    writer.AddBytes(bytes);
    const Bytes file = writer.Finish();
    const auto info = Parse(file);
    EXPECT_EQ(info->blocks, 13U);
    EXPECT_EQ(info->blockSize, 8192U);
    EXPECT_EQ(info->lastBlockSize, 100000U - 12U * 8192U);
    EXPECT_EQ(info->distances[0], -1);
    EXPECT_EQ(info->distances[23], -4096);
    Bytes decoded;
    for (std::uint32_t block = 0; block < info->blocks; ++block) {
        const Bytes part = Decode(*info, file, block);
        decoded.insert(decoded.end(), part.begin(), part.end());
    }
    EXPECT_EQ(decoded, bytes);
}

TEST(DataCompOpen, BannerThatDiffersInAnyKnownByteIsRefused) {
    const Bytes file = SmallFile().Finish();
    const std::size_t notice = std::string("Compressed by DATACOMP v 1.0 ").size();
    const std::size_t noticeEnd = notice + CDataCompWriter().notice.size();
    for (std::size_t at = 0; at < 64; ++at) {
        Bytes changed = file;
        // In the notice, which names people and years, any printed character will do.
        changed[at] = at >= notice && at < noticeEnd ? 3 : static_cast<std::uint8_t>(file[at] ^ 1);
        CDataCompWriter::RepairChecksum(changed);
        EXPECT_EQ(ErrorOf(changed), 177666U) << at;
    }
}

TEST(DataCompOpen, OtherNoticeOfAnotherLengthIsAccepted) {
    CDataCompWriter writer = SmallFile();
    writer.notice = "(c) somebody 1999";
    EXPECT_EQ(ErrorOf(writer.Finish()), 0U);
}

TEST(DataCompOpen, EachDamageHasItsCode) {
    const Bytes file = SmallFile().Finish();
    const auto with = [&file](std::size_t at, std::uint8_t byte) {
        Bytes changed = file;
        changed[at] = byte;
        return changed;
    };
    std::unique_ptr<DataCompInfo> info;
    EXPECT_EQ(DataCompParse(nullptr, file), 176135U);
    EXPECT_EQ(ErrorOf(Bytes(file.begin(), file.begin() + 79)), 177154U);
    EXPECT_EQ(ErrorOf(with(70, 17)), 179462U);
    Bytes tiny = with(66, 0);
    tiny[67] = 83;
    EXPECT_EQ(ErrorOf(tiny), 179462U);
    EXPECT_EQ(ErrorOf(with(71, 25)), 180230U);
    EXPECT_EQ(ErrorOf(with(79, 0xF4)), 181510U);
    EXPECT_EQ(ErrorOf(with(64, 1)), 183301U);
    EXPECT_EQ(ErrorOf(with(69, 1)), 185094U) << "a byte that is not read is summed all the same";
    EXPECT_EQ(ErrorOf(with(90, 1)), 185094U);
    EXPECT_EQ(ErrorOf(file), 0U);
}

TEST(DataCompOpen, MoreBlocksThanTheHeaderHoldsAreRefused) {
    Bytes file = SmallFile().Finish();
    file[72] = 0x10;
    CDataCompWriter::RepairChecksum(file);
    EXPECT_EQ(ErrorOf(file), 179462U);
}

/// A file whose second bit stream is the given one.
Bytes WithLengths(const CBitWriter& lengths) {
    Bytes file = SmallFile().Finish();
    const std::size_t sizes = 80 + 8 * 3 + (28 * 13 + 7) / 8;
    file.resize(sizes);
    file.insert(file.end(), lengths.Result().begin(), lengths.Result().end());
    file.resize(file.size() + 4);
    file[65] = 0;
    file[66] = static_cast<std::uint8_t>(file.size() >> 8U);
    file[67] = static_cast<std::uint8_t>(file.size());
    CDataCompWriter::RepairChecksum(file);
    return file;
}

TEST(DataCompOpen, BadCodeLengthsAndBadCodesAreToldApart) {
    CBitWriter coded;
    std::vector<std::uint32_t> lengths(1024);
    lengths[0] = lengths[1] = 1;
    CDataCompWriter::WriteLengths(coded, lengths);
    EXPECT_EQ(ErrorOf(WithLengths(coded)), 0U);

    CBitWriter incomplete;
    lengths[1] = 2;
    CDataCompWriter::WriteLengths(incomplete, lengths);
    EXPECT_EQ(ErrorOf(WithLengths(incomplete)), 205318U);

    CBitWriter cutShort;
    cutShort.Write(0, 1);
    EXPECT_EQ(ErrorOf(WithLengths(cutShort)), 203526U);

    CBitWriter none;
    none.Write(1, 1);
    const Bytes file = WithLengths(none);
    EXPECT_EQ(ErrorOf(file), 0U) << "all lengths 0";
}

TEST(DataCompOpen, OffsetsBeyondFourGigabytesAreRefused) {
    // 524288 whole blocks are 4 GiB.
    const std::uint32_t blocks = 524288;
    Bytes file = SmallFile().Finish();
    file.resize(80);
    const std::uint64_t streamSize = ((blocks + std::uint64_t{25}) * 13 + 7) / 8;
    file.resize(static_cast<std::size_t>(80 + std::uint64_t{8} * blocks + streamSize), 0);
    file.push_back(0x80);  // all code lengths are 0
    file.resize(file.size() + 4);
    for (std::size_t byte = 0; byte < 4; ++byte) {
        file[64 + byte] = static_cast<std::uint8_t>(file.size() >> (24 - 8 * byte));
        file[72 + byte] = static_cast<std::uint8_t>(blocks >> (24 - 8 * byte));
    }
    CDataCompWriter::RepairChecksum(file);
    EXPECT_EQ(ErrorOf(file), 179462U);
}

TEST(DataCompBlockStart, RunsThroughGroupsAndWholeBlocks) {
    // Eight whole blocks in the back half of a group are 65536 bytes, one more than 16 bits hold.
    CDataCompWriter writer;
    const Bytes noise = RandomBytes(40 * 8192 + 100, 4);
    writer.AddBytes(noise);
    const Bytes file = writer.Finish();
    const auto info = Parse(file);
    ASSERT_EQ(info->blocks, 41U);
    const std::size_t contents = file.size() - noise.size();
    for (std::uint32_t block = 0; block <= 40; ++block) {
        EXPECT_EQ(DataCompBlockStart(*info, block), contents + block * 8192U) << block;
    }
    EXPECT_EQ(DataCompBlockStart(*info, 41), file.size());
    EXPECT_EQ(info->maxStored, 8192U + 32U);
}

/// One block of the given tokens, decoded.
Bytes DecodeTokens(const std::vector<Token>& tokens, std::uint32_t size) {
    CDataCompWriter writer;
    writer.AddTokens(tokens, size);
    const Bytes file = writer.Finish();
    return Decode(*Parse(file), file, 0);
}

TEST(DataCompDecode, MatchOfDistanceOneAndLengthHundredRepeatsOneByte) {
    const Bytes decoded = DecodeTokens({Token::Literal(42), Token::Match(0, 100)}, 101);
    EXPECT_EQ(decoded, Bytes(101, 42));
}

TEST(DataCompDecode, MatchesOfEveryLengthAndDistanceRepeatTheirPattern) {
    const CDataCompWriter writer;
    for (std::uint32_t slot = 0; slot < 23; ++slot) {
        const std::uint32_t distance = writer.distances[slot];
        for (const std::uint32_t length :
             {1U, 2U, 3U, 4U, 5U, 15U, 16U, 17U, 18U, 30U, 33U, 46U, 100U, 1000U, 5000U}) {
            std::vector<Token> tokens;
            Bytes expected;
            for (std::uint32_t byte = 0; byte < distance; ++byte) {
                expected.push_back(static_cast<std::uint8_t>(byte * 7 + 1));
                tokens.push_back(Token::Literal(expected.back()));
            }
            tokens.push_back(Token::Match(slot, length));
            for (std::uint32_t byte = 0; byte < length; ++byte) {
                expected.push_back(expected[expected.size() - distance]);
            }
            tokens.push_back(Token::Literal(99));
            expected.push_back(99);
            EXPECT_EQ(DecodeTokens(tokens, static_cast<std::uint32_t>(expected.size())), expected)
                << distance << " " << length;
        }
    }
}

TEST(DataCompDecode, MatchThatWouldPassTheEndIsCutThere) {
    EXPECT_EQ(DecodeTokens({Token::Literal(5), Token::Match(0, 262143)}, 50), Bytes(50, 5));
    EXPECT_EQ(DecodeTokens({Token::Literal(5), Token::Match(0, 15)}, 10), Bytes(10, 5));
    EXPECT_EQ(DecodeTokens({Token::Literal(5), Token::Match(0, 4)}, 2), Bytes(2, 5));
}

TEST(DataCompDecode, LastBlockThatIsShorterEndsAtItsOwnSize) {
    const Bytes bytes = RandomBytes(8192 + 10, 5, 2);
    CDataCompWriter writer;
    writer.AddBytes(bytes);
    const Bytes file = writer.Finish();
    const auto info = Parse(file);
    ASSERT_EQ(info->blocks, 2U);
    EXPECT_EQ(info->lastBlockSize, 10U);
    EXPECT_EQ(Decode(*info, file, 1), Bytes(bytes.end() - 10, bytes.end()));
}

TEST(DataCompDecode, MatchBeforeTheStartFails) {
    EXPECT_TRUE(DecodeTokens({Token::Literal(1), Token::Match(1, 5)}, 6).empty());
    EXPECT_TRUE(DecodeTokens({Token::Match(0, 5), Token::Literal(1)}, 6).empty());
}

TEST(DataCompDecode, DistanceZeroFails) {
    CDataCompWriter writer;
    writer.distances[0] = 0;
    writer.AddTokens({Token::Literal(1), Token::Match(0, 5)}, 6);
    const Bytes file = writer.Finish();
    EXPECT_TRUE(Decode(*Parse(file), file, 0).empty());
}

TEST(DataCompDecode, BlockCutShortFails) {
    const Bytes bytes = RandomBytes(8192, 6, 5);
    CDataCompWriter writer;
    writer.AddBytes(bytes);
    const Bytes file = writer.Finish();
    const auto info = Parse(file);
    Bytes target(8192 + DataCompSpareBytes);
    DecodeState state;
    state.target = target.data();
    state.stored = file.data() + DataCompBlockStart(*info, 0);
    state.size = 8192;
    state.cookie = DecodeState::Cookie;
    const std::uint32_t full = DataCompBlockStart(*info, 1) - DataCompBlockStart(*info, 0);
    for (const std::uint32_t size : {full - 1, full / 2, 1U, 0U}) {
        state.position = 0;
        state.storedSize = size;
        EXPECT_FALSE(DataCompDecode(*info, state, 8192)) << size;
    }
    state.position = 0;
    state.storedSize = full;
    EXPECT_TRUE(DataCompDecode(*info, state, 8192));
    state.position = 0;
    state.cookie = 0;
    EXPECT_FALSE(DataCompDecode(*info, state, 8192)) << "a state that was not set up";
}

TEST(DataCompCode, ShortWordsComeFirstAndLongOnesFollowLinks) {
    // Lengths 1, 2, 3, ... 20, 20: the words are 0, 10, 110 and so on.
    std::vector<std::uint32_t> lengths(21);
    std::iota(lengths.begin(), lengths.end(), 1U);
    lengths[20] = 20;
    CDataCompCode code;
    ASSERT_EQ(code.Build(lengths, 8), 0U);
    CBitWriter bits;
    for (std::uint32_t symbol = 0; symbol < 21; ++symbol) {
        for (std::uint32_t one = 0; one < symbol; ++one) {
            bits.Write(1, 1);
        }
        if (symbol < 20) {
            bits.Write(0, 1);
        }
    }
    CBitReader reader(bits.Result());
    for (std::uint32_t symbol = 0; symbol < 21; ++symbol) {
        EXPECT_EQ(code.Next(reader), symbol);
    }
    EXPECT_FALSE(reader.HasOverrun());
}

TEST(DataCompCode, LongestWordHasThirtyOneBits) {
    std::vector<std::uint32_t> lengths(32);
    std::iota(lengths.begin(), lengths.end(), 1U);
    lengths[31] = 31;
    CDataCompCode code;
    ASSERT_EQ(code.Build(lengths, 13), 0U);
    const Bytes allOnes(8, 0xFF);
    CBitReader ones(allOnes);
    EXPECT_EQ(code.Next(ones), 31U);
    EXPECT_EQ(code.Next(ones), 31U);
    EXPECT_EQ(ones.Read(2), 3U) << "62 bits were taken";
}

TEST(DataCompCode, BadLengthsHaveTheirCodes) {
    CDataCompCode code;
    const auto error = [&code](std::vector<std::uint32_t> lengths) {
        return code.Build(lengths, 8);
    };
    EXPECT_EQ(error({1, 32}), 80390U);
    EXPECT_EQ(error({0, 2, 0}), 83462U);
    EXPECT_EQ(error({1, 2}), 87302U);
    EXPECT_EQ(error({2, 2}), 87302U) << "the odd count arises one level up";
    EXPECT_EQ(error({1, 1, 1, 1}), 88326U);
    EXPECT_EQ(error({0, 0}), 0U);
    EXPECT_EQ(error({0, 1}), 0U);
}

TEST(DataCompCode, OnlySymbolTakesOneBitAndNoSymbolTakesNone) {
    CDataCompCode code;
    const Bytes bytes{0x55};
    ASSERT_EQ(code.Build(std::vector<std::uint32_t>{0, 0, 1}, 8), 0U);
    CBitReader reader(bytes);
    EXPECT_EQ(code.Next(reader), 2U);
    EXPECT_EQ(code.Next(reader), 2U);
    EXPECT_EQ(reader.Read(6), 0x15U);
    ASSERT_EQ(code.Build(std::vector<std::uint32_t>{0, 0, 0}, 8), 0U);
    CBitReader again(bytes);
    EXPECT_EQ(code.Next(again), 0U);
    EXPECT_EQ(again.Read(8), 0x55U);
}

TEST(DataCompReadLengths, RunsBeyondTheEndFail) {
    std::vector<std::uint32_t> lengths(10);
    CBitWriter zeros;
    zeros.Write(0, 1);
    zeros.Write(4, 5);
    zeros.Write(0, 4);
    zeros.Write(10, 4);
    CBitReader zeroReader(zeros.Result());
    EXPECT_EQ(DataCompReadLengths(zeroReader, lengths), 108294U);

    std::vector<std::uint32_t> many(1025);
    CBitWriter runs;
    CDataCompWriter::WriteLengths(runs, many);
    many.resize(1024);
    CBitReader runReader(runs.Result());
    EXPECT_EQ(DataCompReadLengths(runReader, many), 120326U);
}

TEST(DataCompReadLengths, AllFormsComeBackAsTheyWere) {
    std::mt19937 random(7);
    for (const std::size_t count : {1U, 20U, 128U, 129U, 1024U}) {
        std::vector<std::uint32_t> lengths(count);
        for (std::size_t at = 0; at < count;) {
            const std::uint32_t value = random() % 3 == 0 ? 0 : random() % 32;
            for (std::size_t run = random() % 60 + 1; run > 0 && at < count; --run) {
                lengths[at++] = value;
            }
        }
        CBitWriter bits;
        if (count <= 128) {
            CDataCompWriter::WritePlainLengths(bits, lengths);
        } else {
            CDataCompWriter::WriteLengths(bits, lengths);
        }
        std::vector<std::uint32_t> read(count, 77);
        CBitReader reader(bits.Result());
        EXPECT_EQ(DataCompReadLengths(reader, read), 0U);
        EXPECT_EQ(read, lengths) << count;
        EXPECT_FALSE(reader.HasOverrun());
    }
    const Bytes one{0x80};
    CBitReader reader(one);
    std::vector<std::uint32_t> none(1024, 5);
    EXPECT_EQ(DataCompReadLengths(reader, none), 0U);
    EXPECT_EQ(none, std::vector<std::uint32_t>(1024));
}

}  // namespace
}  // namespace brenquil
