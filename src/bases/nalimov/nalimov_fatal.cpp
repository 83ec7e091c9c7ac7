#include "bases/nalimov/nalimov_fatal.h"

#include <cstdio>
#include <cstdlib>

namespace brenquil {

void NalimovFatal(const std::string& message) {
    (void)std::fputs(("*** " + message + "\n").c_str(), stdout);
    NalimovEnd();
}

void NalimovEnd() {
    (void)std::fflush(stdout);
    std::_Exit(1);
}

}  // namespace brenquil
