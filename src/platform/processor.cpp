#include "platform/processor.h"

#include <thread>

namespace brenquil {

int ProcessorCount() noexcept {
    const unsigned int count = std::thread::hardware_concurrency();
    return count == 0 ? 1 : count;
}

}  // namespace brenquil
