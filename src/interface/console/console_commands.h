// The commands for a person at a terminal: they inspect and change the game position.
//
// There is no `go` in console mode. Each handler gets the whole line as typed and runs on the
// reading thread. Answers are mirrored to the log, except for those of perft and of the self-test.
#pragma once

#include "interface/engine.h"

#include <string_view>

namespace brenquil {

/// Handles a line of console mode: a move is played, else a batch file queued, else a command word
/// obeyed; anything else is ignored.
/// @param word  the line's first word in small letters
void DispatchConsole(CEngine& engine, std::string_view word, std::string_view line);

}  // namespace brenquil
