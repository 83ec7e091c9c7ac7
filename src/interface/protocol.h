// The command interface as an object: which commands are understood, how castling is written, which
// lines wait, and the way out for every line.
//
// The flags are relaxed shared words, because the search thread reads them while it prints; the
// lines that wait belong to the reading thread.
#pragma once

#include "interface/dialect.h"
#include "interface/line_output.h"
#include "interface/pending_lines.h"
#include "platform/relaxed.h"

#include <cstdint>
#include <string_view>

namespace brenquil {

/// Which set of commands is understood, and in which form messages appear.
enum class CommandMode : std::int32_t {
    Console = 0,  ///< for a person at a terminal
    Uci = 1       ///< for a front end
};

/// One session.
class CProtocol final : public CLineOutput {
public:
    explicit CProtocol(ILineSink& sink, CDialect sessionDialect = {}) noexcept
        : CLineOutput(sink), dialect(sessionDialect) {}

    /// Prints a message to the user: an `info string` line in UCI mode, the bare text otherwise.
    void PrintInfoString(std::string_view text);

    [[nodiscard]] bool IsUci() const noexcept { return mode == CommandMode::Uci; }

    const CDialect dialect;
    Relaxed<CommandMode> mode{CommandMode::Console};
    /// The FEN that last set the position wrote its castling field with file letters.
    Relaxed<bool> fileLetterCastling{false};
    CPendingLines pendingLines;
    bool running = true;  ///< until `exit` or `quit`; for the reading thread
};

}  // namespace brenquil
