#include "bases/nalimov/data_comp_code.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace brenquil {

namespace {

constexpr std::size_t PlainLengths = 128;  ///< up to this many lengths are stored as plain numbers
constexpr unsigned LengthCodeBits = 8;     ///< direct bits of the codes that more are coded in

std::uint32_t ReadPlainLengths(CBitReader& bits, std::span<std::uint32_t> lengths) {
    const unsigned width = bits.Read(5);
    for (std::size_t index = 0; index < lengths.size(); ++index) {
        lengths[index] = bits.Read(width);
        if (lengths[index] != 0) {
            continue;
        }
        for (std::uint32_t zeros = bits.Read(4); zeros != 0; --zeros) {
            if (++index == lengths.size()) {
                return DataCompTooManyZeros;
            }
            lengths[index] = 0;
        }
    }
    return DataCompOk;
}

/// The lengths as runs. The first code has the single lengths as its lower half and the lengths of
/// runs as its upper half; the second one has the lengths of the runs, long ones by their
/// magnitude.
std::uint32_t ReadCodedLengths(CBitReader& bits, std::span<std::uint32_t> lengths) {
    constexpr unsigned HalfCode = 32;
    std::array<std::uint32_t, PlainLengths> codeLengths{};
    if (const std::uint32_t error = DataCompReadLengths(bits, codeLengths)) {
        return error;
    }
    const std::span<const std::uint32_t> both(codeLengths);
    CDataCompCode values;
    CDataCompCode runs;
    if (const std::uint32_t error = values.Build(both.first(PlainLengths / 2), LengthCodeBits)) {
        return error;
    }
    if (const std::uint32_t error = runs.Build(both.last(PlainLengths / 2), LengthCodeBits)) {
        return error;
    }
    for (std::size_t index = 0; index < lengths.size();) {
        const unsigned value = values.Next(bits);
        if (value < HalfCode) {
            lengths[index++] = value;
            continue;
        }
        const unsigned code = runs.Next(bits);
        std::uint64_t run = code;
        if (code >= HalfCode) {
            const unsigned magnitude = code - HalfCode;
            run = (std::uint64_t{1} << magnitude) + bits.Read(magnitude) + HalfCode - 1;
        }
        run += 2;
        if (run > lengths.size() - index) {
            return DataCompTooManyLengths;
        }
        std::fill_n(lengths.begin() + index, run, value & (HalfCode - 1));
        index += run;
    }
    return DataCompOk;
}

}  // namespace

void CBitReader::Fill() noexcept {
    while (available_ <= 56) {
        std::uint64_t byte = 0;
        if (next_ < bytes_.size()) {
            byte = bytes_[next_++];
        } else {
            ++missing_;
        }
        buffer_ |= byte << (56 - available_);
        available_ += 8;
    }
}

std::uint32_t CDataCompCode::Build(std::span<const std::uint32_t> lengths, unsigned directBits) {
    assert(directBits >= 1 && directBits <= LongestWord);
    std::array<std::uint32_t, LongestWord + 1> count{};
    for (const std::uint32_t length : lengths) {
        if (length > LongestWord) {
            return DataCompLengthTooLong;
        }
        ++count[length];
    }
    const std::size_t used = lengths.size() - count[0];
    directBits_ = directBits;
    rows_.assign(std::size_t{1} << directBits, 0);
    if (used == 0) {
        return DataCompOk;
    }
    if (used == 1) {
        const auto symbol = std::find_if(lengths.begin(), lengths.end(),
                                         [](std::uint32_t length) { return length != 0; });
        if (*symbol != 1) {
            return DataCompSingleSymbol;
        }
        const auto index = static_cast<std::int32_t>(symbol - lengths.begin());
        std::fill(rows_.begin(), rows_.end(), index * 32 + 1);
        return DataCompOk;
    }
    std::uint32_t nodes = 0;
    for (unsigned length = LongestWord; length > 0; --length) {
        nodes += count[length];
        if (nodes % 2 != 0) {
            return DataCompOddCount;
        }
        nodes /= 2;
    }
    if (nodes != 1) {
        return DataCompIncompleteCode;
    }
    std::uint32_t word = 0;
    for (unsigned length = 1; length <= LongestWord; ++length) {
        word <<= 1U;
        for (std::int32_t symbol = 0; symbol < std::ssize(lengths); ++symbol) {
            if (lengths[symbol] == length) {
                EnterWord(word++, length, symbol * 32 + length);
            }
        }
    }
    return DataCompOk;
}

void CDataCompCode::EnterWord(std::uint32_t word, unsigned length, std::int32_t row) {
    if (length <= directBits_) {
        const unsigned rest = directBits_ - length;
        const auto start = rows_.begin() + (std::size_t{word} << rest);
        std::fill_n(start, std::size_t{1} << rest, row);
        return;
    }
    // 0 stands for a row that is not filled yet; as an entry it would be symbol 0 with a word of
    // no bits, which a code with symbols does not have.
    std::size_t place = word >> (length - directBits_);
    for (unsigned bit = length - directBits_; bit > 0; --bit) {
        if (rows_[place] == 0) {
            rows_[place] = -static_cast<std::int32_t>(rows_.size());
            rows_.resize(rows_.size() + 2, 0);
        }
        place = -rows_[place] + (word >> (bit - 1) & 1U);
    }
    rows_[place] = row;
}

std::uint32_t DataCompReadLengths(CBitReader& bits, std::span<std::uint32_t> lengths) {
    if (bits.Read(1) == 1) {
        std::fill(lengths.begin(), lengths.end(), 0U);
        return DataCompOk;
    }
    return lengths.size() <= PlainLengths ? ReadPlainLengths(bits, lengths)
                                          : ReadCodedLengths(bits, lengths);
}

}  // namespace brenquil
