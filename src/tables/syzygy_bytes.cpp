#include "tables/syzygy_bytes.h"

#include "platform/bits.h"
#include "tables/ending_exits.h"
#include "tables/pair_coder.h"
#include "tables/syzygy_layout.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

namespace brenquil {

namespace {

constexpr unsigned WdlBlockBits = 6;
constexpr unsigned DtzBlockBits = 10;
constexpr std::uint8_t SideFlag = 1;
constexpr std::uint8_t MapFlag = 2;
constexpr std::uint8_t PliesFlags = 4 | 8;
constexpr std::string_view SumMark = "BRENQUIL";

// ---- demands

/// What is asked of one legal position.
std::uint8_t DemandOf(CEndingNode& node, const CEndingExits<DistanceToZeroing>& exits, int code) {
    using Rules = DistanceToZeroing;
    const int wdl = Rules::ValueOf(code);
    std::uint8_t demand = ToByte(wdl + 2);
    node.PrepareMoves();
    const auto classOf = [](const ExitSum& sum) {
        return !sum.hasMove ? -3 : Rules::ValueOf(CodeOfExits<Rules>(sum));
    };
    const int captures = classOf(exits.FindCaptures(node));
    if (captures == wdl && wdl > -2) {
        demand |= CSyzygyDemands::AtMost;
    }
    if (wdl < 0 || (wdl > 0 && classOf(exits.Find(node)) != wdl)) {
        demand |= CSyzygyDemands::Distance;
    }
    return demand;
}

// ---- sequences of values

/// A value that is asked for, or what else may stand there.
struct Choice {
    std::uint8_t value;
    bool isAnything;  ///< nobody asks
    bool isAtMost;    ///< any value up to this one will do

    [[nodiscard]] bool Allows(std::uint8_t other) const noexcept {
        return isAnything || other == value || (isAtMost && other < value);
    }
};

/// Gives the free places values: what stands before them, or else what comes after.
class CFiller {
public:
    /// @return whether the value differs from the one before
    bool Add(const Choice& choice, std::vector<std::uint8_t>* values) {
        bool isNew = false;
        if (!choice.Allows(last_)) {
            last_ = choice.value;
            isNew = true;
        }
        if (values != nullptr) {
            values->push_back(last_);
        }
        return isNew;
    }

private:
    std::uint8_t last_ = 0;
};

/// One file group of one side to move of a table.
class CSequence {
public:
    virtual ~CSequence() = default;
    CSequence() = default;
    CSequence(const CSequence&) = delete;
    CSequence& operator=(const CSequence&) = delete;

    [[nodiscard]] virtual Choice At(CEndingIndex::Place place) const noexcept = 0;

    /// The values of a layout in order.
    [[nodiscard]] std::vector<std::uint8_t>
    Values(const CSyzygyLayout& layout, const CEndingIndex& index, CWorkers& workers) const {
        std::vector<std::uint8_t> choices(layout.Size());
        std::vector<std::uint8_t> kinds(layout.Size());
        const std::size_t chunks = (layout.Size() + ChunkSize - 1) / ChunkSize;
        workers.ForEach(chunks, [&](std::size_t chunk, std::size_t) {
            const std::uint64_t end =
                std::min<std::uint64_t>(layout.Size(), (chunk + 1) * ChunkSize);
            for (std::uint64_t number = chunk * ChunkSize; number < end; ++number) {
                const Choice choice = ChoiceOf(layout, index, number);
                choices[number] = choice.value;
                kinds[number] = (choice.isAnything ? 1 : 0) | (choice.isAtMost ? 2 : 0);
            }
        });
        CFiller filler;
        std::vector<std::uint8_t> values;
        values.reserve(layout.Size());
        for (std::size_t number = 0; number < choices.size(); ++number) {
            filler.Add({choices[number], (kinds[number] & 1U) != 0, (kinds[number] & 2U) != 0},
                       &values);
        }
        return values;
    }

    /// How often the value changes in samples of a layout: the fewer, the better it compresses.
    [[nodiscard]] std::size_t Changes(const CSyzygyLayout& layout,
                                      const CEndingIndex& index) const {
        constexpr std::uint64_t WindowSize = 1024;
        constexpr std::uint64_t Windows = 48;
        std::size_t changes = 0;
        const std::uint64_t windows =
            std::min<std::uint64_t>(Windows, (layout.Size() + WindowSize - 1) / WindowSize);
        for (std::uint64_t window = 0; window < windows; ++window) {
            const std::uint64_t start = layout.Size() / windows * window;
            const std::uint64_t end = std::min(layout.Size(), start + WindowSize);
            CFiller filler;
            for (std::uint64_t number = start; number < end; ++number) {
                changes += filler.Add(ChoiceOf(layout, index, number), nullptr) ? 1 : 0;
            }
        }
        return changes;
    }

private:
    [[nodiscard]] Choice ChoiceOf(const CSyzygyLayout& layout, const CEndingIndex& index,
                                  std::uint64_t number) const noexcept {
        EndingSquares squares{};
        if (!layout.SquaresOf(number, squares)) {
            return {0, true, false};
        }
        Bitboard occupied = 0;
        for (std::size_t man = 0; man < layout.Of().men; ++man) {
            if ((occupied & BitOf(squares[man])) != 0) {
                return {0, true, false};
            }
            occupied |= BitOf(squares[man]);
        }
        return At(index.PlaceOf(squares));
    }
};

/// Classes.
class CClassSequence final : public CSequence {
public:
    CClassSequence(const CSyzygyDemands& demands, Colour sideToMove) noexcept
        : demands_(demands), sideToMove_(sideToMove) {}

    [[nodiscard]] Choice At(CEndingIndex::Place place) const noexcept override {
        const std::uint8_t demand = demands_.At(place, sideToMove_);
        return {ToByte(demand & CSyzygyDemands::ClassMask), demand == CSyzygyDemands::Anything,
                (demand & CSyzygyDemands::AtMost) != 0};
    }

private:
    const CSyzygyDemands& demands_;
    Colour sideToMove_;
};

/// Distances as they are stored, by class: 0 win, 1 loss, 2 spoilt win, 3 saved loss.
using DistanceMaps = std::array<std::vector<std::uint8_t>, 4>;

/// The list of a class of -2 to 2.
std::size_t ListOfClass(int wdl) noexcept {
    switch (wdl) {
    case -2: return 1;
    case -1: return 3;
    case 1: return 2;
    default: return 0;
    }
}

class CDistanceSequence final : public CSequence {
public:
    CDistanceSequence(const ZeroingCodes& codes, const CSyzygyDemands& demands, Colour sideToMove,
                      bool inPlies) noexcept
        : codes_(codes), demands_(demands), sideToMove_(sideToMove), inPlies_(inPlies) {}

    [[nodiscard]] Choice At(CEndingIndex::Place place) const noexcept override {
        const std::uint8_t demand = demands_.At(place, sideToMove_);
        if (demand == CSyzygyDemands::Anything || (demand & CSyzygyDemands::Distance) == 0) {
            return {0, true, false};
        }
        const int wdl = (demand & CSyzygyDemands::ClassMask) - 2;
        const int stored = Stored(codes_.At(place, sideToMove_), wdl);
        return {places_.empty() ? ToByte(stored) : places_[ListOfClass(wdl)][stored], false, false};
    }

    /// Makes lists of the distances that occur in a layout, the most frequent first, and from then
    /// on gives places in these lists. Does nothing where all values are of one class.
    void UseMaps(const CSyzygyLayout& layout, const CEndingIndex& index, DistanceMaps& maps) {
        std::array<std::array<std::uint64_t, 256>, 4> counts{};
        for (std::uint64_t number = 0; number < layout.Size(); ++number) {
            EndingSquares squares{};
            if (!layout.SquaresOf(number, squares)) {
                continue;
            }
            Bitboard occupied = 0;
            for (std::size_t man = 0; man < layout.Of().men; ++man) {
                occupied |= BitOf(squares[man]);
            }
            const std::size_t squaresTaken = PopCount(occupied);
            if (squaresTaken != layout.Of().men) {
                continue;
            }
            const CEndingIndex::Place place = index.PlaceOf(squares);
            const std::uint8_t demand = demands_.At(place, sideToMove_);
            if (demand != CSyzygyDemands::Anything && (demand & CSyzygyDemands::Distance) != 0) {
                const int wdl = (demand & CSyzygyDemands::ClassMask) - 2;
                const int stored = Stored(codes_.At(place, sideToMove_), wdl);
                ++counts[ListOfClass(wdl)][stored];
            }
        }
        std::size_t classes = 0;
        for (std::size_t list = 0; list < maps.size(); ++list) {
            for (std::size_t value = 0; value < 256; ++value) {
                if (counts[list][value] != 0) {
                    maps[list].push_back(ToByte(value));
                }
            }
            std::stable_sort(
                maps[list].begin(), maps[list].end(),
                [&](std::uint8_t a, std::uint8_t b) { return counts[list][a] > counts[list][b]; });
            classes += maps[list].empty() ? 0 : 1;
        }
        if (classes < 2) {
            maps = {};
            return;
        }
        places_.assign(4, std::vector<std::uint8_t>(256));
        for (std::size_t list = 0; list < maps.size(); ++list) {
            for (std::size_t place = 0; place < maps[list].size(); ++place) {
                places_[list][maps[list][place]] = ToByte(place);
            }
        }
    }

private:
    /// Distances begin at 1, those that the fifty-move rule spoils at 101 and are held in moves.
    [[nodiscard]] int Stored(int code, int wdl) const noexcept {
        const int plies = std::max(1, DistanceToZeroing::PliesOf(code));
        const bool isSpoilt = wdl % 2 != 0;
        const int stored = plies - (isSpoilt ? DistanceToZeroing::Spoilt : 1);
        return inPlies_ && !isSpoilt ? stored : stored / 2;
    }

    const ZeroingCodes& codes_;
    const CSyzygyDemands& demands_;
    Colour sideToMove_;
    bool inPlies_;
    std::vector<std::vector<std::uint8_t>> places_;  // by list and stored distance
};

// ---- files

void AlignTo(ByteList& bytes, std::size_t alignment) {
    bytes.resize((bytes.size() + alignment - 1) / alignment * alignment);
}

std::uint64_t SumOf(std::span<const std::uint8_t> bytes) noexcept {
    // FNV-1a, eight bytes a step.
    constexpr std::uint64_t Start = 0xCBF29CE484222325;
    constexpr std::uint64_t Prime = 0x100000001B3;
    std::uint64_t sum = Start;
    std::uint64_t word = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        word |= std::uint64_t{bytes[at]} << (8 * (at % 8));
        if (at % 8 == 7 || at + 1 == bytes.size()) {
            sum = (sum ^ word) * Prime;
            sum ^= sum >> 29U;
            word = 0;
        }
    }
    return sum;
}

/// The streams, which follow the headers; then the file's sum.
void AppendStreams(ByteList& file, const std::vector<PairStream>& streams) {
    for (const PairStream& stream : streams) {
        Append(file, stream.indexTable);
    }
    for (const PairStream& stream : streams) {
        Append(file, stream.sizeTable);
    }
    for (const PairStream& stream : streams) {
        if (!stream.data.empty()) {
            AlignTo(file, 64);
            Append(file, stream.data);
        }
    }
    AlignTo(file, 64);
    const std::uint64_t sum = SumOf(file);
    file.insert(file.end(), SumMark.begin(), SumMark.end());
    AppendLittle(file, sum, 8);
}

ByteList FileStart(std::uint32_t magic, const TbShape& shape, bool split) {
    ByteList file;
    AppendLittle(file, magic, 4);
    file.push_back(ToByte(shape.men << 4U | (split ? 1U : 0U) | (shape.hasPawns ? 2U : 0U)));
    return file;
}

/// The orders and men of one file group, of one side or both.
void AppendOrders(ByteList& file, const TbShape& shape, const SyzygyOrder& first,
                  const SyzygyOrder* second) {
    const auto both = [&](unsigned low, unsigned high) {
        file.push_back(ToByte(low | (second != nullptr ? high << 4U : 0U)));
    };
    const SyzygyOrder& other = second != nullptr ? *second : first;
    both(first.order, other.order);
    if (shape.hasPawns && shape.pawnCount[1] != 0) {
        both(first.secondOrder, other.secondOrder);
    }
    for (std::size_t man = 0; man < shape.men; ++man) {
        both(first.pieceCodes[man], other.pieceCodes[man]);
    }
}

/// Where anything comes near the limit of the fifty-move rule, halves of plies would blur it.
bool NeedsPlies(const ZeroingCodes& codes) {
    constexpr int Near = 98;
    const auto isNear = [](DistanceToZeroing::Code code) {
        return DistanceToZeroing::PliesOf(code) > Near && code != 0;
    };
    const auto isNearFor = [&](Colour colour) {
        const auto* const all = codes.Slice(colour, 0);
        return std::any_of(all, all + codes.Places(), isNear);
    };
    return isNearFor(White) || isNearFor(Black);
}

/// The way of one ending from its values to the bytes of its two files.
class CSyzygyFileMaker {
public:
    CSyzygyFileMaker(const ZeroingCodes& codes, const CSyzygyDemands& demands, CWorkers& workers)
        : codes_(codes),
          demands_(demands),
          workers_(workers),
          ending_(codes.Of()),
          index_(codes.Index()),
          shape_(ShapeOfName(ending_.syzygyName)),
          files_(shape_.hasPawns ? 4 : 1),
          sides_(shape_.symmetric ? 1 : 2),
          inPlies_(NeedsPlies(codes)) {
        for (unsigned file = 0; file < files_; ++file) {
            for (std::size_t side = 0; side < sides_; ++side) {
                classes_.push_back({file, side == 0 ? White : Black, {}, {}, {}});
            }
        }
        distances_ = classes_;
    }

    /// Chooses the orders and compresses the values; before either file is made.
    void Compress(CProgress& progress) {
        const std::size_t steps = classes_.size() + distances_.size();
        progress.BeginPhase("compressing", 2 * codes_.Places());
        std::atomic<std::size_t> done{0};
        workers_.ForEach(steps, [&](std::size_t item, std::size_t thread) {
            if (item < classes_.size()) {
                CompressClasses(classes_[item]);
            } else {
                CompressDistances(distances_[item - classes_.size()]);
            }
            const std::size_t finished = done.fetch_add(1, std::memory_order_relaxed) + 1;
            if (thread == 0) {
                progress.Report(Share(finished, steps));
            }
        });
    }

    [[nodiscard]] ByteList WdlFile() {
        constexpr std::uint32_t Magic = 0x5D23E871;
        ByteList bytes = FileStart(Magic, shape_, sides_ == 2);
        for (unsigned file = 0; file < files_; ++file) {
            AppendOrders(bytes, shape_, classes_[file * sides_].order,
                         sides_ == 2 ? &classes_[file * sides_ + 1].order : nullptr);
        }
        AlignTo(bytes, 2);
        std::vector<PairStream> streams;
        for (Stream& stream : classes_) {
            Append(bytes, stream.pairs.header);
            streams.push_back(std::move(stream.pairs));
        }
        AppendStreams(bytes, streams);
        return bytes;
    }

    [[nodiscard]] ByteList DtzFile() {
        constexpr std::uint32_t Magic = 0xA50C66D7;
        const std::size_t side = SmallerSide();
        ByteList bytes = FileStart(Magic, shape_, false);
        for (unsigned file = 0; file < files_; ++file) {
            AppendOrders(bytes, shape_, distances_[file * sides_ + side].order, nullptr);
        }
        AlignTo(bytes, 2);
        std::vector<PairStream> streams;
        ByteList maps;
        for (unsigned file = 0; file < files_; ++file) {
            Stream& stream = distances_[file * sides_ + side];
            Append(bytes, stream.pairs.header);
            if ((stream.pairs.header[0] & MapFlag) != 0) {
                for (const std::vector<std::uint8_t>& list : stream.maps) {
                    maps.push_back(ToByte(list.size()));
                    Append(maps, list);
                }
            }
            streams.push_back(std::move(stream.pairs));
        }
        Append(bytes, maps);
        AlignTo(bytes, 2);
        AppendStreams(bytes, streams);
        return bytes;
    }

private:
    /// The classes or the distances of one side to move in one file group.
    struct Stream {
        unsigned file;
        Colour sideToMove;
        SyzygyOrder order;
        PairStream pairs;
        DistanceMaps maps;  // of distances only
    };

    /// The order in which the values change least.
    [[nodiscard]] SyzygyOrder ChooseOrder(const CSequence& sequence, unsigned file) const {
        const std::vector<SyzygyOrder> orders = SyzygyOrders(shape_);
        std::vector<std::size_t> changes(orders.size());
        workers_.ForEach(orders.size(), [&](std::size_t item, std::size_t) {
            const CSyzygyLayout layout(ending_, shape_, orders[item], file);
            changes[item] = sequence.Changes(layout, index_);
        });
        return orders[std::min_element(changes.begin(), changes.end()) - changes.begin()];
    }

    void CompressClasses(Stream& stream) {
        const CClassSequence sequence(demands_, stream.sideToMove);
        stream.order = ChooseOrder(sequence, stream.file);
        const CSyzygyLayout layout(ending_, shape_, stream.order, stream.file);
        const std::vector<std::uint8_t> values = sequence.Values(layout, index_, workers_);
        const bool isSingle = std::all_of(values.begin(), values.end(), [&](std::uint8_t value) {
            return value == values.back();
        });
        stream.pairs =
            isSingle ? SinglePairStream(values.back(), 0) : CompressPairs(values, 0, WdlBlockBits);
    }

    void CompressDistances(Stream& stream) {
        CDistanceSequence sequence(codes_, demands_, stream.sideToMove, inPlies_);
        stream.order = ChooseOrder(sequence, stream.file);
        const CSyzygyLayout layout(ending_, shape_, stream.order, stream.file);
        sequence.UseMaps(layout, index_, stream.maps);
        const bool isMapped = std::any_of(stream.maps.begin(), stream.maps.end(),
                                          [](const auto& list) { return !list.empty(); });
        const std::uint8_t flags = (stream.sideToMove == White ? 0 : SideFlag) |
                                   (isMapped ? MapFlag : 0) | (inPlies_ ? PliesFlags : 0);
        const std::vector<std::uint8_t> values = sequence.Values(layout, index_, workers_);
        const bool isZero = !isMapped && std::all_of(values.begin(), values.end(),
                                                     [](std::uint8_t v) { return v == 0; });
        stream.pairs =
            isZero ? SinglePairStream(0, flags) : CompressPairs(values, flags, DtzBlockBits);
    }

    /// A file of distances stores one side to move, the one that takes less room.
    [[nodiscard]] std::size_t SmallerSide() const {
        std::array<std::size_t, 2> bytes{};
        for (std::size_t place = 0; place < distances_.size(); ++place) {
            bytes[place % sides_] += distances_[place].pairs.Bytes();
        }
        return sides_ == 2 && bytes[1] < bytes[0] ? 1 : 0;
    }

    const ZeroingCodes& codes_;
    const CSyzygyDemands& demands_;
    CWorkers& workers_;
    const Ending& ending_;
    const CEndingIndex& index_;
    const TbShape shape_;
    const unsigned files_;
    const std::size_t sides_;
    const bool inPlies_;
    std::vector<Stream> classes_;  // group by group, side by side
    std::vector<Stream> distances_;
};

}  // namespace

CSyzygyDemands::CSyzygyDemands(const ZeroingCodes& codes, const SolvedEndings& solved,
                               CWorkers& workers, CProgress& progress)
    : demands_(codes.Of()) {
    const CEndingIndex& index = codes.Index();
    const CEndingExits<DistanceToZeroing> exits(solved, codes);
    progress.BeginPhase("captures", 2 * codes.Places());
    const std::size_t chunks = (index.SliceSize() + ChunkSize - 1) / ChunkSize;
    const std::size_t count = chunks * index.Slices();
    std::atomic<std::size_t> done{0};
    for (const Colour colour : {White, Black}) {
        demands_.Allocate(colour);
        workers.ForEach(count, [&](std::size_t item, std::size_t thread) {
            const std::size_t slice = item / chunks;
            const std::size_t first = item % chunks * ChunkSize;
            const std::size_t end = std::min(index.SliceSize(), first + ChunkSize);
            for (std::size_t at = first; at < end; ++at) {
                const EndingSquares squares = index.SquaresOf({slice, at});
                CEndingNode node(codes.Of(), squares, colour);
                const std::uint8_t demand =
                    node.IsLegal()
                        ? DemandOf(node, exits, codes.At(CEndingIndex::Place{slice, at}, colour))
                        : Anything;
                demands_.Slice(colour, slice)[at] = demand;
            }
            const std::size_t finished = done.fetch_add(1, std::memory_order_relaxed) + 1;
            if (thread == 0) {
                progress.Report(Share(finished, 2 * count));
            }
        });
    }
}

SyzygyFiles MakeSyzygyFiles(const ZeroingCodes& codes, const CSyzygyDemands& demands,
                            CWorkers& workers, CProgress& progress) {
    CSyzygyFileMaker maker(codes, demands, workers);
    maker.Compress(progress);
    return {maker.WdlFile(), maker.DtzFile()};
}

SyzygySum CheckSyzygySum(std::span<const std::uint8_t> file) noexcept {
    constexpr std::size_t SumBytes = 16;
    if (file.size() < SumBytes ||
        !std::equal(SumMark.begin(), SumMark.end(), file.end() - SumBytes)) {
        return SyzygySum::None;
    }
    std::uint64_t sum = 0;
    for (std::size_t byte = 0; byte < 8; ++byte) {
        sum |= std::uint64_t{file[file.size() - 8 + byte]} << (8 * byte);
    }
    return sum == SumOf(file.first(file.size() - SumBytes)) ? SyzygySum::Right : SyzygySum::Wrong;
}

}  // namespace brenquil
