#include "tables/pair_coder.h"

#include "platform/bits.h"
#include "tables/huffman.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace brenquil {

namespace {

constexpr std::size_t MostSymbols = 4095;  ///< twelve bits, of which one number is a mark
constexpr std::uint32_t MostLength = 256;  ///< values that one symbol stands for
constexpr std::uint16_t NoSymbol = 0xFFFF;
constexpr std::uint16_t NoRightHalf = 0xFFF;
constexpr unsigned LongestCode = 24;
/// The format allows 65536; the rest lets the index point a little past the last value.
constexpr std::size_t MostBlockValues = 65472;

struct Symbol {
    std::uint16_t left;    ///< or the value
    std::uint16_t right;   ///< `NoRightHalf` for a value
    std::uint32_t length;  ///< values that it stands for
};

/// A sequence in which frequent pairs have become symbols.
class CPairing {
public:
    explicit CPairing(const std::vector<std::uint8_t>& values) : sequence_(values.size()) {
        std::array<std::uint16_t, 256> numbers{};
        numbers.fill(NoSymbol);
        for (const std::uint8_t value : values) {
            numbers[value] = 0;
        }
        for (std::size_t value = 0; value < numbers.size(); ++value) {
            if (numbers[value] == 0) {
                numbers[value] = AddSymbol({ToByte(value), NoRightHalf, 1});
            }
        }
        std::transform(values.begin(), values.end(), sequence_.begin(),
                       [&](std::uint8_t value) { return numbers[value]; });
    }

    void Run() {
        while (symbols_.size() < MostSymbols && AddPairs()) {
            Replace();
        }
    }

    [[nodiscard]] const std::vector<Symbol>& Symbols() const noexcept { return symbols_; }

    [[nodiscard]] const std::vector<std::uint16_t>& Sequence() const noexcept { return sequence_; }

private:
    /// A pair has to occur so often that its three bytes in the header pay.
    static constexpr std::uint32_t FewestPairs = 12;

    struct Candidate {
        std::uint32_t count;
        std::uint32_t pair;
    };

    /// @return its number, at most `MostSymbols` - 1
    std::uint16_t AddSymbol(Symbol symbol) {
        const std::size_t number = symbols_.size();
        symbols_.push_back(symbol);
        return number & 0xFFFU;
    }

    /// Makes symbols of the most frequent pairs; several at once, as long as they are about as
    /// frequent as the first.
    bool AddPairs() {
        const std::size_t size = symbols_.size();
        counts_.assign(size * size, 0);
        for (std::size_t at = 0; at + 1 < sequence_.size(); ++at) {
            ++counts_[sequence_[at] * size + sequence_[at + 1]];
            // Of three like symbols in a row two make a pair.
            if (at + 2 < sequence_.size() && sequence_[at] == sequence_[at + 1] &&
                sequence_[at + 1] == sequence_[at + 2]) {
                ++at;
            }
        }
        std::vector<Candidate> candidates;
        std::uint32_t most = 0;
        for (std::uint32_t pair = 0; pair < counts_.size(); ++pair) {
            if (counts_[pair] >= FewestPairs &&
                symbols_[pair / size].length + symbols_[pair % size].length <= MostLength) {
                most = std::max(most, counts_[pair]);
                candidates.push_back({counts_[pair], pair});
            }
        }
        if (candidates.empty()) {
            return false;
        }
        std::stable_sort(candidates.begin(), candidates.end(),
                         [](const Candidate& a, const Candidate& b) { return a.count > b.count; });
        pairs_.assign(size * size, NoSymbol);
        // A pair that shares a symbol with one before it, on the side where they meet, is counted
        // too often: it waits for the next round.
        std::vector<bool> isLeft(size);
        std::vector<bool> isRight(size);
        for (const Candidate& candidate : candidates) {
            const std::uint16_t left = candidate.pair / size & 0xFFFU;
            const std::uint16_t right = candidate.pair % size & 0xFFFU;
            if (candidate.count < most / 2 || symbols_.size() == MostSymbols) {
                break;
            }
            if (isRight[left] || isLeft[right]) {
                continue;
            }
            isLeft[left] = true;
            isRight[right] = true;
            pairs_[candidate.pair] =
                AddSymbol({left, right, symbols_[left].length + symbols_[right].length});
        }
        stride_ = size;
        return true;
    }

    void Replace() {
        std::size_t end = 0;
        for (std::size_t at = 0; at < sequence_.size(); ++at) {
            const std::uint16_t joined = at + 1 < sequence_.size()
                                           ? pairs_[sequence_[at] * stride_ + sequence_[at + 1]]
                                           : NoSymbol;
            if (joined != NoSymbol) {
                sequence_[end++] = joined;
                ++at;
            } else {
                sequence_[end++] = sequence_[at];
            }
        }
        sequence_.resize(end);
    }

    std::vector<Symbol> symbols_;
    std::vector<std::uint16_t> sequence_;
    std::vector<std::uint32_t> counts_;
    std::vector<std::uint16_t> pairs_;  // by pair: its symbol
    std::size_t stride_ = 0;
};

/// The canonical code of the format: symbols by falling length, longer words with lower numbers.
struct CanonicalCode {
    CanonicalCode(const std::vector<Symbol>& symbols, const std::vector<std::uint16_t>& sequence) {
        std::vector<std::uint64_t> frequencies(symbols.size());
        for (const std::uint16_t symbol : sequence) {
            ++frequencies[symbol];
        }
        lengths = CodeLengths(frequencies, LongestCode);
        order.resize(symbols.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return lengths[a] > lengths[b]; });
        numbers.resize(symbols.size());
        words.resize(symbols.size());
        for (std::size_t place = 0; place < order.size(); ++place) {
            numbers[order[place]] = place;
        }
        longest = lengths[order.front()];
        std::uint32_t next = 0;
        std::uint32_t length = longest;
        for (const std::size_t symbol : order) {
            if (lengths[symbol] == 0) {
                break;
            }
            next >>= length - lengths[symbol];
            length = lengths[symbol];
            words[symbol] = next++;
        }
        shortest = length;
    }

    std::vector<std::uint32_t> lengths;
    std::vector<std::size_t> order;    ///< symbols by number
    std::vector<std::size_t> numbers;  ///< numbers by symbol
    std::vector<std::uint32_t> words;
    std::uint32_t longest = 0;
    std::uint32_t shortest = 0;
};

/// How many values each block holds, if a block has that many bytes.
std::vector<std::uint32_t> CutIntoBlocks(const CPairing& pairing, const CanonicalCode& code,
                                         unsigned blockBits) {
    std::vector<std::uint32_t> sizes;
    const std::size_t room = std::size_t{8} << blockBits;
    std::size_t bits = room;
    std::uint32_t values = 0;
    for (const std::uint16_t symbol : pairing.Sequence()) {
        const std::uint32_t length = pairing.Symbols()[symbol].length;
        if (bits + code.lengths[symbol] > room || values + length > MostBlockValues) {
            if (values != 0) {
                sizes.push_back(values);
            }
            bits = 0;
            values = 0;
        }
        bits += code.lengths[symbol];
        values += length;
    }
    sizes.push_back(values);
    return sizes;
}

ByteList WriteBlocks(const CPairing& pairing, const CanonicalCode& code,
                     const std::vector<std::uint32_t>& sizes, unsigned blockBits) {
    ByteList data;
    data.reserve(sizes.size() << blockBits);
    auto symbol = pairing.Sequence().begin();
    for (const std::uint32_t size : sizes) {
        CBitWriter bits;
        for (std::uint32_t values = 0; values < size; ++symbol) {
            bits.Write(code.words[*symbol], code.lengths[*symbol]);
            values += pairing.Symbols()[*symbol].length;
        }
        Append(data, bits.Bytes());
        data.resize((data.size() + (std::size_t{1} << blockBits) - 1) >> blockBits << blockBits);
    }
    return data;
}

/// Rows for every 2^indexBits values: where the value in the middle of the row's range is.
ByteList MakeIndex(const std::vector<std::uint32_t>& sizes, std::size_t count, unsigned indexBits) {
    ByteList index;
    const std::size_t distance = std::size_t{1} << indexBits;
    std::size_t block = 0;
    std::size_t before = 0;
    for (std::size_t start = 0; start < count; start += distance) {
        const std::size_t middle = start + distance / 2;
        while (block + 1 < sizes.size() && before + sizes[block] <= middle) {
            before += sizes[block++];
        }
        AppendLittle(index, block, 4);
        AppendLittle(index, middle - before, 2);
    }
    return index;
}

/// A row for about every eighth block, and so that each place fits 16 bits: the middle of the last
/// row may lie past the last value.
unsigned IndexBitsFor(std::size_t count, const std::vector<std::uint32_t>& sizes) noexcept {
    constexpr unsigned Fewest = 6;
    constexpr unsigned Most = 20;
    unsigned bits = Fewest;
    while (bits < Most && (count >> bits) > sizes.size() / 8 + 1) {
        ++bits;
    }
    const auto placeOfLast = [&] {
        const std::size_t start = (count - 1) >> bits << bits;
        const std::size_t middle = start + (std::size_t{1} << bits) / 2;
        return middle < count ? 0 : middle - (count - sizes.back());
    };
    while (bits > Fewest && placeOfLast() > 0xFFFF) {
        --bits;
    }
    return bits;
}

}  // namespace

PairStream SinglePairStream(std::uint8_t value, std::uint8_t flags) {
    constexpr std::uint8_t SingleValueFlag = 0x80;
    PairStream stream;
    stream.header = {ToByte(flags | SingleValueFlag), value};
    return stream;
}

PairStream CompressPairs(const std::vector<std::uint8_t>& values, std::uint8_t flags,
                         unsigned mostBlockBits) {
    CPairing pairing(values);
    pairing.Run();
    const std::vector<Symbol>& symbols = pairing.Symbols();
    const CanonicalCode code(symbols, pairing.Sequence());

    // Small tables waste less with small blocks.
    constexpr unsigned FewestBlockBits = 5;
    unsigned blockBits = mostBlockBits;
    std::vector<std::uint32_t> sizes = CutIntoBlocks(pairing, code, blockBits);
    const auto bytesOf = [](std::size_t blocks, unsigned bits) {
        return blocks * 2 + ((blocks << bits) + 63) / 64 * 64;
    };
    for (unsigned bits = mostBlockBits; bits-- > FewestBlockBits && sizes.size() < 64;) {
        std::vector<std::uint32_t> others = CutIntoBlocks(pairing, code, bits);
        if (bytesOf(others.size(), bits) < bytesOf(sizes.size(), blockBits)) {
            sizes = std::move(others);
            blockBits = bits;
        }
    }
    const unsigned indexBits = IndexBitsFor(values.size(), sizes);

    PairStream stream;
    stream.header = {flags, ToByte(blockBits), ToByte(indexBits), 0};
    AppendLittle(stream.header, sizes.size(), 4);
    stream.header.push_back(ToByte(code.longest));
    stream.header.push_back(ToByte(code.shortest));
    for (std::uint32_t length = code.shortest; length <= code.longest; ++length) {
        const auto first =
            std::find_if(code.order.begin(), code.order.end(),
                         [&](std::size_t symbol) { return code.lengths[symbol] <= length; });
        AppendLittle(stream.header, first - code.order.begin(), 2);
    }
    AppendLittle(stream.header, symbols.size(), 2);
    for (const std::size_t symbol : code.order) {
        const Symbol& what = symbols[symbol];
        const bool isValue = what.right == NoRightHalf;
        const std::size_t left = isValue ? what.left : code.numbers[what.left];
        const std::size_t right = isValue ? NoRightHalf : code.numbers[what.right];
        AppendLittle(stream.header, left | right << 12U, 3);
    }
    if (symbols.size() % 2 != 0) {
        stream.header.push_back(0);
    }
    stream.indexTable = MakeIndex(sizes, values.size(), indexBits);
    for (const std::uint32_t size : sizes) {
        AppendLittle(stream.sizeTable, size - 1, 2);
    }
    stream.data = WriteBlocks(pairing, code, sizes, blockBits);
    return stream;
}

}  // namespace brenquil
