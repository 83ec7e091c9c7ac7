#include "interface/command_loop.h"

#include "interface/console/console_commands.h"
#include "interface/uci/uci_commands.h"
#include "text/text.h"

#include <array>
#include <utility>
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
    engine.master.Stop();
}

void PonderHit(CEngine& engine, std::string_view) {
    engine.master.PonderHit();
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

void CCommandLoop::Run() {
    while (Pass()) {}
}

bool CCommandLoop::Pass() {
    // Without a line, at the end of the input for one, the next pass simply tries again.
    if (const std::optional<std::string> line = TakeLine()) {
        Dispatch(*line);
    }
    return running_;
}

std::optional<std::string> CCommandLoop::TakeLine() {
    return engine_.protocol.pendingLines.empty() ? ReadInputLine() : TakePendingLine();
}

/// An empty pending line counts as none. Pending lines are echoed and never logged as input.
std::optional<std::string> CCommandLoop::TakePendingLine() {
    PendingLine line = std::move(engine_.protocol.pendingLines.front());
    engine_.protocol.pendingLines.pop_front();
    if (line.text.empty()) {
        return std::nullopt;
    }
    engine_.protocol.currentBatch = std::move(line.origin);
    engine_.protocol.PrintInfoString(line.text);
    return std::move(line.text);
}

std::optional<std::string> CCommandLoop::ReadInputLine() {
    std::string line;
    if (!std::getline(input_, line)) {
        return std::nullopt;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    engine_.protocol.currentBatch = nullptr;
    engine_.protocol.LogLine("> " + line);
    return line;
}

void CCommandLoop::Dispatch(std::string_view line) {
    const std::vector<std::string> words = Split(line, ' ');
    const std::string word = words.empty() ? std::string() : ToLower(words.front());

    if (word == "console") {
        engine_.protocol.mode = CommandMode::Console;
    } else if (word == "uci") {
        HandleUci(engine_);
    } else if (word == "exit" || word == "quit") {
        running_ = false;
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
