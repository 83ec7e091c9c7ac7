// Batch files: text files of commands, "*.cmd".
//
// Running one only queues its lines; the command loop obeys them later, ahead of its input. A batch
// file named by a batch file therefore does not nest: its lines come after those that wait
// already.
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

/// Queues the lines of a batch file without comments, outer blanks and empty lines. A name that
/// means no file does nothing. A file that is named by one of its own lines, directly or by way of
/// other batch files, is not run again for it: a circle would never let the input be read.
void RunBatch(const std::string& name, CPendingLines& pending);

}  // namespace brenquil
