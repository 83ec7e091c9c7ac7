// The way out for lines, and the log that mirrors them.
//
// Lines come from the reading thread and from the master search thread, possibly at the same time.
// Each is handed to the sink in one piece.
#pragma once

#include "interface/line_sink.h"
#include "platform/relaxed.h"

#include <functional>
#include <string_view>

namespace brenquil {

/// Prints lines to a sink. An output has no log until it is given one: that is how perft, bench and
/// the self-test print past the log.
class CLineOutput {
public:
    /// @param sink  outlives this object
    explicit CLineOutput(ILineSink& sink) noexcept : sink_(sink) {}

    CLineOutput(const CLineOutput&) = delete;
    CLineOutput& operator=(const CLineOutput&) = delete;
    ~CLineOutput() = default;

    /// Prints the text as a line and mirrors it to the log.
    void PrintLine(std::string_view text);

    /// Prints the text as a line, past the log.
    void PrintBare(std::string_view text);

    /// Appends the text to the log if logging is on.
    void LogLine(std::string_view text);

    /// Where the lines go, for an output without a log.
    [[nodiscard]] ILineSink& Sink() const noexcept { return sink_; }

    Relaxed<bool> logging{false};

    /// Takes log lines, without a line feed; null while there is no log. Set before any search
    /// runs.
    std::function<void(std::string_view line)> logSink;

private:
    ILineSink& sink_;
};

}  // namespace brenquil
