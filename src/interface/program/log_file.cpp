#include "interface/program/log_file.h"

#include "interface/program/program_info.h"
#include "text/file.h"

#include <string>

namespace brenquil {

void AppendToLog(std::string_view text) {
    std::string line(text);
    line += '\n';
    CAppendFile file;
    if (file.Open(std::string(LogFileName))) {
        file.Write(line);
    }
}

}  // namespace brenquil
