#include "bases/nalimov/data_comp.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace brenquil {

namespace {

using Bytes = std::span<const std::uint8_t>;

// | offset         | size         | meaning                                                     |
// |----------------|--------------|-------------------------------------------------------------|
// | 0              | 64           | banner: a text, a carriage return, a line feed, zeros       |
// | 64             | 4            | size of the header                                          |
// | 68             | 2            | not read                                                    |
// | 70             | 1            | a block has 2 to this power bytes                           |
// | 71             | 1            | number of distance slots, 24                                |
// | 72             | 4            | number of blocks                                            |
// | 76             | 4            | a mark, 0x4001F5                                            |
// | 80             | 8 a block    | check values, not read                                      |
// | after these    | bit stream   | stored sizes, decoded size of the last block, distances     |
// | next byte      | bit stream   | lengths of the code's words                                 |
// | header size -4 | 4            | checksum of all before it                                   |
constexpr std::size_t BannerSize = 64;
constexpr std::size_t HeaderSizeAt = 64;
constexpr std::size_t BlockBitsAt = 70;
constexpr std::size_t SlotsAt = 71;
constexpr std::size_t BlocksAt = 72;
constexpr std::size_t MarkAt = 76;
constexpr std::size_t FixedSize = 80;
constexpr std::size_t CheckValueSize = 8;
constexpr std::size_t ChecksumSize = 4;

constexpr std::string_view BannerStart = "Compressed by DATACOMP v 1.0 ";
constexpr std::string_view BannerEnd = "\r\n";
constexpr std::uint32_t Mark = 0x4001F5;
constexpr std::uint32_t MostBlockBits = 16;
constexpr std::uint32_t GroupShift = 4;  ///< 16 blocks have one absolute offset
constexpr std::uint32_t GroupSize = 1U << GroupShift;
constexpr std::uint32_t BackHalf = GroupSize / 2;  ///< blocks measured from the group's end

constexpr unsigned Literals = 256;
constexpr unsigned LengthsOfSlot = 32;
constexpr std::size_t Symbols = Literals + DataCompInfo::Slots * LengthsOfSlot;
constexpr unsigned DirectBits = 13;

/// Match lengths by their code: up to here a match is copied as one word of 4 bytes.
constexpr unsigned LastShortCode = 3;
/// Up to here the code is the length less one; from the next one on it names extra bits.
constexpr unsigned LastPlainCode = 14;

std::uint32_t BigEndian32(Bytes data, std::size_t at) noexcept {
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < 4; ++index) {
        value = value << 8U | data[at + index];
    }
    return value;
}

/// A text without control characters stands between the known start and the line's end.
bool IsBanner(Bytes banner) noexcept {
    const std::string_view text(reinterpret_cast<const char*>(banner.data()), BannerSize);
    if (!text.starts_with(BannerStart)) {
        return false;
    }
    const std::size_t end = text.find(BannerEnd);
    if (end == std::string_view::npos) {
        return false;
    }
    const auto isPrinted = [](char letter) { return static_cast<unsigned char>(letter) >= ' '; };
    const std::string_view notice = text.substr(0, end);
    const std::string_view rest = text.substr(end + BannerEnd.size());
    return std::all_of(notice.begin(), notice.end(), isPrinted) &&
           rest.find_first_not_of('\0') == std::string_view::npos;
}

std::uint32_t CheckFixedPart(Bytes header) noexcept {
    if (!IsBanner(header.first(BannerSize))) {
        return DataCompBadBanner;
    }
    if (header[BlockBitsAt] > MostBlockBits ||
        BigEndian32(header, HeaderSizeAt) < FixedSize + ChecksumSize) {
        return DataCompBadSizes;
    }
    if (header[SlotsAt] != DataCompInfo::Slots) {
        return DataCompBadSlots;
    }
    if (BigEndian32(header, MarkAt) != Mark) {
        return DataCompBadMark;
    }
    return DataCompOk;
}

/// The sizes of the first bit stream, as places of the blocks in the file. False when they do not
/// fit the 32 bits of an offset.
bool PlaceBlocks(DataCompInfo& info, CBitReader& bits, std::uint64_t headerSize) {
    std::vector<std::uint32_t> starts;
    starts.reserve(std::size_t{info.blocks} + 1);
    std::uint64_t start = headerSize;
    for (std::uint32_t block = 0; block < info.blocks; ++block) {
        starts.push_back(static_cast<std::uint32_t>(start));
        const std::uint32_t field = bits.Read(info.blockBits);
        const std::uint32_t size = field == 0 ? info.blockSize : field;
        info.maxStored = std::max(info.maxStored, size);
        start += size;
    }
    if (start > UINT32_MAX) {
        return false;
    }
    starts.push_back(static_cast<std::uint32_t>(start));
    info.maxStored += 32;

    for (std::size_t block = 0; block < info.blocks; block += GroupSize) {
        info.groupOffsets.push_back(starts[block]);
    }
    info.groupOffsets.push_back(starts.back());
    info.blockDeltas.reserve(info.blocks);
    for (std::size_t block = 0; block < info.blocks; ++block) {
        const std::size_t group = block >> GroupShift;
        const std::uint32_t delta = (block & BackHalf) == 0
                                      ? starts[block] - info.groupOffsets[group]
                                      : info.groupOffsets[group + 1] - starts[block];
        info.blockDeltas.push_back(static_cast<std::uint16_t>(delta));
    }
    return true;
}

/// Everything between the fixed part and the checksum.
std::uint32_t ParseVariablePart(DataCompInfo& info, Bytes header) {
    info.blockBits = header[BlockBitsAt];
    info.blockSize = 1U << info.blockBits;
    info.blocks = BigEndian32(header, BlocksAt);

    const Bytes body = header.subspan(FixedSize, header.size() - FixedSize - ChecksumSize);
    const std::uint64_t checkValues = std::uint64_t{info.blocks} * CheckValueSize;
    const std::uint64_t fields = std::uint64_t{info.blocks} + 1 + DataCompInfo::Slots;
    const std::uint64_t streamSize = (fields * info.blockBits + 7) / 8;
    if (info.blocks == 0 || checkValues + streamSize > body.size()) {
        return DataCompBadSizes;
    }
    const Bytes streams = body.subspan(checkValues);
    CBitReader sizes(streams.first(streamSize));
    if (!PlaceBlocks(info, sizes, header.size())) {
        return DataCompBadSizes;
    }
    const std::uint32_t lastSize = sizes.Read(info.blockBits);
    info.lastBlockSize = lastSize == 0 ? info.blockSize : lastSize;
    for (std::int32_t& distance : info.distances) {
        const std::int32_t back = sizes.Read(info.blockBits);
        distance = -back;
    }

    std::array<std::uint32_t, Symbols> lengths{};
    CBitReader code(streams.subspan(streamSize));
    if (DataCompReadLengths(code, lengths) != DataCompOk || code.HasOverrun()) {
        return DataCompBadLengths;
    }
    return info.symbols.Build(lengths, DirectBits) == DataCompOk ? std::uint32_t{DataCompOk}
                                                                 : DataCompBadCode;
}

/// Reads up to `size` bytes in pieces, so that a size that is a lie costs no more memory than the
/// file has bytes.
std::size_t ReadPieces(CNalimovFile& file, std::vector<std::uint8_t>& bytes, std::size_t size) {
    constexpr std::size_t Piece = std::size_t{1} << 20;
    while (bytes.size() < size) {
        const std::size_t before = bytes.size();
        const std::size_t wanted = std::min(Piece, size - before);
        bytes.resize(before + wanted);
        const std::size_t got = file.Read(std::span(bytes).subspan(before, wanted));
        bytes.resize(before + got);
        if (got < wanted) {
            break;
        }
    }
    return bytes.size();
}

/// Length of the match with code `code`, which may take extra bits.
std::uint32_t MatchLength(unsigned code, CBitReader& bits) noexcept {
    if (code <= LastPlainCode) {
        return code + 1;
    }
    const unsigned magnitude = code - LastPlainCode;
    return (1U << magnitude) + bits.Read(magnitude) + LastPlainCode;
}

/// Copies byte by byte in ascending order, so that a source that overlaps the target repeats a
/// pattern; in steps of 16 bytes where that makes no difference. May write 15 bytes too many.
void CopyMatch(std::uint8_t* target, std::int32_t distance, std::uint32_t length) noexcept {
    constexpr std::int32_t Step = 16;
    static_assert(Step <= DataCompSpareBytes);
    const std::uint8_t* source = target + distance;
    if (distance <= -Step) {
        for (std::uint32_t copied = 0; copied < length; copied += Step) {
            std::memcpy(target + copied, source + copied, Step);
        }
        return;
    }
    for (std::uint32_t copied = 0; copied < length; ++copied) {
        target[copied] = source[copied];
    }
}

}  // namespace

std::uint32_t DataCompChecksum(Bytes data) noexcept {
    // The reverse of the usual test on the bit that leaves: so it is in the files.
    static constexpr std::array<std::uint32_t, 256> Table = [] {
        constexpr std::uint32_t Polynomial = 0xEDB88320;
        std::array<std::uint32_t, 256> table{};
        for (std::uint32_t index = 0; index < table.size(); ++index) {
            std::uint32_t value = index;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value & 1U) != 0 ? value >> 1U : value >> 1U ^ Polynomial;
            }
            table[index] = value;
        }
        return table;
    }();
    std::uint32_t sum = 0;
    for (const std::uint8_t byte : data) {
        sum = Table[(byte ^ sum) & 0xFFU] ^ sum >> 8U;
    }
    return sum;
}

std::uint32_t DataCompOpen(std::unique_ptr<DataCompInfo>* info, CNalimovFile& file) {
    if (info == nullptr) {
        return DataCompNoOutput;
    }
    std::vector<std::uint8_t> header;
    try {
        if (!file.Seek(0) || ReadPieces(file, header, FixedSize) < FixedSize) {
            return DataCompShortHeader;
        }
        if (const std::uint32_t error = CheckFixedPart(header)) {
            return error;
        }
        const std::size_t headerSize = BigEndian32(header, HeaderSizeAt);
        if (ReadPieces(file, header, headerSize) < headerSize) {
            return DataCompCutHeader;
        }
    } catch (const std::bad_alloc&) {
        return DataCompNoHeaderMemory;
    }
    return DataCompParse(info, header);
}

std::uint32_t DataCompParse(std::unique_ptr<DataCompInfo>* info, Bytes file) {
    if (info == nullptr) {
        return DataCompNoOutput;
    }
    if (file.size() < FixedSize) {
        return DataCompShortHeader;
    }
    if (const std::uint32_t error = CheckFixedPart(file)) {
        return error;
    }
    const std::size_t headerSize = BigEndian32(file, HeaderSizeAt);
    if (file.size() < headerSize) {
        return DataCompCutHeader;
    }
    const Bytes header = file.first(headerSize);
    const std::size_t checked = headerSize - ChecksumSize;
    if (DataCompChecksum(header.first(checked)) != BigEndian32(header, checked)) {
        return DataCompBadChecksum;
    }
    try {
        auto made = std::make_unique<DataCompInfo>();
        if (const std::uint32_t error = ParseVariablePart(*made, header)) {
            return error;
        }
        *info = std::move(made);
    } catch (const std::bad_alloc&) {
        return DataCompNoInfoMemory;
    }
    return DataCompOk;
}

std::uint32_t DataCompBlockStart(const DataCompInfo& info, std::uint32_t block) noexcept {
    assert(block <= info.blocks);
    if (block >= info.blocks) {
        return info.groupOffsets.back();
    }
    const std::uint32_t group = block >> GroupShift;
    const std::uint32_t delta = info.blockDeltas[block];
    if ((block & BackHalf) == 0) {
        return info.groupOffsets[group] + delta;
    }
    // A block is at least one byte long, so 0 can only be eight whole blocks of 8192 bytes, whose
    // distance takes 17 bits.
    constexpr std::uint32_t WholeHalf = 0x10000;
    return info.groupOffsets[group + 1] - (delta == 0 ? WholeHalf : delta);
}

bool DataCompDecode(const DataCompInfo& info, DecodeState& state, std::uint32_t end) noexcept {
    if (state.cookie != DecodeState::Cookie || end > state.size) {
        return false;
    }
    CBitReader bits({state.stored, state.storedSize});
    std::uint8_t* const target = state.target;
    std::uint32_t position = state.position;
    while (position < end) {
        const unsigned symbol = info.symbols.Next(bits);
        if (symbol < Literals) {
            target[position++] = symbol & 0xFFU;
            continue;
        }
        const unsigned match = symbol - Literals;
        const std::int32_t distance = info.distances[match / LengthsOfSlot];
        const std::uint32_t back = -distance;
        if (back == 0 || back > position) {
            return false;
        }
        const unsigned code = match % LengthsOfSlot;
        if (code <= LastShortCode) {
            for (int byte = 0; byte < 4; ++byte) {
                target[position + byte] = target[position + byte + distance];  // may overlap
            }
            position += code + 1;
            continue;
        }
        const std::uint32_t length = std::min(MatchLength(code, bits), end - position);
        CopyMatch(target + position, distance, length);
        position += length;
    }
    state.position = std::min(position, end);
    return !bits.HasOverrun();
}

}  // namespace brenquil
