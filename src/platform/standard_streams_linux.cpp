#include "platform/standard_streams.h"

#include <unistd.h>

namespace brenquil {

void UseBinaryStandardStreams() noexcept {
    // They are nothing else here.
}

bool StandardOutputIsTerminal() noexcept {
    return isatty(STDOUT_FILENO) == 1;
}

}  // namespace brenquil
