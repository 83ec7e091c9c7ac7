#include "platform/processor.h"

#include <cpuid.h>

namespace brenquil {

CpuidResult Cpuid(std::uint32_t leaf, std::uint32_t subleaf) noexcept {
    CpuidResult result;
    if (__get_cpuid_count(leaf, subleaf, &result.eax, &result.ebx, &result.ecx, &result.edx) == 0) {
        return {};
    }
    return result;
}

}  // namespace brenquil
