#include "interface/program/log_file.h"

#include "interface/program/program_info.h"
#include "text/file.h"

#include <memory>
#include <mutex>
#include <string>

namespace brenquil {

void AppendToLog(std::string_view text) {
    std::string line(text);
    line += '\n';
    // Not every system appends in one step. Never destroyed: searches log while the program ends.
    static std::mutex& oneAtATime = *std::make_unique<std::mutex>().release();
    const std::lock_guard lock(oneAtATime);
    CAppendFile file;
    if (file.Open(std::string(LogFileName))) {
        file.Write(line);
    }
}

}  // namespace brenquil
