#include "interface/protocol.h"

namespace brenquil {

CProtocol::CProtocol(ILineSink& sink) : sink_(sink) {}

void CProtocol::PrintLine(std::string_view text) {
    std::string line(text);
    line += '\n';
    sink_.Write(line);
    if (logging) {
        LogLine("< " + std::string(text));
    }
}

void CProtocol::PrintInfoString(std::string_view text) {
    if (IsUci()) {
        PrintLine("info string " + std::string(text));
    } else {
        PrintLine(text);
    }
}

void CProtocol::LogLine(std::string_view text) {
    if (logging && logSink) {
        logSink(text);
    }
}

}  // namespace brenquil
