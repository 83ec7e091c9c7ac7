#include "platform/standard_streams.h"

namespace brenquil {

void UseBinaryStandardStreams() noexcept {
    // They are nothing else here.
}

}  // namespace brenquil
