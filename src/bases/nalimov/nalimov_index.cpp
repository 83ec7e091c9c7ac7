#include "bases/nalimov/nalimov_index.h"

#include "platform/bits.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <utility>
#include <vector>

namespace brenquil {

namespace {

constexpr Square MirrorFiles = 7;
constexpr Square MirrorRanks = 56;
constexpr std::uint64_t TakerCodes = 14;
constexpr int PawnSquares = 48;
constexpr int FirstPawnSquare = 8;

/// The squares that an en passant capture occupies as far as pawn digits go: the pawn's square of
/// origin, the square it passed, its own and the taker's.
constexpr int EnPassantSquares = 4;

constexpr std::uint64_t Choose2(std::uint64_t n) noexcept {
    return n * (n - 1) / 2;
}

constexpr std::uint64_t Choose3(std::uint64_t n) noexcept {
    return n * (n - 1) * (n - 2) / 6;
}

/// In how many ways `count` equal men stand on `squares` squares.
constexpr std::uint64_t Choose(int squares, int count) noexcept {
    const std::uint64_t n = squares;
    return count == 1 ? n : count == 2 ? Choose2(n) : Choose3(n);
}

/// The number of a set of one to three different ordinals among all sets of that size.
std::uint64_t Combination(std::array<int, 3> ordinals, int count) noexcept {
    const auto at = [&ordinals](std::size_t index) { return ordinals[index]; };
    if (count == 1) {
        return at(0);
    }
    if (ordinals[0] > ordinals[1]) {
        std::swap(ordinals[0], ordinals[1]);
    }
    if (count == 2) {
        return at(0) + Choose2(at(1));
    }
    if (ordinals[1] > ordinals[2]) {
        std::swap(ordinals[1], ordinals[2]);
    }
    if (ordinals[0] > ordinals[1]) {
        std::swap(ordinals[0], ordinals[1]);
    }
    return at(0) + Choose2(at(1)) + Choose3(at(2));
}

int CountBelow(Bitboard set, Square square) noexcept {
    return PopCount(set & (BitOf(square) - 1));
}

Bitboard BitsOf(const NalimovPieceList& list, PieceType type, int count) noexcept {
    Bitboard bits = 0;
    for (int index = 0; index < count; ++index) {
        bits |= BitOf(list.MenOf(type)[index]);
    }
    return bits;
}

int Sum(const NalimovMenCounts& counts) noexcept {
    int sum = 0;
    for (const std::uint8_t count : counts) {
        sum += count;
    }
    return sum;
}

/// Exchanges file and rank.
Square ReflectInDiagonal(Square square) noexcept {
    return MakeSquare(RankOf(square), FileOf(square));
}

/// Brings the mover's king into the triangle a1-d1-d4 and, if that king is on the long diagonal,
/// the other king below it or onto it. With both on the diagonal the board could still be reflected
/// in it: such positions have two places in a file, and both are filled.
void FoldWithoutPawns(NalimovPieceList& mover, NalimovPieceList& resting) noexcept {
    const Square mask =
        (FileOf(mover.King()) > 3 ? MirrorFiles : 0) ^ (RankOf(mover.King()) > 3 ? MirrorRanks : 0);
    mover.Flip(mask);
    resting.Flip(mask);
    const int side = FileOf(mover.King()) - RankOf(mover.King());
    if (side > 0 || (side == 0 && FileOf(resting.King()) >= RankOf(resting.King()))) {
        return;
    }
    for (NalimovPieceList* const list : {&mover, &resting}) {
        for (Square& square : list->squares) {
            square = square == NalimovNoSquare ? square : ReflectInDiagonal(square);
        }
    }
}

/// The pawn that takes in passing, and its code.
struct Capture {
    Square taker = NalimovNoSquare;
    int code = 0;
};

/// Which pawn takes: the one whose capture goes towards the a-file is asked first.
Capture FindTaker(Bitboard pawns, Square epSquare, bool upwards) noexcept {
    const int file = FileOf(epSquare);
    const Square towardsA = upwards ? epSquare - 7 : epSquare + 9;
    const Square towardsH = upwards ? epSquare - 9 : epSquare + 7;
    if (file < 7 && (pawns & BitOf(towardsA)) != 0) {
        return {towardsA, FileOf(towardsA) - 1};
    }
    if (file > 0 && (pawns & BitOf(towardsH)) != 0) {
        return {towardsH, FileOf(towardsH) + 7};
    }
    return {};
}

/// The digit of the pawns in `set`: ordinals among the squares that `occupied` leaves.
std::uint64_t PawnDigit(Bitboard set, Bitboard occupied) noexcept {
    std::array<int, 3> ordinals{};
    int count = 0;
    while (set != 0) {
        const Square square = PopLowestBit(set);
        ordinals[count++] = square - FirstPawnSquare - CountBelow(occupied, square);
    }
    return Combination(ordinals, count);
}

}  // namespace

NalimovMaterial NalimovMaterialOf(std::string_view name) noexcept {
    constexpr std::string_view Letters = "pnbrq";
    NalimovMaterial material;
    const std::size_t secondKing = name.find('k', 1);
    for (std::size_t index = 1; index < name.size(); ++index) {
        const std::size_t type = Letters.find(name[index]);
        if (type != std::string_view::npos) {
            ++(index < secondKing ? material.first : material.second)[type];
        }
    }
    return material;
}

CNalimovCalculator::CNalimovCalculator(const NalimovSignature& signature, int side)
    : enumeration_(CNalimovEnumeration::Instance()), side_(side) {
    const NalimovMaterial material = NalimovMaterialOf(signature.name);
    hasPawns_ = material.first[Pawn] + material.second[Pawn] != 0;
    takesEnPassant_ = material.first[Pawn] != 0 && material.second[Pawn] != 0;
    if (side == 1 && hasPawns_ && (signature.flags & NalimovSymmetric) != 0) {
        exchanged_ = true;
        side_ = 0;
    }
    counts_[Mover] = side_ == 0 ? material.first : material.second;
    counts_[Resting] = side_ == 0 ? material.second : material.first;

    ChooseGroup();
    ChooseDigits();
    positions_ = group_.base->total * digits_.radix;
    if (takesEnPassant_) {
        ChooseEnPassantDigits();
        positions_ += enPassantGroup_.base->total * enPassantDigits_.radix;
    }
    positions_ -= signature.unreached[side];
}

/// The men of the mover; where it has only its king, the other side's pawns if there are any.
void CNalimovCalculator::ChooseGroup() {
    const auto build = [this](bool withPawns) {
        Group group;
        std::vector<NalimovKind> kinds;
        const auto add = [&](NalimovKind kind, PieceType type, Owner owner) {
            const std::uint8_t count = counts_[owner][type];
            if (count != 0) {
                group.men[group.parts++] = {kind, type, owner, count};
                kinds.insert(kinds.end(), count, kind);
            }
        };
        add(QueenKind, Queen, Mover);
        add(RookKind, Rook, Mover);
        add(BishopKind, Bishop, Mover);
        add(KnightKind, Knight, Mover);
        if (withPawns) {
            add(PawnKind, Pawn, Mover);
            if (kinds.empty()) {
                add(RestingPawnKind, Pawn, Resting);
            }
        }
        group.base = &enumeration_.BaseOf(hasPawns_, kinds);
        return group;
    };
    group_ = build(true);
    enPassantGroup_ = build(false);
    // Pawns are enumerated as moving up the board.
    const bool groupHasPawns = group_.parts != 0 && group_.men[group_.parts - 1].type == Pawn;
    frame_ = groupHasPawns && side_ == 1 ? MirrorRanks : 0;
}

/// Strongest first, pawns last, with two exceptions that the files have.
std::array<PieceType, 5> CNalimovCalculator::DigitOrder() const noexcept {
    std::array<PieceType, 5> order{Queen, Rook, Bishop, Knight, Pawn};
    const NalimovMenCounts& resting = counts_[Resting];
    if (Sum(counts_[Mover]) == 2 && Sum(resting) == 2 && resting[Pawn] == 1) {
        // A piece and a pawn against a group of two: the pawn first.
        std::rotate(order.begin(), order.end() - 1, order.end());
    } else if (Sum(resting) == 3 && !hasPawns_) {
        // A pair and a single man on a board without pawns: the single first.
        std::stable_partition(order.begin(), order.end(),
                              [&resting](PieceType type) { return resting[type] == 1; });
    }
    return order;
}

void CNalimovCalculator::SetWeights(Digits& digits, const std::array<std::uint64_t, 4>& radices,
                                    std::uint64_t lowest) noexcept {
    digits.radix = lowest;
    for (int index = digits.count - 1; index >= 0; --index) {
        const std::size_t place = index;
        digits.digits[place].weight = digits.radix;
        digits.radix *= radices[place];
    }
}

void CNalimovCalculator::ChooseDigits() {
    const NalimovMenCounts& resting = counts_[Resting];
    const bool pawnsAreInGroup = Sum(counts_[Mover]) == 0;
    const int moverPawns = counts_[Mover][Pawn];
    std::array<std::uint64_t, 4> radices{};
    int placed = 2 + Sum(counts_[Mover]) + resting[Pawn];  // for pieces: all pawns count
    for (const PieceType type : DigitOrder()) {
        const int count = resting[type];
        if (count == 0 || (type == Pawn && pawnsAreInGroup)) {
            continue;
        }
        const std::size_t place = digits_.count++;
        digits_.digits[place] = {type, count, 0};
        if (type == Pawn) {
            radices[place] = Choose(PawnSquares - moverPawns, count);
        } else {
            radices[place] = Choose(64 - placed, count);
            placed += count;
        }
    }
    SetWeights(digits_, radices, 1);
}

/// The group without its pawns, the resting pieces, the other resting pawns, the mover's other
/// pawns, and which pawn takes.
void CNalimovCalculator::ChooseEnPassantDigits() {
    const NalimovMenCounts& resting = counts_[Resting];
    const int moverOthers = counts_[Mover][Pawn] - 1;
    const int restingOthers = resting[Pawn] - 1;
    std::array<std::uint64_t, 4> radices{};
    const auto add = [this, &radices](PieceType type, int count, std::uint64_t radix) {
        const std::size_t place = enPassantDigits_.count++;
        enPassantDigits_.digits[place] = {type, count, 0};
        radices[place] = radix;
    };
    int placed = 2 + EnPassantSquares + Sum(counts_[Mover]) - 1 + restingOthers;
    for (const PieceType type : {Queen, Rook, Bishop, Knight}) {
        if (resting[type] != 0) {
            add(type, resting[type], Choose(64 - placed, resting[type]));
            placed += resting[type];
        }
    }
    const int free = PawnSquares - EnPassantSquares;
    if (restingOthers != 0) {
        add(Pawn, restingOthers, Choose(free - moverOthers, restingOthers));
    }
    // The mover's other pawns have the last digit, and a weight of their own only by the code's.
    const std::uint64_t lowest =
        TakerCodes * (moverOthers != 0 ? Choose(free, moverOthers) : std::uint64_t{1});
    SetWeights(enPassantDigits_, radices, lowest);
}

std::uint64_t CNalimovCalculator::operator()(const NalimovPieceList& first,
                                             const NalimovPieceList& second, Square epSquare,
                                             bool invert) const noexcept {
    assert((epSquare >= A1 && epSquare <= H8) || epSquare == NalimovNoSquare);
    const bool firstMoves = side_ == 0 && !exchanged_;
    Lists lists{firstMoves ? first : second, firstMoves ? second : first};
    if (lists[Mover].King() == NalimovNoSquare || lists[Resting].King() == NalimovNoSquare) {
        return NoIndex;
    }
    if (!hasPawns_) {
        FoldWithoutPawns(lists[Mover], lists[Resting]);
        return OrdinaryPart(lists);
    }
    const Square mask = (FileOf(lists[Mover].King()) > 3 ? MirrorFiles : 0) ^
                        (invert != exchanged_ ? MirrorRanks : 0);
    lists[Mover].Flip(mask);
    lists[Resting].Flip(mask);
    if (takesEnPassant_ && epSquare != NalimovNoSquare) {
        return EnPassantPart(lists, epSquare ^ mask);
    }
    return OrdinaryPart(lists);
}

/// The placement of kings and group among all placements; `NoIndex` if it is not enumerated.
std::uint64_t CNalimovCalculator::GroupValue(const Group& group,
                                             const Lists& lists) const noexcept {
    const Square k1 = lists[Mover].King() ^ frame_;
    const Square k2 = lists[Resting].King() ^ frame_;
    const std::size_t pair =
        hasPawns_ ? enumeration_.pawnKingPair[k1][k2] : enumeration_.freeKingPair[k1][k2];
    if (pair == CNalimovEnumeration::NoPair) {
        return NoIndex;
    }
    std::uint64_t value = 0;
    for (int part = 0; part < group.parts; ++part) {
        const GroupMen& men = group.men[part];
        const auto& ordinalOf = enumeration_.squareEnum[men.kind][k2];
        const bool ownKingCounts = ordinalOf[k1] != CNalimovEnumeration::NotAllowed;
        const Square* const squares = lists[men.owner].MenOf(men.type);
        std::array<int, 3> ordinals{};
        for (int index = 0; index < men.count; ++index) {
            const Square square = squares[index] ^ frame_;
            const int ordinal = ordinalOf[square];
            if (ordinal == CNalimovEnumeration::NotAllowed) {
                return NoIndex;
            }
            ordinals[index] = ordinal - (ownKingCounts && k1 < square ? 1 : 0);
        }
        const int rest = enumeration_.Rest(k1, k2, men.kind);
        value = value * Choose(rest, men.count) + Combination(ordinals, men.count);
    }
    return group.base->entry[pair] + value;
}

/// The digits of the resting pieces. `placed` holds every man and square that comes before them or
/// is a pawn; equal men do not count for each other.
std::uint64_t CNalimovCalculator::PieceDigits(const Digits& digits, const Lists& lists,
                                              Bitboard placed) const noexcept {
    std::uint64_t sum = 0;
    for (int place = 0; place < digits.count; ++place) {
        const Digit& digit = digits.digits[place];
        if (digit.type == Pawn) {
            continue;
        }
        const Square* const squares = lists[Resting].MenOf(digit.type);
        std::array<int, 3> ordinals{};
        for (int index = 0; index < digit.count; ++index) {
            ordinals[index] = squares[index] - CountBelow(placed, squares[index]);
        }
        placed |= BitsOf(lists[Resting], digit.type, digit.count);
        sum += Combination(ordinals, digit.count) * digit.weight;
    }
    return sum;
}

std::uint64_t CNalimovCalculator::OrdinaryPart(const Lists& lists) const noexcept {
    const std::uint64_t group = GroupValue(group_, lists);
    if (group == NoIndex) {
        return NoIndex;
    }
    const Bitboard moverPawns = BitsOf(lists[Mover], Pawn, counts_[Mover][Pawn]);
    const Bitboard restingPawns = BitsOf(lists[Resting], Pawn, counts_[Resting][Pawn]);
    Bitboard placed =
        BitOf(lists[Mover].King()) | BitOf(lists[Resting].King()) | moverPawns | restingPawns;
    for (const PieceType type : {Knight, Bishop, Rook, Queen}) {
        placed |= BitsOf(lists[Mover], type, counts_[Mover][type]);
    }
    std::uint64_t index = group * digits_.radix + PieceDigits(digits_, lists, placed);
    for (int place = 0; place < digits_.count; ++place) {
        const Digit& digit = digits_.digits[place];
        if (digit.type == Pawn) {
            index += PawnDigit(restingPawns, moverPawns) * digit.weight;
        }
    }
    return index < positions_ ? index : NoIndex;
}

std::uint64_t CNalimovCalculator::EnPassantPart(const Lists& lists,
                                                Square epSquare) const noexcept {
    const bool upwards = side_ == 0;
    const int forward = upwards ? 8 : -8;
    if (RankOf(epSquare) != (upwards ? 5 : 2)) {
        return NoIndex;
    }
    Bitboard moverPawns = BitsOf(lists[Mover], Pawn, counts_[Mover][Pawn]);
    Bitboard restingPawns = BitsOf(lists[Resting], Pawn, counts_[Resting][Pawn]);
    const Capture capture = FindTaker(moverPawns, epSquare, upwards);
    const Bitboard victim = BitOf(epSquare - forward);
    if (capture.taker == NalimovNoSquare || (restingPawns & victim) == 0) {
        return NoIndex;
    }
    const std::uint64_t group = GroupValue(enPassantGroup_, lists);
    if (group == NoIndex) {
        return NoIndex;
    }
    const Bitboard taken =
        BitOf(epSquare) | victim | BitOf(epSquare + forward) | BitOf(capture.taker);
    moverPawns &= ~taken;
    restingPawns &= ~taken;
    Bitboard placed = BitOf(lists[Mover].King()) | BitOf(lists[Resting].King()) | taken |
                      moverPawns | restingPawns;
    for (const PieceType type : {Knight, Bishop, Rook, Queen}) {
        placed |= BitsOf(lists[Mover], type, counts_[Mover][type]);
    }
    std::uint64_t index =
        group * enPassantDigits_.radix + PieceDigits(enPassantDigits_, lists, placed);
    for (int place = 0; place < enPassantDigits_.count; ++place) {
        const Digit& digit = enPassantDigits_.digits[place];
        if (digit.type == Pawn) {
            index += PawnDigit(restingPawns, taken | moverPawns) * digit.weight;
        }
    }
    if (moverPawns != 0) {
        index += PawnDigit(moverPawns, taken) * TakerCodes;
    }
    index += capture.code + group_.base->total * digits_.radix;
    return index < positions_ ? index : NoIndex;
}

namespace {

/// Nobody deletes the object: a search may be looking at it while the program ends.
const std::vector<CNalimovCalculator>& MakeCalculators() {
    auto all = std::make_unique<std::vector<CNalimovCalculator>>();
    all->reserve(NalimovSignatures.size() * 2);
    for (const NalimovSignature& signature : NalimovSignatures) {
        all->emplace_back(signature, 0);
        all->emplace_back(signature, 1);
    }
    return *all.release();
}

}  // namespace

const CNalimovCalculator& NalimovCalculator(int table, int side) {
    assert(table >= 0 && table < std::ssize(NalimovSignatures));
    assert(side == 0 || side == 1);
    static const std::vector<CNalimovCalculator>& calculators = MakeCalculators();
    return calculators[table * 2 + side];
}

}  // namespace brenquil
