// The answers of small endings for every placement of the men, by the solver of the program that
// makes tables, in a form that is easy to walk over.
//
//     CSyzygySolver solver;
//     const SolvedEnding& ending = solver.Solve("KRvKP");
//     ending.Class(ending.IndexOf(squares, White))
//
// (That solver is held against the slow rules: tests/support/slow_proof.) No ending of four men
// needs more than a hundred plies between zeroing moves, so classes are wins, draws and losses.
//
// Cost: half a second for three men, some seconds and 70 MB for four. What has been solved is kept
// and found again by name.
#pragma once

#include "solved_endings.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace brenquil::testing_support {

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

    /// -2, 0 or 2 in the view of the side to move, `Illegal` for what is not a position.
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

private:
    test::CSolvedInMemory<DistanceToZeroing> solver_{1};
    std::map<std::string, std::unique_ptr<SolvedEnding>> solved_;
};

}  // namespace brenquil::testing_support
