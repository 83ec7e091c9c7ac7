// Batch files: text files of commands, "*.cmd".
//
// Running one only queues its lines; the command loop obeys them later, ahead of its input. A batch
// file that another one names therefore does not nest: its lines come after those that already
// wait.
#pragma once

#include "interface/pending_lines.h"

#include <cstddef>
#include <string>

namespace brenquil {

/// While this many lines wait, no batch file is run for a line of another. Files that each name the
/// next one twice would otherwise double the queue with each file until the memory is full.
inline constexpr std::size_t MostLinesBeforeNestedBatch = 250000;

/// The file that a name means: itself if it exists and holds ".cmd" in any letter case, else the
/// name with ".cmd" added if that exists, else the empty string.
[[nodiscard]] std::string ResolveBatchName(const std::string& name);

/// Queues the lines of a batch file without comments, outer blanks and empty lines. Does nothing
/// for a name without a file. A file that one of its own lines names, directly or through other
/// batch files, is not run again: a circle would never let the input be read.
void RunBatch(const std::string& name, CPendingLines& pending);

}  // namespace brenquil
