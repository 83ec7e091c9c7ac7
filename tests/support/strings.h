// Lists of texts, which many tests compare: lines of an output, words of a command.
#pragma once

#include <string>
#include <vector>

namespace brenquil {

using Strings = std::vector<std::string>;

}  // namespace brenquil
