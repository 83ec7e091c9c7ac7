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

std::string ProcessorVendor() {
    const CpuidResult answer = Cpuid(0);
    std::string name;
    for (const std::uint32_t word : {answer.ebx, answer.edx, answer.ecx}) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            name += static_cast<char>(word >> shift & 0xFFU);
        }
    }
    return name.substr(0, name.find('\0'));
}

bool IsProcessor64Bit() noexcept {
    constexpr std::uint32_t ExtendedLeaf = 0x80000001;
    constexpr std::uint32_t LongModeFlag = 1U << 29U;
    return (Cpuid(ExtendedLeaf).edx & LongModeFlag) != 0;
}

}  // namespace brenquil
