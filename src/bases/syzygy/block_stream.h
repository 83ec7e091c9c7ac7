// One compressed sequence of byte values inside a mapped Syzygy file, and how to read one of them.
//
// The values are joined into symbols by pairs (a symbol stands for one value or for two other
// symbols in a row), the symbols are written in a canonical Huffman code, and the code is cut into
// blocks of equal length that begin with a whole symbol. A sparse index finds the block of a value;
// from its beginning symbols are skipped until the one that holds the value, which is then taken
// apart down to the value itself.
//
// Reading a stream has two steps, because a file lists the headers of all its streams before their
// contents: `SetupBlockStream` reads the header and says how long the three parts of the contents
// are, `PlaceBlockStream` says where they lie and checks them. After that `DecompressValue` checks
// nothing but the end of the file, and yet, whatever the file holds, it reads nothing outside the
// mapping and ends: each row of the index leads to blocks that are there, each step over a symbol
// uses up at least one value, and symbols are taken apart downwards only.
//
// Cost of a value: two or three cache misses (index row, block) and a few nanoseconds for each
// symbol before it, some dozens. No allocation. Any number of threads.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace brenquil {

/// The bytes of a whole file.
using TbBytes = std::span<const std::uint8_t>;

/// Lengths in bytes of a stream's contents.
struct BlockStreamSizes {
    std::uint64_t indexTable = 0;
    std::uint64_t sizeTable = 0;
    std::uint64_t data = 0;
};

struct BlockStream {
    static constexpr unsigned LongestCode = 32;
    static constexpr unsigned MostSymbols = 4096;

    /// A symbol in one word, so that taking it apart costs one load a step.
    ///
    /// | bits  | meaning                                                          |
    /// |-------|------------------------------------------------------------------|
    /// | 0-11  | left half; for a symbol that is one value, the value in bits 0-7 |
    /// | 12-23 | right half                                                       |
    /// | 24-31 | number of values that the symbol stands for, less 1              |
    struct Symbol {
        std::uint32_t word = 0;

        [[nodiscard]] std::uint32_t Left() const noexcept { return word & 0xFFFU; }

        [[nodiscard]] std::uint32_t Right() const noexcept { return word >> 12U & 0xFFFU; }

        [[nodiscard]] std::uint32_t Length() const noexcept { return word >> 24U; }
    };

    const std::uint8_t* indexTable = nullptr;  ///< rows of 6 bytes: block 32 bits, offset 16 bits
    const std::uint8_t* sizeTable = nullptr;   ///< 16 bits for each block: its values less 1
    const std::uint8_t* data = nullptr;        ///< the blocks
    const std::uint8_t* fileEnd = nullptr;
    std::uint32_t blocks = 0;        ///< rows of `sizeTable`
    std::uint32_t storedBlocks = 0;  ///< blocks that have data
    std::uint32_t symbolCount = 0;
    std::uint8_t blockSize = 0;  ///< log2 of a block's bytes
    std::uint8_t indexBits = 0;  ///< log2 of the values between two rows; 0: only one value
    std::uint8_t minLength = 0;  ///< shortest code; in a stream of one value the value itself
    std::array<std::uint64_t, LongestCode + 1> base{};    ///< by length: first code, left aligned
    std::array<std::uint16_t, LongestCode + 1> offset{};  ///< by length: first symbol
    /// One more than there are: codes that name no symbol stand for the last one, a value.
    std::vector<Symbol> symbols;
};

/// Reads the header at `position`.
/// @param tableSize  how many values the stream has
/// @param sizes      takes the lengths of the contents
/// @param position   is moved past the header
/// @param flags      takes the first byte of the header
/// @param wdl        the value of a single-value stream is stored (it is 0 otherwise)
/// @return nothing if the header is damaged
[[nodiscard]] std::unique_ptr<BlockStream> SetupBlockStream(TbBytes file, std::uint64_t tableSize,
                                                            BlockStreamSizes& sizes,
                                                            std::uint64_t& position,
                                                            std::uint8_t& flags, bool wdl);

/// Where the contents of a stream lie in the file.
struct BlockStreamPlaces {
    std::uint64_t indexTable = 0;
    std::uint64_t sizeTable = 0;
    std::uint64_t data = 0;
};

/// Points the stream at its contents.
/// @return whether they lie in the file and every row of the index leads to stored values
[[nodiscard]] bool PlaceBlockStream(BlockStream& stream, TbBytes file, std::uint64_t tableSize,
                                    const BlockStreamSizes& sizes, const BlockStreamPlaces& places);

/// The value at `index`, which is below the stream's number of values.
[[nodiscard]] std::uint8_t DecompressValue(const BlockStream& stream, std::uint64_t index) noexcept;

}  // namespace brenquil
