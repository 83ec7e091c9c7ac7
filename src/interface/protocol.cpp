#include "interface/protocol.h"

#include <string>

namespace brenquil {

void CProtocol::PrintInfoString(std::string_view text) {
    if (IsUci()) {
        PrintLine("info string " + std::string(text));
    } else {
        PrintLine(text);
    }
}

}  // namespace brenquil
