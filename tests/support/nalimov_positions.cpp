#include "nalimov_positions.h"

#include "board/attacks.h"

#include <algorithm>
#include <array>

namespace brenquil::test {

int TableNumber(std::string_view name) {
    const auto found =
        std::find_if(NalimovSignatures.begin(), NalimovSignatures.end(),
                     [name](const NalimovSignature& row) { return row.name == name; });
    return found == NalimovSignatures.end() ? 0
                                            : static_cast<int>(found - NalimovSignatures.begin());
}

CTableEnumerator::CTableEnumerator(int table, int side)
    : material_(NalimovMaterialOf(NalimovSignatures[static_cast<std::size_t>(table)].name)),
      side_(side) {
    for (const bool ofFirst : {true, false}) {
        const NalimovMenCounts& counts = ofFirst ? material_.first : material_.second;
        for (int type = Pawn; type <= Queen; ++type) {
            for (int man = 0; man < counts[static_cast<std::size_t>(type)]; ++man) {
                men_.push_back({static_cast<PieceType>(type), ofFirst, man});
            }
        }
    }
    hasPawns_ = material_.first[Pawn] + material_.second[Pawn] != 0;
    takesEnPassant_ = material_.first[Pawn] != 0 && material_.second[Pawn] != 0;
}

void CTableEnumerator::Visit(const Visitor& visit) {
    for (Square mover = A1; mover <= H8; ++mover) {
        if (FileOf(mover) > 3 || (!hasPawns_ && RankOf(mover) > FileOf(mover))) {
            continue;
        }
        for (Square other = A1; other <= H8; ++other) {
            const bool needsLower = !hasPawns_ && FileOf(mover) == RankOf(mover);
            if (Distance[mover][other] < 2 || (needsLower && FileOf(other) < RankOf(other))) {
                continue;
            }
            VisitKings(mover, other, visit);
        }
    }
}

void CTableEnumerator::VisitKings(Square mover, Square other, const Visitor& visit) {
    position_ = TablePosition();
    Mover().squares[NalimovPieceList::KingSlot] = mover;
    Resting().squares[NalimovPieceList::KingSlot] = other;
    Place(0, BitOf(mover) | BitOf(other), visit);
}

void CTableEnumerator::Place(std::size_t index, Bitboard occupied, const Visitor& visit) {
    if (index == men_.size()) {
        if (!OtherKingIsAttacked(occupied)) {
            visit(position_);
            VisitEnPassant(occupied, visit);
        }
        return;
    }
    const Man man = men_[index];
    NalimovPieceList& list = man.ofFirst ? position_.first : position_.second;
    const auto slot =
        man.type * NalimovPieceList::SlotsOfType + static_cast<std::size_t>(man.ordinal);
    Square square = man.type == Pawn ? A2 : A1;
    const Square last = man.type == Pawn ? H7 : H8;
    if (man.ordinal > 0) {
        square = list.squares[slot - 1] + 1;  // equal men in ascending order
    }
    for (; square <= last; ++square) {
        if ((occupied & BitOf(square)) == 0) {
            list.squares[slot] = square;
            Place(index + 1, occupied | BitOf(square), visit);
        }
    }
    list.squares[slot] = NalimovNoSquare;
}

bool CTableEnumerator::OtherKingIsAttacked(Bitboard occupied) {
    const NalimovPieceList& mover = Mover();
    const Square king = Resting().King();
    const Colour colour = side_ == 0 ? White : Black;
    const std::array<Bitboard, 5> from = {
        PawnAttacks[~colour][king], KnightAttacks[king], BishopAttacksFrom(king, occupied),
        RookAttacksFrom(king, occupied), QueenAttacksFrom(king, occupied)};
    const NalimovMenCounts& counts = side_ == 0 ? material_.first : material_.second;
    for (int type = Pawn; type <= Queen; ++type) {
        const auto place = static_cast<std::size_t>(type);
        for (int man = 0; man < counts[place]; ++man) {
            if ((from[place] & BitOf(mover.MenOf(static_cast<PieceType>(type))[man])) != 0) {
                return true;
            }
        }
    }
    return false;
}

/// The same men once more for each pawn that may just have made a double step.
void CTableEnumerator::VisitEnPassant(Bitboard occupied, const Visitor& visit) {
    if (!takesEnPassant_) {
        return;
    }
    const int forward = side_ == 0 ? 8 : -8;
    Bitboard takers = 0;
    for (int man = 0; man < (side_ == 0 ? material_.first : material_.second)[Pawn]; ++man) {
        takers |= BitOf(Mover().MenOf(Pawn)[man]);
    }
    for (int man = 0; man < (side_ == 0 ? material_.second : material_.first)[Pawn]; ++man) {
        const Square victim = Resting().MenOf(Pawn)[man];
        const Square passed = victim + forward;
        if (RankOf(victim) == (side_ == 0 ? 4 : 3) && (occupied & BitOf(passed)) == 0 &&
            (occupied & BitOf(passed + forward)) == 0 &&
            (PawnAttacks[side_ == 0 ? Black : White][passed] & takers) != 0) {
            position_.epSquare = passed;
            visit(position_);
            position_.epSquare = NalimovNoSquare;
        }
    }
}

std::uint64_t LargestLegalIndex(int table, int side) {
    const CNalimovCalculator& calculator = NalimovCalculator(table, side);
    CTableEnumerator enumerator(table, side);
    std::uint64_t largest = 0;
    const auto look = [&](const TablePosition& position) {
        const std::uint64_t index =
            calculator(position.first, position.second, position.epSquare, false);
        if (index != CNalimovCalculator::NoIndex && index > largest) {
            largest = index;
        }
    };
    if (enumerator.HasPawns()) {
        enumerator.VisitKings(D8, H8, look);
        enumerator.VisitKings(D1, H1, look);
    } else {
        enumerator.VisitKings(D4, H8, look);
    }
    return largest;
}

TablePosition Mapped(const TablePosition& position, const std::function<Square(Square)>& map) {
    TablePosition image = position;
    for (NalimovPieceList* const list : {&image.first, &image.second}) {
        for (Square& square : list->squares) {
            square = square == NalimovNoSquare ? square : map(square);
        }
    }
    if (image.epSquare != NalimovNoSquare) {
        image.epSquare = map(image.epSquare);
    }
    return image;
}

IndexProof ProveIndices(int table, int side, std::uint64_t stride) {
    const CNalimovCalculator& calculator = NalimovCalculator(table, side);
    CTableEnumerator enumerator(table, side);
    std::vector<std::uint64_t> seen(calculator.Positions() / 64 + 1);
    IndexProof proof;
    const auto indexOf = [&calculator](const TablePosition& position, bool invert) {
        return calculator(position.first, position.second, position.epSquare, invert);
    };
    enumerator.Visit([&](const TablePosition& position) {
        const std::uint64_t index = indexOf(position, false);
        const std::uint64_t count = proof.positions++;
        if (index >= calculator.Positions()) {
            ++proof.outside;
            return;
        }
        proof.largest = index > proof.largest ? index : proof.largest;
        std::uint64_t& word = seen[index / 64];
        const std::uint64_t bit = std::uint64_t{1} << (index % 64);
        proof.shared += (word & bit) != 0 ? 1 : 0;
        word |= bit;
        if (count % stride != 0) {
            return;
        }
        bool isSplit = false;
        if (enumerator.HasPawns()) {
            isSplit = indexOf(Mapped(position, [](Square s) { return s ^ 7; }), false) != index ||
                      indexOf(Mapped(position, [](Square s) { return s ^ 56; }), true) != index;
        } else {
            for (int image = 1; image < 8; ++image) {
                const auto map = [image](Square s) {
                    const Square turned = (image & 4) != 0 ? MakeSquare(RankOf(s), FileOf(s)) : s;
                    return turned ^ ((image & 1) != 0 ? 7 : 0) ^ ((image & 2) != 0 ? 56 : 0);
                };
                isSplit |= indexOf(Mapped(position, map), false) != index;
            }
        }
        const auto isOnDiagonal = [](Square s) { return FileOf(s) == RankOf(s); };
        if (isSplit && !enumerator.HasPawns() && isOnDiagonal(position.first.King()) &&
            isOnDiagonal(position.second.King())) {
            ++proof.onDiagonal;
        } else {
            proof.split += isSplit ? 1 : 0;
        }
    });
    return proof;
}

}  // namespace brenquil::test
