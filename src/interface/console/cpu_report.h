// What the console command `cpu` says about the processor.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// The fixed table of features, a row for each. Takes some microseconds, more under a hypervisor.
[[nodiscard]] std::vector<std::string> CpuReport();

/// "true" or "false" for one bit of a CPUID answer, asked for in three words: the leaf ("7",
/// "80000001", anything else is 1), the register ("EBX", "ECX", "EDX", anything else is EAX) and
/// the number of the bit. Nothing for more or fewer words.
[[nodiscard]] std::optional<std::string> CpuFlag(std::string_view words);

}  // namespace brenquil
