// Lines that wait to be obeyed before the input is read again: those of batch files.
//
// For the reading thread alone.
#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace brenquil {

/// The batch files through which a line has come, each named by a line of the one before; null for
/// a line of the input.
using BatchChain = std::shared_ptr<const std::vector<std::string>>;

/// A line that waits.
struct PendingLine {
    std::string text;
    BatchChain origin{};
};

/// The queue, and where the line that is being obeyed has come from.
struct CPendingLines {
    /// Takes the next line out; nothing if none waits.
    [[nodiscard]] std::optional<std::string> Take() {
        if (lines.empty()) {
            return std::nullopt;
        }
        PendingLine line = std::move(lines.front());
        lines.pop_front();
        origin = std::move(line.origin);
        return std::move(line.text);
    }

    std::list<PendingLine> lines;
    BatchChain origin;
};

}  // namespace brenquil
