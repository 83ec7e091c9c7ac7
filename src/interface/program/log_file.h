// The log: a text file in the working directory that grows by a line at a time.
#pragma once

#include <string_view>

namespace brenquil {

/// Appends the text and a line feed to the log file. The file is opened anew for each line and
/// closed again, so that two threads share nothing; what cannot be written is lost in silence.
void AppendToLog(std::string_view text);

}  // namespace brenquil
