#include "interface/program/log_file.h"

#include "interface/program/program_info.h"

#include <fstream>
#include <string>

namespace brenquil {

void AppendToLog(std::string_view text) {
    std::string line(text);
    line += '\n';
    std::ofstream file{std::string(LogFileName), std::ios::app};
    // In one piece: the lines of two threads may change places, but do not mingle.
    file << line << std::flush;
}

}  // namespace brenquil
