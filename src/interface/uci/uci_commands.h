// The handlers of the UCI command words: how each line is parsed, what it changes, what it answers.
//
// The handlers run on the reading thread and get the whole line as typed, first word included.
// Nothing is rejected for being malformed: a missing or wrong token falls back to a default.
#pragma once

#include "interface/engine.h"

#include <string_view>

namespace brenquil {

/// `uci`: switches to UCI mode and prints who we are and all options.
void HandleUci(CEngine& engine);

/// `setoption name N value V`. Silent, unless the option Debug asks for an answer.
void HandleSetOption(CEngine& engine, std::string_view line);

/// `position [fen F] [moves M...]`. Without a FEN, whatever else stands there, the start position.
void HandlePosition(CEngine& engine, std::string_view line);

/// `go`: answers from the bases, or starts the search and returns while it runs.
void HandleGo(CEngine& engine, std::string_view line);

/// `debug on`; anything but exactly "on" switches off.
void HandleDebug(CEngine& engine, std::string_view line);

/// `ucinewgame` and the console's `new`: start position and an empty hash table.
void HandleNewGame(CEngine& engine);

}  // namespace brenquil
