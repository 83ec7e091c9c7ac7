#include "bases/syzygy/block_stream.h"

#include <algorithm>
#include <cstddef>

namespace brenquil {

namespace {

constexpr std::uint8_t SingleValueFlag = 0x80;
constexpr std::uint64_t IndexRowBytes = 6;
constexpr std::uint32_t NoRightHalf = 0xFFF;  // marks a symbol that is a value

[[nodiscard]] std::uint16_t ReadLittle16(const std::uint8_t* bytes) noexcept {
    return (bytes[0] | bytes[1] << 8) & 0xFFFF;
}

[[nodiscard]] std::uint32_t ReadLittle32(const std::uint8_t* bytes) noexcept {
    return ReadLittle16(bytes) | std::uint32_t{ReadLittle16(bytes + 2)} << 16U;
}

/// The next 32 bits of a code. Past the end of the file it reads as 0.
[[nodiscard]] std::uint64_t ReadCode(const std::uint8_t* bytes, const std::uint8_t* end) noexcept {
    if (end - bytes >= 4) [[likely]] {
        return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
               std::uint32_t{bytes[2]} << 8U | bytes[3];
    }
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) {
        word = word << 8U | (bytes + i < end ? bytes[i] : 0U);
    }
    return word;
}

[[nodiscard]] bool Fits(TbBytes file, std::uint64_t start, std::uint64_t length) noexcept {
    return start <= file.size() && length <= file.size() - start;
}

/// Works out how many values each symbol stands for.
class CSymbolReader {
public:
    CSymbolReader(const std::uint8_t* patterns, std::uint32_t count)
        : patterns_(patterns), states_(count, State::New), symbols_(count + 1) {}

    /// False if a symbol refers to one that is not there, to itself, or to too many values.
    [[nodiscard]] bool ReadAll() {
        for (std::uint32_t symbol = 0; symbol < states_.size(); ++symbol) {
            if (!Read(symbol)) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] std::vector<BlockStream::Symbol> Take() { return std::move(symbols_); }

private:
    enum class State : std::uint8_t { New, Open, Done };

    [[nodiscard]] bool Read(std::uint32_t symbol) {
        if (symbol >= states_.size() || states_[symbol] == State::Open) {
            return false;
        }
        if (states_[symbol] == State::Done) {
            return true;
        }
        states_[symbol] = State::Open;
        const std::uint8_t* const pattern = patterns_ + 3 * std::size_t{symbol};
        BlockStream::Symbol& word = symbols_[symbol];
        word.word = ReadLittle16(pattern) | std::uint32_t{pattern[2]} << 16U;
        if (word.Right() != NoRightHalf) {
            if (!Read(word.Left()) || !Read(word.Right())) {
                return false;
            }
            const std::uint32_t length =
                symbols_[word.Left()].Length() + symbols_[word.Right()].Length() + 1;
            if (length > 0xFF) {
                return false;
            }
            word.word |= length << 24U;
        }
        states_[symbol] = State::Done;
        return true;
    }

    const std::uint8_t* patterns_;
    std::vector<State> states_;
    std::vector<BlockStream::Symbol> symbols_;
};

/// First code of each length. Longer codes have the smaller numbers, when left aligned, and the
/// symbols with the longest codes come first. `lengths` are all from `minLength` on.
void SetCodes(BlockStream& stream, const std::uint8_t* offsets, unsigned lengths) noexcept {
    std::array<std::uint32_t, BlockStream::LongestCode + 1> base{};
    for (unsigned i = lengths; i-- > 0;) {
        const unsigned length = stream.minLength + i;
        stream.offset[length] = ReadLittle16(offsets + 2 * i);
        if (i + 1 < lengths) {
            base[i] = (base[i + 1] + stream.offset[length] - stream.offset[length + 1]) / 2;
        }
        stream.base[length] = std::uint64_t{base[i]} << (32 - length);
    }
}

/// Do the values that each row of the index answers for lie in stored blocks?
[[nodiscard]] bool IsIndexSound(const BlockStream& stream, std::uint64_t tableSize) {
    std::vector<std::uint64_t> before(std::size_t{stream.blocks} + 1);  // values before each block
    for (std::size_t block = 0; block < stream.blocks; ++block) {
        before[block + 1] = before[block] + ReadLittle16(stream.sizeTable + 2 * block) + 1;
    }
    const std::uint64_t stored = before[stream.storedBlocks];
    const std::uint64_t distance = std::uint64_t{1} << stream.indexBits;
    const std::uint8_t* row = stream.indexTable;
    for (std::uint64_t start = 0; start < tableSize; start += distance, row += IndexRowBytes) {
        const std::uint32_t block = ReadLittle32(row);
        if (block >= stream.blocks) {
            return false;
        }
        // A row names the place of the value in the middle of its range.
        const std::uint64_t middle = before[block] + ReadLittle16(row + 4);
        const std::uint64_t count = std::min(distance, tableSize - start);
        if (middle < distance / 2 || middle - distance / 2 + count > stored) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::unique_ptr<BlockStream> SetupBlockStream(TbBytes file, std::uint64_t tableSize,
                                              BlockStreamSizes& sizes, std::uint64_t& position,
                                              std::uint8_t& flags, bool wdl) {
    constexpr std::uint64_t FixedBytes = 10;
    sizes = {};
    if (!Fits(file, position, 2)) {
        return nullptr;
    }
    auto stream = std::make_unique<BlockStream>();
    const std::uint8_t* const header = file.data() + position;
    flags = header[0];
    if ((flags & SingleValueFlag) != 0) {
        stream->minLength = wdl ? header[1] : 0;
        position += 2;
        return stream;
    }
    if (!Fits(file, position, FixedBytes)) {
        return nullptr;
    }
    stream->blockSize = header[1];
    stream->indexBits = header[2];
    stream->storedBlocks = ReadLittle32(header + 4);
    const std::uint64_t blocks = std::uint64_t{stream->storedBlocks} + header[3];
    const unsigned maxLength = header[8];
    stream->minLength = header[9];
    if (stream->blockSize >= 32 || stream->indexBits >= 48 || blocks > 0xFFFFFFFFU ||
        maxLength > BlockStream::LongestCode || stream->minLength > maxLength) {
        return nullptr;
    }
    stream->blocks = static_cast<std::uint32_t>(blocks);
    const unsigned lengths = maxLength - stream->minLength + 1;
    if (!Fits(file, position, FixedBytes + 2 * lengths + 2)) {
        return nullptr;
    }
    stream->symbolCount = ReadLittle16(header + FixedBytes + 2 * lengths);
    const std::uint64_t start = FixedBytes + 2 * lengths + 2;
    const std::uint64_t bytes = 3 * std::uint64_t{stream->symbolCount};
    if (stream->symbolCount > BlockStream::MostSymbols || !Fits(file, position + start, bytes)) {
        return nullptr;
    }
    CSymbolReader reader(header + start, stream->symbolCount);
    if (!reader.ReadAll()) {
        return nullptr;
    }
    stream->symbols = reader.Take();
    SetCodes(*stream, header + FixedBytes, lengths);
    position += start + bytes + (stream->symbolCount & 1U);

    const std::uint64_t distance = std::uint64_t{1} << stream->indexBits;
    sizes.indexTable = IndexRowBytes * ((tableSize + distance - 1) >> stream->indexBits);
    sizes.sizeTable = 2 * blocks;
    sizes.data = std::uint64_t{stream->storedBlocks} << stream->blockSize;
    return stream;
}

bool PlaceBlockStream(BlockStream& stream, TbBytes file, std::uint64_t tableSize,
                      const BlockStreamSizes& sizes, const BlockStreamPlaces& places) {
    if (stream.indexBits == 0) {
        return true;  // answers without its contents
    }
    if (!Fits(file, places.indexTable, sizes.indexTable) ||
        !Fits(file, places.sizeTable, sizes.sizeTable) || !Fits(file, places.data, sizes.data)) {
        return false;
    }
    stream.indexTable = file.data() + places.indexTable;
    stream.sizeTable = file.data() + places.sizeTable;
    stream.data = file.data() + places.data;
    stream.fileEnd = file.data() + file.size();
    return IsIndexSound(stream, tableSize);
}

std::uint8_t DecompressValue(const BlockStream& stream, std::uint64_t index) noexcept {
    if (stream.indexBits == 0) {
        return stream.minLength;
    }
    const std::uint64_t distance = std::uint64_t{1} << stream.indexBits;
    const std::uint8_t* const row = stream.indexTable + IndexRowBytes * (index >> stream.indexBits);
    std::uint64_t block = ReadLittle32(row);
    // A row names the place of the value in the middle of its range, so it may go back from there.
    std::int64_t lit = (index & (distance - 1)) - distance / 2 + ReadLittle16(row + 4);
    while (lit < 0) {
        lit += ReadLittle16(stream.sizeTable + 2 * --block) + 1;
    }
    for (;;) {
        const std::int64_t last = ReadLittle16(stream.sizeTable + 2 * block);
        if (lit <= last) {
            break;
        }
        lit -= last + 1;
        ++block;
    }

    const std::uint8_t* next = stream.data + (block << stream.blockSize);
    std::uint64_t code = ReadCode(next, stream.fileEnd) << 32U | ReadCode(next + 4, stream.fileEnd);
    next += 8;
    unsigned used = 0;  // bits of `code` that are no longer filled, below 32
    auto left = static_cast<std::uint32_t>(lit);
    BlockStream::Symbol symbol;
    for (;;) {
        const std::uint64_t window = code >> 32U;
        unsigned length = stream.minLength;
        while (window < stream.base[length]) {
            ++length;
        }
        const std::uint64_t number =
            stream.offset[length] + ((window - stream.base[length]) >> (32 - length));
        symbol = stream.symbols[std::min<std::uint64_t>(number, stream.symbolCount)];
        if (left <= symbol.Length()) {
            break;
        }
        left -= symbol.Length() + 1;
        code <<= length;
        used += length;
        if (used >= 32) {
            used -= 32;
            code |= ReadCode(next, stream.fileEnd) << used;
            next += 4;
        }
    }
    while (symbol.Length() != 0) {
        const BlockStream::Symbol first = stream.symbols[symbol.Left()];
        if (left <= first.Length()) {
            symbol = first;
        } else {
            left -= first.Length() + 1;
            symbol = stream.symbols[symbol.Right()];
        }
    }
    return symbol.word & 0xFFU;
}

}  // namespace brenquil
