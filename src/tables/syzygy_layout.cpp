#include "tables/syzygy_layout.h"

#include "bases/syzygy/tb_index_tables.h"
#include "platform/bits.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

namespace brenquil {

namespace {

std::uint8_t CodeOf(EndingMan man) noexcept {
    return ToByte(int{TbPawn} + man.type + (man.colour == White ? 0U : TbBlackBit));
}

/// All men of the shape, like ones side by side; without the pawns.
std::vector<std::pair<std::uint8_t, std::uint8_t>> PieceGroups(const TbShape& shape) {
    std::vector<std::pair<std::uint8_t, std::uint8_t>> groups;
    for (std::uint8_t code = TbKnight; code < TbCodes; ++code) {
        if ((code & 7U) >= TbKnight && (code & 7U) <= TbKing && shape.counts[code] != 0) {
            groups.emplace_back(code, shape.counts[code]);
        }
    }
    return groups;
}

SyzygyOrder OrderOf(const std::vector<std::uint8_t>& codes, unsigned order, unsigned second) {
    SyzygyOrder made;
    std::copy(codes.begin(), codes.end(), made.pieceCodes.begin());
    made.order = order;
    made.secondOrder = second;
    return made;
}

using Leaders = std::vector<std::array<Square, 4>>;

/// Numbers all placements of a leading group with the reader's own rules. Which men they are plays
/// no part.
Leaders ListLeaders(const TbShape& shape, unsigned file) {
    const unsigned leaders = shape.hasPawns          ? shape.pawnCount[0]
                           : shape.encodingType == 0 ? 3U
                                                     : 2U;
    TbLayout alone;
    alone.groupFactors[0] = 1;
    alone.groupSizes.fill(1);
    alone.groupSizes[0] = ToByte(leaders);
    TbShape few = shape;
    few.men = ToByte(leaders);
    few.pawnCount[1] = 0;
    Leaders squaresOf(LeadingPlacements(shape, file), {-1, -1, -1, -1});
    for (std::size_t code = 0; code < std::size_t{1} << (6 * leaders); ++code) {
        TbSquares squares{};
        Bitboard occupied = 0;
        bool isPlaced = true;
        for (std::size_t man = 0; man < leaders; ++man) {
            squares[man] = code >> (6 * man) & 63U;
            isPlaced = isPlaced && (occupied & BitOf(squares[man])) == 0 &&
                       (!shape.hasPawns || (squares[man] >= A2 && squares[man] <= H7));
            occupied |= BitOf(squares[man]);
        }
        if (!isPlaced) {
            continue;
        }
        std::uint64_t number = 0;
        if (shape.hasPawns) {
            if (LeadPawnToFront(leaders, squares) != file) {
                continue;
            }
            number = EncodePawn(few, alone, squares);
        } else if (shape.encodingType != 0 && Distance[squares[0]][squares[1]] < 2) {
            continue;
        } else {
            number = EncodePiece(few, alone, squares);
        }
        if (number < squaresOf.size() && squaresOf[number][0] < 0) {
            for (std::size_t man = 0; man < leaders; ++man) {
                squaresOf[number][man] = squares[man];
            }
        }
    }
    return squaresOf;
}

/// The same, listed once for each kind of group.
class CLeaderLists {
public:
    const Leaders* Find(const TbShape& shape, unsigned file) {
        const unsigned kind =
            shape.hasPawns ? 100U + 10U * shape.pawnCount[0] + file : unsigned{shape.encodingType};
        const std::lock_guard guard(mutex_);
        const auto found = lists_.find(kind);
        if (found != lists_.end()) {
            return &found->second;
        }
        return &lists_.emplace(kind, ListLeaders(shape, file)).first->second;
    }

private:
    std::mutex mutex_;
    std::map<unsigned, Leaders> lists_;
};

const Leaders* LeadersOf(const TbShape& shape, unsigned file) {
    static CLeaderLists& lists = *std::make_unique<CLeaderLists>().release();
    return lists.Find(shape, file);
}

}  // namespace

std::vector<SyzygyOrder> SyzygyOrders(const TbShape& shape) {
    std::vector<SyzygyOrder> orders;
    auto groups = PieceGroups(shape);
    std::sort(groups.begin(), groups.end());
    const std::size_t singles = std::count_if(groups.begin(), groups.end(),
                                              [](const auto& group) { return group.second == 1; });
    do {
        std::vector<std::uint8_t> codes;
        std::size_t pawnGroups = 0;
        if (shape.hasPawns) {
            const bool blackLeads = shape.counts[TbPawn + TbBlackBit] != 0 &&
                                    (shape.counts[TbPawn] == 0 ||
                                     shape.counts[TbPawn + TbBlackBit] < shape.counts[TbPawn]);
            const std::uint8_t leader = ToByte(TbPawn + (blackLeads ? TbBlackBit : 0U));
            codes.assign(shape.pawnCount[0], leader);
            codes.insert(codes.end(), shape.pawnCount[1], ToByte(leader ^ TbBlackBit));
            pawnGroups = shape.pawnCount[1] != 0 ? 2 : 1;
        }
        for (const auto& [code, count] : groups) {
            codes.insert(codes.end(), count, code);
        }
        if (!shape.hasPawns) {
            // The leading group is three different men, or the two kings.
            const std::size_t leaders = shape.encodingType == 0 ? 3 : 2;
            const bool areSingle = std::all_of(groups.begin(), groups.begin() + leaders,
                                               [](const auto& group) { return group.second == 1; });
            const bool areKings = (codes[0] & 7U) == TbKing && (codes[1] & 7U) == TbKing;
            if (singles < leaders || !areSingle || (leaders == 2 && !areKings)) {
                continue;
            }
            const std::size_t others = groups.size() - leaders;
            for (unsigned order = 0; order <= others; ++order) {
                orders.push_back(OrderOf(codes, order, TbNoSecondOrder));
            }
            continue;
        }
        const std::size_t places = groups.size() + pawnGroups;
        for (unsigned order = 0; order < places; ++order) {
            if (pawnGroups == 1) {
                orders.push_back(OrderOf(codes, order, TbNoSecondOrder));
                continue;
            }
            for (unsigned second = 0; second < places; ++second) {
                if (second != order) {
                    orders.push_back(OrderOf(codes, order, second));
                }
            }
        }
    } while (std::next_permutation(groups.begin(), groups.end()));
    return orders;
}

CSyzygyLayout::CSyzygyLayout(const Ending& ending, const TbShape& shape, const SyzygyOrder& order,
                             unsigned file)
    : ending_(ending) {
    layout_.pieceCodes = order.pieceCodes;
    (void)LayOutGroups(shape, file, order.order, order.secondOrder, layout_);
    std::array<bool, EndingMostMen> used{};
    for (std::size_t place = 0; place < ending.men; ++place) {
        std::size_t man = 0;
        while (used[man] || CodeOf(ending.man[man]) != layout_.pieceCodes[place]) {
            ++man;
        }
        used[man] = true;
        manOf_[place] = ToByte(man);
    }
    leaders_ = layout_.groupSizes[0];
    ListGroups(shape, file);
    leading_ = LeadersOf(shape, file);
}

void CSyzygyLayout::ListGroups(const TbShape& shape, unsigned file) {
    leadingSize_ = LeadingPlacements(shape, file);
    for (std::size_t man = leaders_; man < ending_.men;) {
        const std::size_t count = layout_.groupSizes[man];
        const bool isPawn = (layout_.pieceCodes[man] & 7U) == TbPawn;
        const std::size_t free = isPawn ? 48 - leaders_ : 64 - man;
        groups_.push_back({man, count, layout_.groupFactors[man], BinomialTable[count - 1][free],
                           isPawn ? A2 : A1});
        man += count;
    }
}

bool CSyzygyLayout::SquaresOf(std::uint64_t number, EndingSquares& squares) const noexcept {
    const auto& leading = (*leading_)[number / layout_.groupFactors[0] % leadingSize_];
    if (leading[0] < 0) {
        return false;
    }
    std::array<Square, EndingMostMen> listed{};
    Bitboard occupied = 0;
    for (std::size_t man = 0; man < leaders_; ++man) {
        listed[man] = leading[man];
        occupied |= BitOf(listed[man]);
    }
    for (const Group& group : groups_) {
        std::uint64_t rest = number / group.factor % group.size;
        Bitboard taken = 0;
        int place = 63;
        for (std::size_t man = group.count; man-- > 0;) {
            // The highest place whose combinations do not pass the rest.
            while (BinomialTable[man][place] > rest) {
                --place;
            }
            rest -= BinomialTable[man][place];
            // Taken squares up to this one are not counted.
            Square square = group.lowest + place;
            for (Square next = square;; square = next) {
                const Bitboard upTo = AllSquares >> (63 - square);
                next = group.lowest + place + PopCount(occupied & upTo);
                if (next == square) {
                    break;
                }
            }
            listed[group.first + man] = square;
            taken |= BitOf(square);
            --place;
        }
        occupied |= taken;
    }
    for (std::size_t place = 0; place < ending_.men; ++place) {
        squares[manOf_[place]] = listed[place];
    }
    return true;
}

}  // namespace brenquil
