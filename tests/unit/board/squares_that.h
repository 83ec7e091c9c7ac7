// Sets of squares from a question about two squares, for tests of tables.
#pragma once

#include "board/types.h"

namespace brenquil {

/// The squares for which the answer to a question about two squares, given in files and ranks, is
/// yes.
template <class Question>
Bitboard SquaresThat(int square, Question question) {
    Bitboard set = 0;
    for (int other = 0; other < 64; ++other) {
        if (question(other % 8 - square % 8, other / 8 - square / 8)) {
            set |= std::uint64_t{1} << other;
        }
    }
    return set;
}

}  // namespace brenquil
