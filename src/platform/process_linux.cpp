#include "platform/process.h"

#include <cstdlib>

namespace brenquil {

void EndProcess(int code) noexcept {
    std::_Exit(code);
}

}  // namespace brenquil
