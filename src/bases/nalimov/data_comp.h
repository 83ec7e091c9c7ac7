// Compressed table files: the header, and the decoding of one block.
//
// A file is a header and blocks that are coded independently of each other, all with one prefix
// code over literal bytes and matches. The header is read once and kept as a `DataCompInfo`, about
// two bytes for a block and 50 KiB for the code. A block is then decoded on demand, some 100 MB a
// second, without allocation. All numbers in a file have their most significant byte first.
//
// No byte of a file can make the decoder leave its buffers or go on without end: a block that is
// not what it should be is a failed block. A `DataCompInfo` is read-only once made; any number of
// threads may decode with it, each with a `DecodeState` of its own.
#pragma once

#include "bases/nalimov/data_comp_code.h"
#include "bases/nalimov/nalimov_file.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace brenquil {

/// Codes of `DataCompOpen`; the low byte is the class of the error.
enum DataCompOpenError : std::uint32_t {
    DataCompNoOutput = 176135,
    DataCompShortHeader = 177154,  ///< fewer than the 80 bytes of the fixed part
    DataCompBadBanner = 177666,
    DataCompBadSizes = 179462,  ///< of a block or of the header
    DataCompBadSlots = 180230,
    DataCompBadMark = 181510,
    DataCompNoHeaderMemory = 182021,
    DataCompCutHeader = 183301,
    DataCompBadChecksum = 185094,
    DataCompNoWorkMemory = 188421,
    DataCompNoInfoMemory = 190725,
    DataCompBadLengths = 203526,
    DataCompBadCode = 205318
};

/// What the low byte of a code says.
enum DataCompErrorClass : std::uint32_t {
    DataCompReadError = 2,
    DataCompOutOfMemory = 5,
    DataCompFileBroken = 6
};

/// The header of an open file.
struct DataCompInfo {
    static constexpr std::size_t Slots = 24;

    CDataCompCode symbols;
    std::array<std::int32_t, Slots> distances{};  ///< of the match slots, negated
    std::vector<std::uint32_t> groupOffsets;  ///< in the file, of every 16th block; then the end
    std::vector<std::uint16_t> blockDeltas;   ///< from each block to the nearer group offset
    std::uint32_t blockBits = 0;
    std::uint32_t blockSize = 0;      ///< decoded size of all blocks but the last
    std::uint32_t lastBlockSize = 0;  ///< decoded size of the last
    std::uint32_t blocks = 0;
    std::uint32_t maxStored = 0;  ///< largest stored size of a block, and 32
};

/// Spare bytes that a target needs after the decoded size: short matches are copied in one piece.
inline constexpr std::size_t DataCompSpareBytes = 36;

/// One decoding, of stored bytes into a target.
struct DecodeState {
    static constexpr std::uint32_t Cookie = 0x79A3F29D;

    std::uint8_t* target = nullptr;  ///< room for `size` and the spare bytes
    const std::uint8_t* stored = nullptr;
    std::int64_t block = -1;  ///< -1: none
    std::uint32_t size = 0;   ///< decoded size
    std::uint32_t storedSize = 0;
    std::uint32_t position = 0;  ///< decoded so far
    std::uint32_t cookie = 0;    ///< `Cookie` once the state has been set up
};

/// The sum that guards a header.
[[nodiscard]] std::uint32_t DataCompChecksum(std::span<const std::uint8_t> data) noexcept;

/// Reads the header of a file from its start.
/// @return 0, or an error, and then nothing is made
[[nodiscard]] std::uint32_t DataCompOpen(std::unique_ptr<DataCompInfo>* info, CNalimovFile& file);

/// The same for a header that is in memory: from the start of the file at least `headerSize` bytes.
[[nodiscard]] std::uint32_t DataCompParse(std::unique_ptr<DataCompInfo>* info,
                                          std::span<const std::uint8_t> file);

/// Where in the file a block begins; the end of the last block for `block` = `blocks`.
[[nodiscard]] std::uint32_t DataCompBlockStart(const DataCompInfo& info,
                                               std::uint32_t block) noexcept;

/// Decodes from the start of the stored bytes until `state.position` is `end`, at most the size of
/// the target. False when the stored bytes are not the code of that many bytes.
[[nodiscard]] bool DataCompDecode(const DataCompInfo& info, DecodeState& state,
                                  std::uint32_t end) noexcept;

}  // namespace brenquil
