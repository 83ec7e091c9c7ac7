#include "platform/standard_streams.h"

#include <poll.h>
#include <unistd.h>

namespace brenquil {

void UseBinaryStandardStreams() noexcept {
    // They are nothing else here.
}

bool StandardOutputIsTerminal() noexcept {
    return isatty(STDOUT_FILENO) == 1;
}

bool StandardOutputHasReader() noexcept {
    // No event is asked for: an error is reported in any case.
    pollfd output{STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) != 1 || (output.revents & POLLERR) == 0;
}

}  // namespace brenquil
