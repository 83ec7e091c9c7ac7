// Two small caches of one thread's evaluation: what pawns and kings are worth together, in front of
// the shared table, and the positional score of whole positions.
//
// Both hold nothing but what the board alone determines, so an entry stays right for ever and
// nothing clears them. They are sized for the second-level cache of one core.
#pragma once

#include "board/score.h"
#include "board/types.h"
#include "eval/term_pair.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace brenquil {

/// The sums of pawns, kings and shelter from White's view, by `CPosition::pawnKingKey`. Three
/// of four sums are found here; of the others the shared table is asked only for what was fetched
/// from its far memory ahead.
class CPawnCache {
public:
    struct Entry {
        std::uint64_t key = 0;  ///< 0 is also the key of no pawns and no kings, whose sums are 0
        TermPair terms;
    };

    [[nodiscard]] Entry& Slot(std::uint64_t key) noexcept { return entries_[key % Entries]; }

private:
    static constexpr std::size_t Entries = 4096;

    std::array<Entry, Entries> entries_{};
};

/// Positional scores from White's view, by the position's key less the side to move, so that a
/// position and the one after a null move share an entry.
///
/// A word holds the upper 48 bits of the key and 16 bits of score; the index is the lower bits of
/// the key, so 62 bits are compared. The en passant square and the castling rights that the key
/// knows as well do no harm: they only part what could be shared.
class CPositionalCache {
public:
    [[nodiscard]] MaybeScore Find(std::uint64_t key) const noexcept {
        const std::uint64_t word = words_[key % Entries];
        if ((word ^ key) >> ScoreBits != 0) {
            return NoScore;
        }
        return MaybeScore(static_cast<std::int16_t>(word));
    }

    void Store(std::uint64_t key, Score score) noexcept {
        if (score == static_cast<std::int16_t>(score)) [[likely]] {
            words_[key % Entries] = (key & ~ScoreMask) | static_cast<std::uint16_t>(score);
        }
    }

private:
    static constexpr std::size_t Entries = 16384;
    static constexpr unsigned ScoreBits = 16;
    static constexpr std::uint64_t ScoreMask = (std::uint64_t{1} << ScoreBits) - 1;

    /// An empty word is the entry of the empty board, whose score is 0.
    std::array<std::uint64_t, Entries> words_{};
};

}  // namespace brenquil
