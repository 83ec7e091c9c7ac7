// Compressed files: what is written is what the reader finds.
// ctest: threads

#include "bases/nalimov/data_comp.h"
#include "tables/emd_writer.h"
#include "tables/huffman.h"

#include <gtest/gtest.h>
#include <random>

namespace brenquil {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes ThereAndBack(const Bytes& contents, std::size_t* size = nullptr) {
    CWorkers workers(2);
    CProgress progress(CProgress::Output::Silent);
    const Bytes file = CompressEmd(contents, workers, progress);
    if (size != nullptr) {
        *size = file.size();
    }
    return DecompressEmd(file, workers);
}

TEST(EmdWriter, EqualBytes) {
    for (const std::size_t size : {1U, 2U, 8191U, 8192U, 8193U, 100000U}) {
        const Bytes contents(size, 0);
        EXPECT_EQ(ThereAndBack(contents), contents) << size;
    }
}

TEST(EmdWriter, BytesWithoutAnyOrderStayAsTheyAre) {
    std::mt19937_64 random(3);
    Bytes contents(20000);
    for (std::uint8_t& byte : contents) {
        byte = static_cast<std::uint8_t>(random());
    }
    std::size_t size = 0;
    EXPECT_EQ(ThereAndBack(contents, &size), contents);
    EXPECT_LT(size, contents.size() + 2000) << "stored uncoded";
}

TEST(EmdWriter, RepetitionsAtFarDistancesAreFound) {
    std::mt19937_64 random(4);
    Bytes contents;
    for (int row = 0; row < 100; ++row) {
        for (int column = 0; column < 777; ++column) {
            const bool isNew = row == 0 || random() % 50 == 0;
            contents.push_back(isNew ? static_cast<std::uint8_t>(random())
                                     : contents[contents.size() - 777]);
        }
    }
    std::size_t size = 0;
    EXPECT_EQ(ThereAndBack(contents, &size), contents);
    EXPECT_LT(size, contents.size() / 4);
}

TEST(EmdWriter, AnyMixtureComesBack) {
    std::mt19937_64 random(5);
    for (int round = 0; round < 40; ++round) {
        Bytes contents(1 + random() % 30000);
        const std::uint64_t kinds = 1 + random() % 200;
        const std::uint64_t period = 1 + random() % 500;
        for (std::size_t at = 0; at < contents.size(); ++at) {
            const bool repeats = at >= period && random() % 8 != 0;
            contents[at] =
                repeats ? contents[at - period] : static_cast<std::uint8_t>(random() % kinds);
        }
        ASSERT_EQ(ThereAndBack(contents), contents) << round;
    }
}

TEST(EmdWriter, ADamagedFileGivesNothing) {
    CWorkers workers(1);
    CProgress progress(CProgress::Output::Silent);
    const Bytes contents(10000, 5);
    Bytes file = CompressEmd(contents, workers, progress);
    EXPECT_TRUE(DecompressEmd(std::span(file).first(file.size() - 1), workers).empty());
    file[90] ^= 1U;
    EXPECT_TRUE(DecompressEmd(file, workers).empty()) << "the header has a sum";
    EXPECT_TRUE(DecompressEmd({}, workers).empty());
}

TEST(Huffman, WordsGetNoLongerThanAllowed) {
    std::vector<std::uint64_t> frequencies;
    std::uint64_t a = 1;
    std::uint64_t b = 1;
    for (int symbol = 0; symbol < 40; ++symbol) {
        frequencies.push_back(a);
        a += b;
        std::swap(a, b);
    }
    const std::vector<std::uint32_t> lengths = CodeLengths(frequencies, 12);
    EXPECT_LE(*std::max_element(lengths.begin(), lengths.end()), 12U);
    double sum = 0;
    for (const std::uint32_t length : lengths) {
        sum += std::ldexp(1.0, -static_cast<int>(length));
    }
    EXPECT_EQ(sum, 1.0) << "a complete code";
}

}  // namespace
}  // namespace brenquil
