#include "interface/console/cpu_report.h"

#include "platform/bits.h"
#include "platform/processor.h"
#include "text/text.h"

#include <algorithm>
#include <cstdint>

namespace brenquil {

namespace {

constexpr int MaxCores = 32;
constexpr std::uint32_t ExtendedLeaf = 0x80000001;

std::string FlagText(bool flag) {
    return flag ? "true" : "false";
}

bool HasBit(std::uint32_t word, unsigned bit) noexcept {
    return (word >> (bit & 31U) & 1U) != 0;
}

std::string FlagText(std::uint32_t word, unsigned bit) {
    return FlagText(HasBit(word, bit));
}

std::uint32_t LeafOf(std::string_view word) noexcept {
    if (word == "7") {
        return 7;
    }
    return word == "80000001" ? ExtendedLeaf : 1;
}

std::uint32_t RegisterOf(const CpuidResult& answer, std::string_view word) noexcept {
    if (word == "EBX") {
        return answer.ebx;
    }
    if (word == "ECX") {
        return answer.ecx;
    }
    return word == "EDX" ? answer.edx : answer.eax;
}

}  // namespace

std::vector<std::string> CpuReport() {
    const CpuidResult features = Cpuid(1);
    const CpuidResult structured = Cpuid(7);
    const CpuidResult extended = Cpuid(ExtendedLeaf);
    return {
        "vendor: " + ProcessorVendor(),
        "cores: " + std::to_string(std::min(ProcessorCount(), MaxCores)),
        "64bit: " + FlagText(IsProcessor64Bit()),
        "popcnt: " + FlagText(HasPopcount),
        "sse: " + FlagText(features.edx, 25),
        "sse2: " + FlagText(features.edx, 26),
        "sse3: " + FlagText(features.ecx, 0),
        "sse4.1: " + FlagText(features.ecx, 19),
        "sse4.2: " + FlagText(features.ecx, 20),
        "bmi1: " + FlagText(structured.ebx, 3),
        "bmi2: " + FlagText(structured.ebx, 8),
        "prefetch: " + FlagText(extended.ecx, 8),
        "page size ext.: " + FlagText(features.edx, 3),
        "hyper-threading: " + FlagText(features.edx, 28),
    };
}

std::optional<std::string> CpuFlag(std::string_view words) {
    const std::vector<std::string> pieces = Split(words, ' ');
    if (pieces.size() != 3) {
        return std::nullopt;
    }
    const CpuidResult answer = Cpuid(LeafOf(pieces[0]));
    const std::int32_t bit = IsNumeric(pieces[2]) ? ToInteger(pieces[2]) : 0;
    return FlagText(RegisterOf(answer, pieces[1]), bit);
}

}  // namespace brenquil
