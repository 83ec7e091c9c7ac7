// Prefix codes of compressed table files: the bit stream, the code lengths and the decoding table.
//
// Bits are taken from the most significant one of each byte on. A code is given by the length of
// each symbol's word; words ascend with length, and with the symbol within a length, from all zeros
// on. Short words are found by one look into a direct table, longer ones by following links from
// there, one bit at a time.
//
// Any input is safe: a stream that has ended goes on with zeros and remembers it, and every table
// that is built leads from each row to a symbol in at most 31 bits.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace brenquil {

/// What can go wrong in reading and building a code. The low byte is the class of the error.
enum DataCompError : std::uint32_t {
    DataCompOk = 0,
    DataCompLengthTooLong = 80390,   ///< a word of more than 31 bits
    DataCompSingleSymbol = 83462,    ///< the only symbol has a word that is not one bit long
    DataCompOddCount = 87302,        ///< the words of a length do not pair up
    DataCompIncompleteCode = 88326,  ///< the words do not fill the code
    DataCompTooManyZeros = 108294,   ///< a run of zero lengths passes the end
    DataCompTooManyLengths = 120326  ///< a run of lengths passes the end
};

/// Reads bits from bytes that outlive it.
class CBitReader {
public:
    explicit CBitReader(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) {}

    /// The next 32 bits, without taking them.
    [[nodiscard]] std::uint32_t Peek() noexcept {
        if (available_ < 32) {
            Fill();
        }
        return static_cast<std::uint32_t>(buffer_ >> 32);
    }

    /// Takes up to 32 bits, no more than the last Peek left.
    void Skip(unsigned bits) noexcept {
        assert(bits <= 32 && bits <= available_);
        buffer_ <<= bits;
        available_ -= bits;
    }

    /// Takes up to 31 bits as a number.
    [[nodiscard]] std::uint32_t Read(unsigned bits) noexcept {
        assert(bits <= 31);
        const std::uint32_t value = bits == 0 ? 0 : Peek() >> (32 - bits);
        Skip(bits);
        return value;
    }

    /// True when more bits were taken than there were.
    [[nodiscard]] bool HasOverrun() const noexcept { return missing_ * 8 > available_; }

private:
    void Fill() noexcept;

    std::span<const std::uint8_t> bytes_;
    std::size_t next_ = 0;
    std::uint64_t buffer_ = 0;     // the next bits, from the top
    std::uint64_t available_ = 0;  // how many of them
    std::uint64_t missing_ = 0;    // zero bytes supplied past the end
};

/// The decoding table of one code.
class CDataCompCode {
public:
    static constexpr unsigned LongestWord = 31;

    /// Builds the table from the word length of each symbol, 0 for one that is not used.
    /// @param directBits  words up to this length need one look; 1 to 31
    /// @return `DataCompOk` or what is wrong with the lengths
    [[nodiscard]] std::uint32_t Build(std::span<const std::uint32_t> lengths, unsigned directBits);

    /// Takes the next symbol of a code that was built. One without symbols answers 0 and takes
    /// nothing.
    [[nodiscard]] unsigned Next(CBitReader& bits) const noexcept {
        assert(!rows_.empty());
        const std::uint32_t window = bits.Peek();
        std::int32_t row = rows_[window >> (32 - directBits_)];
        for (unsigned bit = 31 - directBits_; row < 0; --bit) {
            row = rows_[-row + (window >> bit & 1U)];
        }
        const unsigned found = row;
        bits.Skip(found & LongestWord);
        return found >> 5U;
    }

private:
    void EnterWord(std::uint32_t word, unsigned length, std::int32_t row);

    /// 2^directBits rows, then pairs of nodes. A row is symbol * 32 + length of the word, or minus
    /// the place of a pair, of which the next bit chooses one.
    std::vector<std::int32_t> rows_;
    unsigned directBits_ = 0;
};

/// Reads `lengths.size()` code lengths, which are themselves coded when there are more than 128.
/// @return `DataCompOk` or an error
[[nodiscard]] std::uint32_t DataCompReadLengths(CBitReader& bits, std::span<std::uint32_t> lengths);

}  // namespace brenquil
