#include "interface/program/banner.h"

#include "interface/program/program_info.h"

namespace brenquil {

void PrintBanner(CLineOutput& output) {
    output.PrintLine("");
    output.PrintLine(std::string(ProgramTitle) + " " + std::string(PlatformWord) + " (" +
                     BuildDate() + ")");
    output.PrintLine("created by " + std::string(ProgramAuthor));
    output.PrintLine("");
}

}  // namespace brenquil
