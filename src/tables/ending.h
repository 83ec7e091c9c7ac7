// Which endings there are: the men of each, its names in both families of tables, and what a
// capture or a promotion turns it into.
//
// An ending is a material of three to five men. Its number is that of the Nalimov signature, 1 to
// 145; the same order, fewer men first, puts every ending after those of fewer men. The first side
// of the name is White here; a material in which Black is the stronger one is the same ending with
// colours and ranks exchanged.
//
// Everything is built once, on first use, in some milliseconds, and read-only afterwards.
#pragma once

#include "board/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

inline constexpr std::size_t EndingMostMen = 5;
inline constexpr int EndingCount = 145;  ///< of three to five men; the numbers begin at 1

struct EndingMan {
    PieceType type;
    Colour colour;

    friend bool operator==(const EndingMan&, const EndingMan&) = default;
};

/// The squares of an ending's men, in its order; what follows its last man is unused.
using EndingSquares = std::array<Square, EndingMostMen>;

/// What an ending turns into when a man goes or is promoted, and where its men then stand.
struct EndingExit {
    int ending = 0;        ///< its number; 0 for the two bare kings
    bool flipped = false;  ///< the colours are exchanged, and the ranks with them
    std::array<std::uint8_t, EndingMostMen> from{};  ///< by man there: which man of here it was

    /// The squares of the men in the order of the other ending.
    [[nodiscard]] EndingSquares Map(const EndingSquares& squares) const noexcept {
        EndingSquares mapped{};
        const Square mask = flipped ? A8 : A1;
        for (std::size_t man = 0; man < EndingMostMen; ++man) {
            mapped[man] = squares[from[man]] ^ mask;
        }
        return mapped;
    }
};

struct Ending {
    static constexpr std::size_t NoMan = EndingMostMen;

    int number = 0;
    std::string name;          ///< "kqpkr", as Nalimov files are named
    std::string syzygyName;    ///< "KQPvKR"
    std::size_t men = 0;       ///< kings included
    std::size_t pieces = 0;    ///< men that are not pawns
    bool isSymmetric = false;  ///< both sides have the same men
    /// White's king, Black's king, the other pieces of both sides, the pawns of both sides; the
    /// strongest first, like men side by side.
    std::array<EndingMan, EndingMostMen> man{};

    [[nodiscard]] std::size_t Pawns() const noexcept { return men - pieces; }

    [[nodiscard]] bool HasPawnsOfBoth() const noexcept {
        return Pawns() > 1 && man[pieces].colour != man[men - 1].colour;
    }

    /// What is left when the man `captured` goes and the pawn `promoted` becomes a `type`; `NoMan`
    /// says that nothing is captured or promoted.
    [[nodiscard]] const EndingExit& Exit(std::size_t captured, std::size_t promoted,
                                         PieceType type) const noexcept {
        return exits[(captured * (EndingMostMen + 1) + promoted) * 5 + type];
    }

    /// The endings that it can turn into, by number, each once. Bare kings are none of them.
    std::vector<int> successors;

    /// What `Exit` tells, in the order that it looks up.
    std::vector<EndingExit> exits;
};

/// The type of a piece letter, in either case; nothing for another character.
[[nodiscard]] std::optional<PieceType> PieceTypeOf(char letter) noexcept;

/// The ending of a number from 1 to `EndingCount`.
[[nodiscard]] const Ending& EndingOf(int number);

/// The ending of these men, in any order, kings among them. Number 0 for bare kings.
/// @return nothing if there are too many men or not one king of each colour
[[nodiscard]] std::optional<EndingExit> FindEnding(std::span<const EndingMan> men);

/// The number of the ending with these men, by a name of either family, in any letter case ("kqkr",
/// "KQvKR"); either side and its men in any order. 0 if there is none.
[[nodiscard]] int EndingOfName(std::string_view name);

/// The position as FEN, without castling rights and en passant square.
[[nodiscard]] std::string FenOfEnding(const Ending& ending, const EndingSquares& squares,
                                      Colour sideToMove);

/// The numbers of `wanted` and of all endings that they can turn into, those without which others
/// cannot be made first.
[[nodiscard]] std::vector<int> WithSuccessors(const std::vector<int>& wanted);

}  // namespace brenquil
