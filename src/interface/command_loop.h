// The one reading loop: takes a line, finds its command word, runs the handler.
//
// Lines come from the protocol's queue of pending lines first and from the source of input
// otherwise. The loop ends with `exit` or `quit`. The end of the input ends it only where the
// dialect says so; elsewhere it then spins until the process is killed. Handlers run on the calling
// thread, one after the other.
#pragma once

#include "interface/engine.h"
#include "interface/line_source.h"

#include <optional>
#include <string>
#include <string_view>

namespace brenquil {

/// The command word of a line, in small letters; empty if it has none.
[[nodiscard]] std::string CommandWord(std::string_view line);

/// Whether the program ends with this command, in either mode.
[[nodiscard]] bool IsLastCommand(std::string_view word) noexcept;

/// Reads and obeys commands.
class CCommandLoop {
public:
    /// Both outlive the loop.
    CCommandLoop(CEngine& engine, ILineSource& input) : engine_(engine), input_(input) {}

    /// Obeys lines until the session is to end.
    void Run();

    /// Takes one line, if there is one, and obeys it.
    /// @return false when the session is to end
    [[nodiscard]] bool Pass();

private:
    [[nodiscard]] std::optional<std::string> TakeLine();
    [[nodiscard]] std::optional<std::string> TakePendingLine();
    [[nodiscard]] std::optional<std::string> TakeInputLine();
    void Dispatch(std::string_view line);
    void DispatchUci(std::string_view word, std::string_view line);

    CEngine& engine_;
    ILineSource& input_;
};

}  // namespace brenquil
