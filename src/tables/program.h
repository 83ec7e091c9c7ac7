// The command line of brenquil-tables: which command is meant, its options and its exit status.
#pragma once

#include <string>
#include <vector>

namespace brenquil {

/// Runs a command.
/// @return 0; 1 for a failure, which a message on standard error explains; 2 for arguments that
///         make no sense; 130 after an interrupt
[[nodiscard]] int RunTablesProgram(const std::vector<std::string>& arguments);

}  // namespace brenquil
