// King and pawn against king, decided for every position: one bit says whether the pawn's side
// wins.
//
// Made once at start by retrograde analysis (well below a millisecond) and only read afterwards, so
// threads share it without locks. 24 KiB. It knows a white pawn on the files a to d; callers mirror
// all other pawns onto these.
#pragma once

#include "board/types.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace brenquil {

class CKpkBitbase {
public:
    /// Pawns on four files and six ranks, two sides to move, 64 squares for each king.
    static constexpr std::size_t BitCount = std::size_t{24} * 2 * 64 * 64;

    /// Analyses all positions.
    CKpkBitbase() noexcept;

    /// Does White win, with king on `strongKing` and pawn on `pawn` against a king on `weakKing`.
    /// @param pawn  on the files a to d; on the first or last rank the answer is false
    /// @param strongToMove  White is to move
    /// @return false for a draw and for a position that cannot be
    [[nodiscard]] bool IsWin(Square strongKing, Square weakKing, Square pawn,
                             bool strongToMove) const noexcept {
        assert(FileOf(pawn) <= 3);
        if (RankOf(pawn) < 1 || RankOf(pawn) > 6) {
            return false;
        }
        return (words_[WordIndex(weakKing, pawn, strongToMove)] >> strongKing & 1U) != 0;
    }

    /// For tests and measurements. Bit i is the position with, from the low end: strong king (6
    /// bits), weak king (6 bits), side (1 bit, set when the strong side is to move), pawn (5 bits,
    /// (6 - rank) * 4 + file).
    [[nodiscard]] bool BitAt(std::size_t index) const noexcept {
        assert(index < BitCount);
        return (words_[index / 64] >> (index % 64) & 1U) != 0;
    }

private:
    [[nodiscard]] static constexpr std::size_t WordIndex(Square weakKing, Square pawn,
                                                         bool strongToMove) noexcept {
        const int pawnIndex = (6 - RankOf(pawn)) * 4 + FileOf(pawn);
        return (pawnIndex * 2 + (strongToMove ? 1 : 0)) * 64 + weakKing;
    }

    void AnalysePawn(Square pawn) noexcept;
    [[nodiscard]] Bitboard PushWins(Square weakKing, Square pawn) const noexcept;

    /// One word per pawn, side and weak king: the set of strong king squares that win.
    std::array<std::uint64_t, BitCount / 64> words_{};
};

}  // namespace brenquil
