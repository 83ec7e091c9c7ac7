#include "platform/processor.h"

#if defined(__aarch64__) && defined(__linux__)
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

namespace brenquil {

namespace {

#if defined(__aarch64__) && defined(__linux__)

/// The maker's letter in the identification register, readable where the system says that it
/// emulates the access.
unsigned Implementer() noexcept {
    if ((getauxval(AT_HWCAP) & HWCAP_CPUID) == 0) {
        return 0;
    }
    std::uint64_t identification = 0;
    asm("mrs %0, MIDR_EL1" : "=r"(identification));
    return static_cast<unsigned>(identification >> 24U & 0xFFU);
}

const char* NameOfImplementer(unsigned letter) noexcept {
    switch (letter) {
    case 0x41: return "ARM";
    case 0x42: return "Broadcom";
    case 0x43: return "Cavium";
    case 0x46: return "Fujitsu";
    case 0x48: return "HiSilicon";
    case 0x4E: return "NVIDIA";
    case 0x50: return "APM";
    case 0x51: return "Qualcomm";
    case 0x53: return "Samsung";
    case 0x56: return "Marvell";
    case 0x61: return "Apple";
    case 0x69: return "Intel";
    case 0x6D: return "Microsoft";
    case 0xC0: return "Ampere";
    default: return "";
    }
}

#else

unsigned Implementer() noexcept {
    return 0;
}

const char* NameOfImplementer(unsigned /*letter*/) noexcept {
    return "";
}

#endif

}  // namespace

CpuidResult Cpuid(std::uint32_t /*leaf*/, std::uint32_t /*subleaf*/) noexcept {
    return {};
}

std::string ProcessorVendor() {
    return NameOfImplementer(Implementer());
}

bool IsProcessor64Bit() noexcept {
    // The program runs on it.
    return sizeof(void*) == sizeof(std::uint64_t);
}

}  // namespace brenquil
