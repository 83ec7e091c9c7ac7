#include "platform/processor.h"

namespace brenquil {

CpuidResult Cpuid(std::uint32_t /*leaf*/, std::uint32_t /*subleaf*/) noexcept {
    return {};
}

}  // namespace brenquil
