#include "interface/program/program_info.h"

#include "text/text.h"

namespace brenquil {

std::string FormatBuildDate(std::string_view compilerDate) {
    return Join(Split(compilerDate, ' '), " ");
}

std::string BuildDate() {
    return FormatBuildDate(__DATE__);
}

}  // namespace brenquil
