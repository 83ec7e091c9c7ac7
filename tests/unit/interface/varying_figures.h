// Lines with the figures that differ from run to run taken out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brenquil {

/// The line without the words time, nps and cpuload and the numbers after them.
[[nodiscard]] inline std::string WithoutVaryingFigures(std::string line) {
    for (const std::string_view word : {" time ", " nps ", " cpuload "}) {
        const std::size_t start = line.find(word);
        if (start != std::string::npos) {
            const std::size_t end = line.find_first_not_of("0123456789", start + word.size());
            line.erase(start, end == std::string::npos ? end : end - start);
        }
    }
    return line;
}

}  // namespace brenquil
