#include "board/attacks.h"

#include <bit>

namespace brenquil {

namespace {

/// The subset of `mask` whose k-th lowest bit is set exactly when bit k of `pattern` is.
Bitboard SpreadBits(std::size_t pattern, Bitboard mask) noexcept {
    Bitboard spread = 0;
    for (; mask != 0; mask &= mask - 1, pattern >>= 1U) {
        if ((pattern & 1U) != 0) {
            spread |= mask & (~mask + 1);
        }
    }
    return spread;
}

}  // namespace

template <std::size_t Size, bool Diagonal>
CSliderSlabs<Size, Diagonal>::CSliderSlabs() noexcept {
    const auto& masks = Diagonal ? BishopMasks : RookMasks;
    const auto& magics = Diagonal ? BishopMagics : RookMagics;
    constexpr unsigned ProductShift = Diagonal ? BishopShift : RookShift;
    for (Square square = A1; square <= H8; ++square) {
        const Bitboard mask = masks[square];
        const std::size_t patterns = std::size_t{1} << std::popcount(mask);
        for (std::size_t pattern = 0; pattern < patterns; ++pattern) {
            const Bitboard occupied = SpreadBits(pattern, mask);
            const std::size_t index = occupied * magics[square] >> ProductShift;
            slabs_[square][index] = WalkRays(square, occupied, Diagonal);
        }
    }
}

const CSliderSlabs<512, true> BishopAttacks;
const CSliderSlabs<4096, false> RookAttacks;

}  // namespace brenquil
