// The answer to the console command `help`, line by line.
#pragma once

#include <array>
#include <string_view>

namespace brenquil {

/// Front ends may compare it, so it is kept to the character, "devide" included.
inline constexpr std::array<std::string_view, 23> HelpText = {
    "------------------------------------------------------------------",
    "exit           = exit engine",
    "uci            = switch to UCI protocol",
    "console        = switch to Console mode",
    "------------------------------------------------------------------",
    "Commands in console mode",
    "------------------------------------------------------------------",
    "new            = set start position",
    "<move>         = do move (algebraic notation e.g. e2e4)",
    "undo           = undo move",
    "moves          = list legal moves (with info of bases if available)",
    "board          = display current board position",
    "flip           = flip the board",
    "eval           = display current static evaluation",
    "see <move>     = static exchange evaluation (SEE) for move m",
    "fen [<fen>]    = get/set current position as FEN-string",
    "test [-960]    = several test runs, [-960] = also for chess960",
    "perft <n> [-d] = perft numbers up to depth n, [-d] = devide view",
    "print <num>    = print number as bitboard",
    "ini            = create ini-file",
    "batch <file>   = call a command batch-file (*.cmd)",
    "cpu            = print info about cpu features",
    "------------------------------------------------------------------",
};

}  // namespace brenquil
