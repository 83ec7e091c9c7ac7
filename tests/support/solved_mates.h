// Distances to mate of any position of up to five men, by the solver of the program that makes
// tables. (That solver is held against the slow rules: tests/support/slow_proof.)
#pragma once

#include "board/position.h"
#include "solved_endings.h"

#include <cstdint>
#include <vector>

namespace brenquil::test {

class CSolvedMates {
public:
    static constexpr int Draw = -1;

    /// Plies to mate, an even number when the side to move loses, or `Draw`. The position is legal;
    /// its ending is solved when it is first asked for.
    [[nodiscard]] int Plies(const CPosition& position);

    /// The contents of a plain file. Places that no legal position has hold the mark for "no
    /// answer".
    [[nodiscard]] std::vector<std::uint8_t> TableBytes(int table, int side);

private:
    CSolvedInMemory<DistanceToMate> solved_{1};
};

}  // namespace brenquil::test
