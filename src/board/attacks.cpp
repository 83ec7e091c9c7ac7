#include "board/attacks.h"

#include "platform/bits.h"

namespace brenquil {

namespace {

/// The squares of a ray that leads upwards, to higher numbers, as far as the first occupied one.
constexpr Bitboard UpToFirst(Bitboard ray, Bitboard occupied) noexcept {
    const Bitboard blockers = ray & occupied;
    return ray & (blockers ^ (blockers - 1));
}

/// The same for a ray that leads downwards.
Bitboard DownToFirst(Bitboard ray, Bitboard occupied) noexcept {
    // Without a blocker a1 stands in, which ends no ray early.
    return ray & (AllSquares << HighestBit((ray & occupied) | BitOf(A1)));
}

/// The four rays of a slider, apart.
struct Rays {
    Bitboard up[2];
    Bitboard down[2];
};

Rays RaysOf(Square square, bool diagonal) noexcept {
    const Bitboard all = WalkRays(square, 0, diagonal);
    const Bitboard above = AllSquares << square;
    // On this side of the board lies one of the two rays upwards and one of those downwards: the
    // files to the left of a bishop, the file of a rook.
    Bitboard side = FileMasks[FileOf(square)];
    if (diagonal) {
        side = 0;
        for (int file = 0; file < FileOf(square); ++file) {
            side |= FileMasks[file];
        }
    }
    return {{all & above & side, all & above & ~side}, {all & ~above & side, all & ~above & ~side}};
}

Bitboard AttacksAlong(const Rays& rays, Bitboard occupied) noexcept {
    return UpToFirst(rays.up[0], occupied) | UpToFirst(rays.up[1], occupied) |
           DownToFirst(rays.down[0], occupied) | DownToFirst(rays.down[1], occupied);
}

}  // namespace

template <std::size_t Size, bool Diagonal>
CSliderSlabs<Size, Diagonal>::CSliderSlabs() noexcept {
    const auto& masks = Diagonal ? BishopMasks : RookMasks;
    const auto& magics = Diagonal ? BishopMagics : RookMagics;
    constexpr unsigned ProductShift = Diagonal ? BishopShift : RookShift;
    for (Square square = A1; square <= H8; ++square) {
        const Bitboard mask = masks[square];
        const Rays rays = RaysOf(square, Diagonal);
        // Subtracting the mask from a subset of it carries through the other bits to the next
        // subset, and from the whole mask to the empty one again.
        Bitboard occupied = 0;
        do {
            const std::size_t index = occupied * magics[square] >> ProductShift;
            slabs_[square][index] = AttacksAlong(rays, occupied);
            occupied = (occupied - mask) & mask;
        } while (occupied != 0);
    }
}

CBeyondTable::CBeyondTable() noexcept {
    for (Square from = A1; from <= H8; ++from) {
        for (Square to = A1; to <= H8; ++to) {
            for (Bitboard passed = Between[from][to]; passed != 0;) {
                squares_[from][PopLowestBit(passed)] |= BitOf(to);
            }
        }
    }
}

const CBeyondTable Beyond;
const CSliderSlabs<512, true> BishopAttacks;
const CSliderSlabs<4096, false> RookAttacks;

}  // namespace brenquil
