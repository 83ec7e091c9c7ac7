// The command interface as an object: its mode, its flags, and the way out for every line.
//
// One instance lives through the whole program; all output goes through PrintLine, from the reading
// thread and from the master search thread, possibly at the same time. Each line is handed to the
// sink in one piece. The flags are relaxed shared words, because the search thread reads
// them while it prints; the lines that wait belong to the reading thread.
#pragma once

#include "interface/line_sink.h"
#include "platform/relaxed.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// Which set of commands is understood, and in which form messages appear.
enum class CommandMode : std::int32_t {
    Console = 0,  ///< for a person at a terminal
    Uci = 1       ///< for a front end
};

/// The batch files by way of which a line has come, each named by a line of the one before; null
/// for a line from the input.
using BatchChain = std::shared_ptr<const std::vector<std::string>>;

/// A line that waits to be obeyed.
struct PendingLine {
    std::string text;
    BatchChain origin{};
};

/// The state of the command interface and its output routines.
class CProtocol {
public:
    /// @param sink  outlives this object
    explicit CProtocol(ILineSink& sink);
    CProtocol(const CProtocol&) = delete;
    CProtocol& operator=(const CProtocol&) = delete;
    ~CProtocol() = default;

    /// Prints the text as a line and mirrors it to the log.
    void PrintLine(std::string_view text);

    /// Prints a message to the user: an `info string` line in UCI mode, the bare text otherwise.
    void PrintInfoString(std::string_view text);

    /// Appends the text to the log if logging is on.
    void LogLine(std::string_view text);

    [[nodiscard]] bool IsUci() const noexcept { return mode == CommandMode::Uci; }

    Relaxed<bool> logging{false};
    Relaxed<CommandMode> mode{CommandMode::Console};
    /// The last FEN that set the position wrote its castling field with file letters.
    Relaxed<bool> fileLetterCastling{false};
    std::list<PendingLine> pendingLines;  ///< input that waits to be obeyed before standard input
    BatchChain currentBatch;              ///< where the line that is being obeyed has come from

    /// Takes log lines, without a line feed; null while there is no log. Set before any search
    /// runs.
    std::function<void(std::string_view line)> logSink;

private:
    ILineSink& sink_;
};

}  // namespace brenquil
