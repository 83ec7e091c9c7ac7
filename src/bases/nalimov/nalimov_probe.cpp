#include "bases/nalimov/nalimov_probe.h"

#include "platform/bits.h"

#include <algorithm>
#include <cstddef>

namespace brenquil {

namespace {

constexpr int MostOfType = NalimovPieceList::SlotsOfType;
constexpr int FirstOfBlack = 5;  ///< in `NalimovCounts`

/// The men of a colour, which has one king, lowest squares first. False when the colour has more
/// men of a type than a table can have.
bool ListMen(NalimovPieceList& list, NalimovCounts& counts, const CPosition& position,
             Colour colour) noexcept {
    list.squares[NalimovPieceList::KingSlot] = LowestBit(position.PiecesOf(King, colour));
    auto* count = counts.begin() + (colour == White ? 0 : FirstOfBlack);
    for (const PieceType type : {Pawn, Knight, Bishop, Rook, Queen}) {
        *count = position.pieceCount[MakePiece(type, colour)];
        if (*count++ > MostOfType) {
            return false;
        }
        std::size_t slot = type * NalimovPieceList::SlotsOfType;
        for (Bitboard men = position.PiecesOf(type, colour); men != 0;) {
            list.squares[slot++] = PopLowestBit(men);
        }
    }
    return true;
}

/// Is there a file for at least one extent. A table of an earlier path has none.
bool HasFile(const NalimovTable& table, int side) noexcept {
    const auto& files = table.sides[table.IsSymmetric() ? 0 : side];
    return files != nullptr &&
           std::any_of(files->extents.begin(), files->extents.end(),
                       [](const NalimovExtent& extent) { return extent.usable.Load(); });
}

Score ScoreOf(int value) noexcept {
    if (value == 0) {
        return 0;
    }
    return value > 0 ? 2 * value - 33534 : 2 * value + 33532;
}

}  // namespace

bool NalimovProbe(Score& score, const CPosition& position, const CNalimovTables& tables,
                  CNalimovCache& cache) noexcept {
    const int menLoaded = tables.menLoaded;
    if (menLoaded == 0 || menLoaded < position.MenCount()) {
        return false;
    }
    if (position.pieceCount[WhiteKing] != 1 || position.pieceCount[BlackKing] != 1) {
        return false;
    }
    if (position.Occupied() == (position.PiecesOf(King, White) | position.PiecesOf(King, Black))) {
        score = 0;
        return true;
    }
    NalimovPieceList white;
    NalimovPieceList black;
    NalimovCounts counts{};
    if (!ListMen(white, counts, position, White) || !ListMen(black, counts, position, Black)) {
        return false;
    }
    const int found = tables.FindTable(counts);
    if (found == 0) {
        return false;
    }
    const bool invert = found < 0;  // Black has the men of the table's first side
    const int number = invert ? -found : found;
    const int side = (position.sideToMove == White) != invert ? 0 : 1;
    const NalimovTable& table = tables.Table(number);
    if (!HasFile(table, side)) {
        return false;
    }
    const Square epSquare =
        position.enPassant == SquareNone ? NalimovNoSquare : Square{position.enPassant};
    const std::uint64_t index = (*table.calculators[side])(
        invert ? black : white, invert ? white : black, epSquare, invert);
    if (index == CNalimovCalculator::NoIndex) {
        return false;
    }
    const int value = cache.ReadValue(number, side, index);
    if (value == CNalimovCache::NoValue) {
        return false;
    }
    score = ScoreOf(value);
    return true;
}

}  // namespace brenquil
