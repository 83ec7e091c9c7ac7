// Holds solved endings against the slow rules of chess.
//
// It is independent on purpose: a position's legality, its moves and what they lead to come from
// tests/support/slow_chess; of the solver it takes the answers only. An answer is right if it
// follows from the answers after all moves, as the counting begins with mates and nowhere else. A
// position in which a pawn may be taken in passing is judged by its own moves.
#pragma once

#include "solved_endings.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace brenquil::test {

struct SlowProof {
    std::uint64_t positions = 0;
    std::uint64_t inPassing = 0;  ///< positions after a move that could be taken back in passing
    std::uint64_t wrong = 0;
    std::string first;  ///< the first wrong position, as FEN
};

/// Looks at all positions of an ending, or at one of `oneOf` places.
[[nodiscard]] SlowProof ProveMates(CSolvedInMemory<DistanceToMate>& solved, const std::string& name,
                                   std::size_t oneOf);

/// The same for classes and distances to the next capture or pawn move, of up to four men: there
/// the fifty-move rule plays no part.
[[nodiscard]] SlowProof ProveZeroing(CSolvedInMemory<DistanceToZeroing>& solved,
                                     const std::string& name, std::size_t oneOf);

}  // namespace brenquil::test
