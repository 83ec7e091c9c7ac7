#include "board/attacks.h"

#include "platform/bits.h"
#include "platform/memory.h"

#include <array>
#include <cstddef>
#include <cstdint>

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

/// Two rays of a slider, one that leads upwards and one that leads downwards.
struct RayPair {
    Bitboard up;
    Bitboard down;
};

/// The four rays of a slider. In the first pair are those on one side of the board: the two to the
/// left of a bishop, the two on the file of a rook.
std::array<RayPair, 2> RaysOf(Square square, bool diagonal) noexcept {
    const Bitboard all = WalkRays(square, 0, diagonal);
    const Bitboard above = AllSquares << square;
    Bitboard side = FileMasks[FileOf(square)];
    if (diagonal) {
        side = 0;
        for (int file = 0; file < FileOf(square); ++file) {
            side |= FileMasks[file];
        }
    }
    return {
        {{all & side & above, all & side & ~above}, {all & ~side & above, all & ~side & ~above}}};
}

/// What the men on two rays contribute to a lookup: a summand of the product of which the index is
/// the upper part, and the squares that are attacked there.
struct Contribution {
    std::uint64_t product;
    Bitboard attacks;
};

/// The contributions of every set of men on two rays.
class CContributions {
public:
    CContributions(const RayPair& rays, Bitboard mask, std::uint64_t magic) noexcept {
        mask &= rays.up | rays.down;
        // Subtracting the mask from a subset of it carries through the other bits to the next
        // subset, and from the whole mask to the empty one again.
        Bitboard occupied = 0;
        do {
            entries_[count_++] = {occupied * magic,
                                  UpToFirst(rays.up, occupied) | DownToFirst(rays.down, occupied)};
            occupied = (occupied - mask) & mask;
        } while (occupied != 0);
    }

    [[nodiscard]] const Contribution* begin() const noexcept { return entries_.data(); }

    [[nodiscard]] const Contribution* end() const noexcept { return entries_.data() + count_; }

private:
    /// Six relevant squares at most: those of a file or a rank between its ends.
    std::array<Contribution, 64> entries_;
    std::size_t count_ = 0;
};

}  // namespace

template <std::size_t Size, bool Diagonal>
CSliderSlabs<Size, Diagonal>::CSliderSlabs() noexcept {
    const auto& masks = Diagonal ? BishopMasks : RookMasks;
    const auto& magics = Diagonal ? BishopMagics : RookMagics;
    constexpr unsigned ProductShift = Diagonal ? BishopShift : RookShift;
    PreferHugePages(&slabs_, sizeof(slabs_));
    for (Square square = A1; square <= H8; ++square) {
        const std::array<RayPair, 2> rays = RaysOf(square, Diagonal);
        const CContributions first(rays[0], masks[square], magics[square]);
        const CContributions second(rays[1], masks[square], magics[square]);
        // No square lies on both, so the product of all men is the sum of the two.
        for (const Contribution& one : first) {
            for (const Contribution& other : second) {
                slabs_[square][(one.product + other.product) >> ProductShift] =
                    one.attacks | other.attacks;
            }
        }
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

/// One huge page, where the system has them: the program starts sooner for one fault of a page
/// instead of 512, and a search does without most translations of addresses.
alignas(HugePageAlignment) const CSliderSlabs<4096, false> RookAttacks;

}  // namespace brenquil
