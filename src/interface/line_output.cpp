#include "interface/line_output.h"

#include <string>

namespace brenquil {

void CLineOutput::PrintLine(std::string_view text) {
    PrintBare(text);
    if (logging) {
        LogLine("< " + std::string(text));
    }
}

void CLineOutput::PrintBare(std::string_view text) {
    std::string line(text);
    line += '\n';
    sink_.Write(line);
}

void CLineOutput::LogLine(std::string_view text) {
    if (logging && logSink) {
        logSink(text);
    }
}

}  // namespace brenquil
