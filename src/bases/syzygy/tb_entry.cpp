#include "bases/syzygy/tb_entry.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace brenquil {

namespace {

constexpr std::array<std::uint8_t, 4> WdlMagic = {0x71, 0xE8, 0x23, 0x5D};
constexpr std::array<std::uint8_t, 4> DtzMagic = {0xD7, 0x66, 0x0C, 0xA5};
constexpr std::uint8_t SplitFlag = 1;
constexpr std::uint8_t HasFilesFlag = 2;
constexpr std::uint64_t HeaderStart = 5;
constexpr std::uint64_t DataAlignment = 64;

/// Walks through a file from its magic to its data. The first thing out of order ends the walk.
class CTableParser {
public:
    CTableParser(TbBytes file, const TbShape& shape) noexcept : file_(file), shape_(shape) {}

    [[nodiscard]] bool ReadMagic(const std::array<std::uint8_t, 4>& magic) noexcept {
        if (file_.size() < HeaderStart || !std::equal(magic.begin(), magic.end(), file_.begin())) {
            return false;
        }
        position_ = HeaderStart;
        return true;
    }

    [[nodiscard]] bool HasFlag(std::uint8_t flag) const noexcept { return (file_[4] & flag) != 0; }

    /// How many file groups have streams.
    [[nodiscard]] std::size_t StoredGroups() const noexcept {
        return shape_.hasPawns && HasFlag(HasFilesFlag) ? TbFileGroups : 1;
    }

    /// The header of one file group: the order of its men and what they are, the first side in the
    /// low half of each byte and the second in the high half. The second is laid out on request.
    [[nodiscard]] bool ReadGroupHeader(unsigned file, TbLayout& first, TbLayout* second) noexcept {
        const bool hasTwoOrders = shape_.hasPawns && shape_.pawnCount[1] != 0;
        const std::uint64_t orders = hasTwoOrders ? 2 : 1;
        if (file_.size() - position_ < orders + shape_.men) {
            return false;
        }
        const std::uint8_t* const bytes = file_.data() + position_;
        position_ += orders + shape_.men;
        const auto layOut = [&](TbLayout& layout, unsigned shift) {
            for (std::size_t i = 0; i < shape_.men; ++i) {
                layout.pieceCodes[i] = bytes[orders + i] >> shift & 15U;
            }
            const unsigned secondOrder = hasTwoOrders ? bytes[1] >> shift & 15U : TbNoSecondOrder;
            return AreCodesRight(layout) &&
                   LayOutGroups(shape_, file, bytes[0] >> shift & 15U, secondOrder, layout);
        };
        return layOut(first, 0) && (second == nullptr || layOut(*second, 4));
    }

    void AlignTo(std::uint64_t bytes) noexcept {
        position_ = (position_ + bytes - 1) / bytes * bytes;
    }

    [[nodiscard]] bool ReadStreamHeader(TbSide& side, std::uint8_t& flags, bool wdl) {
        BlockStreamSizes sizes;
        side.stream = SetupBlockStream(file_, side.layout.size, sizes, position_, flags, wdl);
        if (side.stream == nullptr) {
            return false;
        }
        streams_.push_back({&side, sizes, {}});
        return true;
    }

    /// Four lists, each after its length.
    [[nodiscard]] bool ReadMaps(std::uint64_t mapStart,
                                std::array<std::uint16_t, 4>& starts) noexcept {
        for (std::uint16_t& start : starts) {
            if (position_ >= file_.size()) {
                return false;
            }
            start = static_cast<std::uint16_t>(position_ + 1 - mapStart);
            position_ += file_[position_] + 1U;
        }
        return position_ <= file_.size();
    }

    /// Finds the contents of the streams after the headers: all index tables, all size tables, and
    /// the data of each stream at a round address.
    [[nodiscard]] bool PlaceStreams() {
        for (Stream& stream : streams_) {
            stream.places.indexTable = Skip(stream.sizes.indexTable);
        }
        for (Stream& stream : streams_) {
            stream.places.sizeTable = Skip(stream.sizes.sizeTable);
        }
        for (Stream& stream : streams_) {
            AlignTo(DataAlignment);
            stream.places.data = Skip(stream.sizes.data);
        }
        return std::all_of(streams_.begin(), streams_.end(), [this](const Stream& stream) {
            return PlaceBlockStream(*stream.side->stream, file_, stream.side->layout.size,
                                    stream.sizes, stream.places);
        });
    }

    [[nodiscard]] std::uint64_t Position() const noexcept { return position_; }

private:
    struct Stream {
        TbSide* side;
        BlockStreamSizes sizes;
        BlockStreamPlaces places;
    };

    /// Are these the men of the table, the pawns first and in the same order everywhere?
    [[nodiscard]] bool AreCodesRight(const TbLayout& layout) noexcept {
        TbCounts counts{};
        for (std::size_t i = 0; i < shape_.men; ++i) {
            ++counts[layout.pieceCodes[i]];
        }
        if (counts != shape_.counts) {
            return false;
        }
        if (!shape_.hasPawns) {
            return true;
        }
        if (leadingPawn_ == 0) {
            leadingPawn_ = layout.pieceCodes[0];
        }
        const std::size_t leaders = shape_.pawnCount[0];
        const std::size_t pawns = leaders + shape_.pawnCount[1];
        const auto isLeader = [this](std::uint8_t code) { return code == leadingPawn_; };
        const auto isPawn = [](std::uint8_t code) { return (code & ~TbBlackBit) == TbPawn; };
        const auto* const codes = layout.pieceCodes.begin();
        return std::all_of(codes, codes + leaders, isLeader) &&
               std::none_of(codes + leaders, codes + shape_.men, isLeader) &&
               std::all_of(codes, codes + pawns, isPawn);
    }

    /// Wherever a damaged length leads, the sum stays far below 2^64: a stream has at most 2^63
    /// bytes of data, and the next one is refused.
    std::uint64_t Skip(std::uint64_t bytes) noexcept {
        const std::uint64_t start = position_;
        position_ = bytes > MostBytes - position_ ? MostBytes : position_ + bytes;
        return start;
    }

    static constexpr std::uint64_t MostBytes = std::uint64_t{1} << 62U;

    TbBytes file_;
    const TbShape& shape_;
    std::uint64_t position_ = 0;
    std::uint8_t leadingPawn_ = 0;
    std::vector<Stream> streams_;
};

[[nodiscard]] bool ParseWdlTable(TbEntry& entry) {
    CTableParser parser(entry.data, entry.shape);
    if (!parser.ReadMagic(WdlMagic)) {
        return false;
    }
    const bool split = parser.HasFlag(SplitFlag);
    const std::size_t headers = entry.shape.hasPawns ? TbFileGroups : 1;
    for (unsigned file = 0; file < headers; ++file) {
        auto& sides = entry.groups[file];
        if (!parser.ReadGroupHeader(file, sides[0].layout, split ? &sides[1].layout : nullptr)) {
            return false;
        }
    }
    parser.AlignTo(2);
    for (std::size_t file = 0; file < parser.StoredGroups(); ++file) {
        for (std::size_t side = 0; side < (split ? 2U : 1U); ++side) {
            std::uint8_t flags = 0;
            if (!parser.ReadStreamHeader(entry.groups[file][side], flags, true)) {
                return false;
            }
        }
    }
    return parser.PlaceStreams();
}

/// A table of equal sides with pawns is always read from White's side, so one that claims to store
/// the other side could never answer, and the search for an answer would never end.
[[nodiscard]] bool IsStoredSideRight(const TbShape& shape, std::uint8_t flags) noexcept {
    return !(shape.symmetric && shape.hasPawns && (flags & DtzEntry::SideFlag) != 0);
}

[[nodiscard]] bool ParseDtzTable(DtzEntry& entry) {
    CTableParser parser(entry.data, entry.shape);
    if (!parser.ReadMagic(DtzMagic)) {
        return false;
    }
    const std::size_t headers = entry.shape.hasPawns ? TbFileGroups : 1;
    for (unsigned file = 0; file < headers; ++file) {
        if (!parser.ReadGroupHeader(file, entry.groups[file].side.layout, nullptr)) {
            return false;
        }
    }
    parser.AlignTo(2);
    const std::size_t stored = parser.StoredGroups();
    for (std::size_t file = 0; file < stored; ++file) {
        DtzEntry::Group& group = entry.groups[file];
        if (!parser.ReadStreamHeader(group.side, group.flags, false) ||
            !IsStoredSideRight(entry.shape, group.flags)) {
            return false;
        }
    }
    const std::uint64_t mapStart = parser.Position();
    entry.map = entry.data.data() + std::min<std::uint64_t>(mapStart, entry.data.size());
    for (std::size_t file = 0; file < stored; ++file) {
        DtzEntry::Group& group = entry.groups[file];
        if ((group.flags & DtzEntry::MapFlag) != 0 && !parser.ReadMaps(mapStart, group.mapStarts)) {
            return false;
        }
    }
    parser.AlignTo(2);
    return parser.PlaceStreams();
}

void ReportCorruption() {
    std::fputs("Corrupted table.\n", stderr);
    std::fflush(stderr);
}

}  // namespace

bool ReadWdlTable(TbEntry& entry) {
    if (ParseWdlTable(entry)) {
        return true;
    }
    ReportCorruption();
    ReleaseWdlTable(entry);
    return false;
}

bool ReadDtzTable(DtzEntry& entry) {
    if (ParseDtzTable(entry)) {
        return true;
    }
    ReportCorruption();
    return false;
}

void ReleaseWdlTable(TbEntry& entry) noexcept {
    for (auto& sides : entry.groups) {
        for (TbSide& side : sides) {
            side = TbSide();
        }
    }
    entry.data = {};
    entry.file.Close();
    entry.ready.store(false, std::memory_order_relaxed);
}

}  // namespace brenquil
