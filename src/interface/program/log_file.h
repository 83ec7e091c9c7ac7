// The log: a text file in the working directory that grows line by line.
#pragma once

#include <string_view>

namespace brenquil {

/// Appends the text and a line feed to the log file. The file is opened anew for each line and
/// closed again. Any thread may call it: lines are written one at a time, so those of two threads
/// may change places, but do not mingle. What cannot be written is lost without a message; a pipe
/// or a device in place of the file is never written to.
void AppendToLog(std::string_view text);

}  // namespace brenquil
