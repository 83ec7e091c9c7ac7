#include "interface/program/banner.h"

#include "interface/program/program_info.h"

namespace brenquil {

void PrintBanner(CProtocol& protocol) {
    protocol.PrintLine("");
    protocol.PrintLine(std::string(ProgramTitle) + " " + std::string(PlatformWord) + " (" +
                       BuildDate() + ")");
    protocol.PrintLine("created by " + std::string(ProgramAuthor));
    protocol.PrintLine("");
}

}  // namespace brenquil
