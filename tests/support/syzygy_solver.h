// Solves chess endings of up to four men from the rules of chess alone.
//
//     CSyzygySolver solver;
//     const SolvedEnding& ending = solver.Solve("KRvKP");
//     ending.Class(ending.IndexOf(squares, White))
//
// For every placement of the men and both sides to move it works out win, draw or loss and the
// distance to the next capture, pawn move or mate, by going backwards from the positions where the
// result is plain. It shares nothing with the reader of tables except the attack tables of the
// board room, so that the two can be held against each other.
//
// No ending of four men needs more than a hundred plies between zeroing moves; the solver throws
// std::logic_error if it meets one that does.
//
// Cost: half a second for three men, half a minute and 130 MB for four. What has been solved is
// kept as one byte a position and found again by name.
#pragma once

#include "board/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace brenquil::testing_support {

/// A man of an ending.
struct EndingMan {
    PieceType type;
    Colour colour;

    friend bool operator==(const EndingMan&, const EndingMan&) = default;
};

/// The answers for one material.
class SolvedEnding {
public:
    static constexpr std::int8_t Illegal = -128;

    /// White is the side that the name gives first.
    explicit SolvedEnding(const std::string& materialName);

    /// @param squares  in the order of `men`
    [[nodiscard]] std::size_t IndexOf(const std::array<Square, 4>& squares, Colour toMove) const;

    /// The squares of an index; unused ones are 0.
    [[nodiscard]] std::array<Square, 4> SquaresOf(std::size_t index) const;

    [[nodiscard]] static Colour ToMove(std::size_t index) {
        return static_cast<Colour>(index & 1U);
    }

    /// -2, 0 or 2 in the view of the side to move, `Illegal` for what is no position.
    [[nodiscard]] int Class(std::size_t index) const { return classes[index]; }

    /// Plies to the next zeroing move of a win or loss, that move included; 1 for the side that is
    /// mated and for the one that mates.
    [[nodiscard]] int Distance(std::size_t index) const { return distances[index]; }

    [[nodiscard]] std::size_t Size() const { return std::size_t{2} << (6 * men.size()); }

    std::string name;
    std::vector<EndingMan> men;  ///< White's king, White's men, Black's king, Black's men
    std::vector<std::int8_t> classes;
    std::vector<std::uint8_t> distances;
};

class CSyzygySolver {
public:
    /// The answers for a material, such as "KRvKP".
    const SolvedEnding& Solve(const std::string& name);

    /// Class of any placement of up to four men, kings included, in the view of the side to move.
    /// `enPassant` is the square behind a pawn that has just moved two squares, or `SquareNone`.
    [[nodiscard]] int ClassOf(const std::vector<EndingMan>& men, const std::vector<Square>& squares,
                              Colour toMove, Square enPassant = SquareNone);

    /// Frees the distances of a solved ending, half of its memory. Its classes stay.
    void DropDistances(const std::string& name) {
        std::vector<std::uint8_t>().swap(solved_.at(name)->distances);
    }

private:
    std::map<std::string, std::unique_ptr<SolvedEnding>> solved_;
};

/// The name of a material with the stronger side first, as tables are named; whether the sides were
/// exchanged for it.
[[nodiscard]] std::string EndingName(const std::vector<EndingMan>& men, bool& exchanged);

}  // namespace brenquil::testing_support
