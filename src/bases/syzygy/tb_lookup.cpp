#include "bases/syzygy/tb_lookup.h"

#include "platform/bits.h"

#include <array>
#include <cassert>
#include <cstddef>

namespace brenquil {

namespace {

constexpr int MostWdlValue = 4;  ///< a win

/// Both by class + 2.
constexpr std::array<std::uint8_t, 5> WdlMapIndex = {1, 3, 0, 2, 0};
constexpr std::array<std::uint8_t, 5> PawnMapFlags = {DtzEntry::LossPliesFlag, 0, 0, 0,
                                                      DtzEntry::WinPliesFlag};

/// How the men of a position map to those of a table.
struct Frame {
    unsigned side;        ///< 0: the first side of the table is to move
    unsigned colourFlip;  ///< `TbBlackBit` when Black stands for the first side
    Square squareFlip;    ///< turns the board upside down with it (pawns)
};

[[nodiscard]] Frame FrameOf(const TbShape& shape, const TbPosition& position,
                            std::uint64_t key) noexcept {
    constexpr Frame Straight = {0, 0, 0};
    constexpr Frame Turned = {0, TbBlackBit, A8};
    if (shape.symmetric) {
        return position.turn ? Straight : Turned;
    }
    Frame frame = key != shape.key ? Turned : Straight;
    frame.side = (key != shape.key) == position.turn ? 1 : 0;
    return frame;
}

/// The men of the table's order, from man `i` on.
/// @return false if the position has other men
[[nodiscard]] bool ListSquares(const TbShape& shape, const TbLayout& layout,
                               const TbPosition& position, const Frame& frame, std::size_t i,
                               Square flip, TbSquares& squares) noexcept {
    while (i < shape.men) {
        Bitboard men = SquaresOfCode(position, layout.pieceCodes[i] ^ frame.colourFlip);
        if (men == 0) {
            return false;
        }
        for (; men != 0; men &= men - 1) {
            if (i == shape.men) {
                return false;
            }
            squares[i++] = LowestBit(men) ^ flip;
        }
    }
    return true;
}

/// The leading pawns, the deciding one in front. The order of codes is that of the first file
/// group; all groups agree in it.
/// @return the file group, `TbFileGroups` if the position has other men
[[nodiscard]] std::size_t ListLeadPawns(const TbShape& shape, const TbLayout& firstGroup,
                                        const TbPosition& position, const Frame& frame,
                                        TbSquares& squares) noexcept {
    Bitboard pawns = SquaresOfCode(position, firstGroup.pieceCodes[0] ^ frame.colourFlip);
    std::size_t count = 0;
    for (; pawns != 0 && count < shape.pawnCount[0]; pawns &= pawns - 1) {
        squares[count++] = LowestBit(pawns) ^ frame.squareFlip;
    }
    if (pawns != 0 || count != shape.pawnCount[0]) {
        return TbFileGroups;
    }
    return LeadPawnToFront(shape.pawnCount[0], squares);
}

/// Reads the value of a position whose leading pawns, if any, are listed. False if the side is not
/// stored or the position is not one of the table's.
[[nodiscard]] bool ReadValue(const TbShape& shape, const TbSide& side, const TbPosition& position,
                             const Frame& frame, TbSquares& squares, int& value) noexcept {
    const std::size_t listed = shape.hasPawns ? shape.pawnCount[0] : 0;
    const Square flip = shape.hasPawns ? frame.squareFlip : 0;
    if (side.stream == nullptr ||
        !ListSquares(shape, side.layout, position, frame, listed, flip, squares)) {
        return false;
    }
    const std::uint64_t index = shape.hasPawns ? EncodePawn(shape, side.layout, squares)
                                               : EncodePiece(shape, side.layout, squares);
    if (index >= side.layout.size) {
        return false;
    }
    value = DecompressValue(*side.stream, index);
    return true;
}

}  // namespace

bool LookUpWdl(const TbEntry& entry, const TbPosition& position, std::uint64_t key,
               int& wdl) noexcept {
    const TbShape& shape = entry.shape;
    const Frame frame = FrameOf(shape, position, key);
    TbSquares squares{};
    std::size_t group = 0;
    if (shape.hasPawns) {
        group = ListLeadPawns(shape, entry.groups[0][0].layout, position, frame, squares);
        if (group == TbFileGroups) {
            return false;
        }
    }
    const TbSide& side = entry.groups[group][frame.side];
    int value = 0;
    if (!ReadValue(shape, side, position, frame, squares, value) || value > MostWdlValue) {
        return false;  // a damaged block can hold any byte
    }
    wdl = value - 2;
    return true;
}

TbSuccess LookUpDtz(const DtzEntry& entry, const TbPosition& position, int wdl,
                    int& value) noexcept {
    assert(wdl != 0 && wdl >= -2 && wdl <= 2);
    const TbShape& shape = entry.shape;
    const Frame frame = FrameOf(shape, position, MaterialKey(position, false));
    TbSquares squares{};
    std::size_t number = 0;
    if (shape.hasPawns) {
        number = ListLeadPawns(shape, entry.groups[0].side.layout, position, frame, squares);
        if (number == TbFileGroups) {
            return TbSuccess::Failed;
        }
    }
    const DtzEntry::Group& group = entry.groups[number];
    if (group.side.stream == nullptr) {
        return TbSuccess::Failed;
    }
    // A table of equal sides without pawns is read from White's side, whatever its flag says.
    const bool holdsSide = (group.flags & DtzEntry::SideFlag) == frame.side;
    if (!holdsSide && !(shape.symmetric && !shape.hasPawns)) {
        return TbSuccess::OtherSide;
    }
    int stored = 0;
    if (!ReadValue(shape, group.side, position, frame, squares, stored)) {
        return TbSuccess::Failed;
    }
    const unsigned byClass = wdl + 2;
    if ((group.flags & DtzEntry::MapFlag) != 0) {
        const std::uint8_t* const list = entry.map + group.mapStarts[WdlMapIndex[byClass]];
        if (stored >= list[-1]) {
            return TbSuccess::Failed;  // a damaged block: the list is shorter
        }
        stored = list[stored];
    }
    const bool countsPlies = (group.flags & PawnMapFlags[byClass]) != 0 && wdl % 2 == 0;
    value = countsPlies ? stored : 2 * stored;
    return TbSuccess::Found;
}

}  // namespace brenquil
