#include "platform/standard_streams.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>

namespace brenquil {

void UseBinaryStandardStreams() noexcept {
    (void)_setmode(_fileno(stdin), _O_BINARY);
    (void)_setmode(_fileno(stdout), _O_BINARY);
    (void)_setmode(_fileno(stderr), _O_BINARY);
}

bool StandardOutputIsTerminal() noexcept {
    return _isatty(_fileno(stdout)) != 0;
}

bool StandardOutputHasReader() noexcept {
    return true;
}

}  // namespace brenquil
