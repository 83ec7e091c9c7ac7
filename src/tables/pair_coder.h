// Compresses the values of a Syzygy table into one stream: frequent pairs become symbols, symbols
// are written in a canonical Huffman code, the code is cut into blocks.
//
// docs/syzygy.md has the layout. What is free to choose: the pairs (those that occur most, again
// and again, until the header would grow by more than the code shrinks), and the size of a block.
//
// Memory: two bytes a value, and 64 MiB for counting pairs. The result depends on the values alone.
#pragma once

#include "tables/byte_list.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace brenquil {

/// One compressed stream, before its parts are spread over a file.
struct PairStream {
    ByteList header;
    ByteList indexTable;
    ByteList sizeTable;
    ByteList data;

    [[nodiscard]] std::size_t Bytes() const noexcept {
        return header.size() + indexTable.size() + sizeTable.size() + data.size();
    }
};

/// A stream of one value; distances can only have the value 0.
[[nodiscard]] PairStream SinglePairStream(std::uint8_t value, std::uint8_t flags);

/// @param values  not empty
/// @param flags   the low bits of the header's first byte
/// @param mostBlockBits  a block has at most 2 to this power bytes; small ones are found faster
[[nodiscard]] PairStream CompressPairs(const std::vector<std::uint8_t>& values, std::uint8_t flags,
                                       unsigned mostBlockBits);

}  // namespace brenquil
