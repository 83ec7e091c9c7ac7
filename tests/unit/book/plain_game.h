// A second, plain reading of the game for the tests: a board of 64 letters, moves in standard
// algebraic notation, games in PGN, and the key of the book format by its published rule. It shares
// nothing with the engine, so that the two can be held against each other.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil::test {

/// The 781 random numbers of the format, in its order.
using BookNumbers = std::array<std::uint64_t, 781>;

/// A board with the letters of a FEN, '.' for an empty square; square 0 is a1, 63 is h8.
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
    struct Step {
        int from;
        int to;
        char promotion;  ///< the new man's letter for the side to move; 0 for none
    };

    [[nodiscard]] bool IsOwn(int square) const;
    [[nodiscard]] bool IsAttacked(int square, bool byWhite) const;
    [[nodiscard]] bool Reaches(int from, int to) const;
    [[nodiscard]] bool LeavesKingSafe(const Step& step) const;
    [[nodiscard]] std::string PlayCastling(bool kingSide);
    void Make(const Step& step);

    std::array<char, 64> board_ = StartBoard();
    bool whiteToMove_ = true;
    std::array<bool, 4> rights_ = {true, true, true, true};  ///< K, Q, k, q
    int doubleStep_ = -1;  ///< the square of a pawn that has just made a double step

    static std::array<char, 64> StartBoard();
};

/// The moves of each game of a PGN text that begins from the normal start position, without
/// comments, variations, numbers and marks.
[[nodiscard]] std::vector<std::vector<std::string>> ReadPgn(std::string_view text);

}  // namespace brenquil::test
