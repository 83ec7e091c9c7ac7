// A second, plain reading of games for the tests: moves in standard algebraic notation, games in
// PGN, and the key of the book format by its published rule. The rules of chess are the slow ones,
// so it shares nothing with the engine and the two can be held against each other.
#pragma once

#include "slow_chess.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil::test {

/// The 781 random numbers of the format, in its order.
using BookNumbers = std::array<std::uint64_t, 781>;

/// A game from the start position.
class CPlainGame {
public:
    /// Plays a move such as "Nbd7+", "exd8=Q#" or "O-O".
    /// @return its coordinates ("e7e8q", castling by the king's target), or an empty text if no
    ///         legal move or more than one fits
    [[nodiscard]] std::string Play(std::string_view san);

    /// The key of the present position by the format's rule: one number for each man, one for each
    /// castling right, one for the file of a pawn that has just made a double step if a pawn of the
    /// side to move stands beside it, and one if White is to move.
    [[nodiscard]] std::uint64_t Key(const BookNumbers& numbers) const;

private:
    [[nodiscard]] bool IsLegal(std::uint32_t move) const;

    SlowPosition position_ = SlowPosition::AtStart();
};

/// The moves of each game of a PGN text that begins from the normal start position, without
/// comments, variations, numbers and marks.
[[nodiscard]] std::vector<std::vector<std::string>> ReadPgn(std::string_view text);

}  // namespace brenquil::test
