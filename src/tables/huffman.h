// Writing bits and prefix codes.
//
// Words are given by their lengths alone: they ascend with length, and with the symbol within a
// length, from all zeros on.
#pragma once

#include "tables/byte_list.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace brenquil {

/// Collects bits, the most significant one of each byte first.
class CBitWriter {
public:
    /// Appends the lower bits of a value, up to 32.
    void Write(std::uint32_t value, unsigned bits) {
        buffer_ = buffer_ << bits | (value & ((std::uint64_t{1} << bits) - 1));
        count_ += bits;
        while (count_ >= 8) {
            count_ -= 8;
            bytes_.push_back(buffer_ >> count_ & 0xFFU);
        }
        isFlushed_ = false;
    }

    /// What has been written, the last byte filled up with zeros. Nothing is written after that.
    [[nodiscard]] const ByteList& Bytes() {
        if (count_ > 0 && !isFlushed_) {
            bytes_.push_back(buffer_ << (8 - count_) & 0xFFU);
            isFlushed_ = true;
        }
        return bytes_;
    }

private:
    ByteList bytes_;
    std::uint64_t buffer_ = 0;
    unsigned count_ = 0;  // bits of the buffer that are in no byte yet, below 8 between calls
    bool isFlushed_ = false;
};

/// The word length of each symbol in the shortest code for these frequencies, 0 for one that does
/// not occur. A single symbol has one bit.
/// @param longest  no word is longer; at least the bits that number all symbols
[[nodiscard]] std::vector<std::uint32_t> CodeLengths(std::span<const std::uint64_t> frequencies,
                                                     unsigned longest);

/// The words that belong to lengths.
struct PrefixCode {
    explicit PrefixCode(std::vector<std::uint32_t> wordLengths);

    void Write(CBitWriter& bits, std::size_t symbol) const {
        bits.Write(words[symbol], lengths[symbol]);
    }

    std::vector<std::uint32_t> lengths;
    std::vector<std::uint32_t> words;
};

}  // namespace brenquil
