// What one `go` asks for. The fields carry the names of the command's tokens.
#pragma once

#include "board/move_list.h"

#include <cstdint>

namespace brenquil {

/// The deepest iteration of any thread, in plies.
inline constexpr int DeepestIteration = 254;

/// A clock that is not given. Clocks are read as unsigned, so this is also the largest value.
inline constexpr std::int32_t ClockNotGiven = -1;

/// Times are milliseconds.
struct SearchLimits {
    bool ponder = false;    ///< keeps the move back until `stop` or the hard time limit
    bool infinite = false;  ///< runs until `stop`
    std::int32_t wtime = ClockNotGiven;
    std::int32_t btime = ClockNotGiven;
    std::int32_t winc = 0;
    std::int32_t binc = 0;
    std::int32_t movestogo = 40;  ///< moves to the next time control
    std::int32_t depth = 0;       ///< last iteration in plies; 0: no limit
    std::int32_t nodes = 0;       ///< of all threads together; 0: no limit
    std::int32_t mate = 0;        ///< used as a depth in plies; 0: no limit
    std::int32_t movetime = ClockNotGiven;
    MoveList searchmoves;  ///< not empty: only these root moves; entries may be `NoMove`
};

/// One of the numbers, for a table of the words that set them.
using SearchNumber = std::int32_t SearchLimits::*;

}  // namespace brenquil
