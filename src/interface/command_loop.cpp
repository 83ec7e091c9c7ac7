#include "interface/command_loop.h"

#include "interface/console/console_commands.h"
#include "interface/uci/uci_commands.h"
#include "text/text.h"

#include <array>
#include <cassert>
#include <vector>

namespace brenquil {

namespace {

void NewGame(CEngine& engine, std::string_view) {
    HandleNewGame(engine);
}

void IsReady(CEngine& engine, std::string_view) {
    engine.protocol.PrintLine("readyok");
}

void Stop(CEngine& engine, std::string_view) {
    engine.Stop();
}

void PonderHit(CEngine& engine, std::string_view) {
    engine.PonderHit();
}

struct UciCommand {
    std::string_view word;
    void (*handler)(CEngine& engine, std::string_view line);
};

constexpr std::array UciCommands{
    UciCommand{"ucinewgame", NewGame},
    UciCommand{"isready", IsReady},
    UciCommand{"setoption", HandleSetOption},
    UciCommand{"position", HandlePosition},
    UciCommand{"go", HandleGo},
    UciCommand{"debug", HandleDebug},
    UciCommand{"stop", Stop},
    UciCommand{"ponderhit", PonderHit},
};

}  // namespace

std::string CommandWord(std::string_view line) {
    const std::vector<std::string> words = Split(line, ' ');
    return words.empty() ? std::string() : ToLower(words.front());
}

bool IsLastCommand(std::string_view word) noexcept {
    return word == "exit" || word == "quit";
}

void CCommandLoop::Run() {
    while (Pass()) {}
}

bool CCommandLoop::Pass() {
    // Without a line, at the end of the input for one, the next pass simply tries again, unless
    // the dialect ends the session there.
    if (const std::optional<std::string> line = TakeLine()) {
        Dispatch(*line);
    } else if (engine_.protocol.dialect.EndsWithItsInput() && input_.HasEnded() &&
               engine_.protocol.pendingLines.lines.empty()) {
        engine_.Quit();
    }
    return engine_.protocol.running;
}

std::optional<std::string> CCommandLoop::TakeLine() {
    return engine_.protocol.pendingLines.lines.empty() ? TakeInputLine() : TakePendingLine();
}

/// An empty pending line counts as none. Pending lines are echoed and never logged as input.
std::optional<std::string> CCommandLoop::TakePendingLine() {
    std::optional<std::string> line = engine_.protocol.pendingLines.Take();
    assert(line);
    if (line->empty()) {
        return std::nullopt;
    }
    engine_.protocol.PrintInfoString(*line);
    return line;
}

std::optional<std::string> CCommandLoop::TakeInputLine() {
    std::optional<std::string> line = input_.TakeLine();
    if (line) {
        engine_.protocol.pendingLines.origin = nullptr;
        engine_.protocol.LogLine("> " + *line);
    }
    return line;
}

void CCommandLoop::Dispatch(std::string_view line) {
    const std::string word = CommandWord(line);
    if (word == "console") {
        engine_.protocol.mode = CommandMode::Console;
    } else if (word == "uci") {
        HandleUci(engine_);
    } else if (IsLastCommand(word)) {
        engine_.Quit();
    }
    // These four do not end the dispatch: the mode that they leave behind sees the line as well.
    if (engine_.protocol.IsUci()) {
        DispatchUci(word, line);
    } else {
        DispatchConsole(engine_, word, line);
    }
}

void CCommandLoop::DispatchUci(std::string_view word, std::string_view line) {
    for (const UciCommand& command : UciCommands) {
        if (command.word == word) {
            command.handler(engine_, line);
            return;
        }
    }
}

}  // namespace brenquil
