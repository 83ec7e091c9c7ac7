// What the processor is and how many of them there are.
//
// For start-up and for the console; nothing here is meant for the hot path (CPUID alone costs some
// hundred cycles, under a hypervisor some thousand).
#pragma once

#include <cstdint>
#include <string>

namespace brenquil {

/// The four registers that one CPUID instruction fills.
struct CpuidResult {
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
};

/// The answer of CPUID for `leaf` and `subleaf`. All four are 0 when the leaf is above the highest
/// one of its range (basic leaves from 0, extended ones from 0x80000000), and on processors without
/// CPUID.
[[nodiscard]] CpuidResult Cpuid(std::uint32_t leaf, std::uint32_t subleaf = 0) noexcept;

/// The maker of the processor as it names itself: the twelve characters of CPUID, or the name that
/// belongs to the number that other processors report. Empty when there is none.
[[nodiscard]] std::string ProcessorVendor();

/// True when the processor has a 64-bit mode.
[[nodiscard]] bool IsProcessor64Bit() noexcept;

/// The number of threads that the machine runs at once; at least 1.
[[nodiscard]] int ProcessorCount() noexcept;

}  // namespace brenquil
