// The arguments that the program is called with.
#pragma once

#include "interface/dialect.h"
#include "interface/program/bench.h"

#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// What the arguments ask for.
struct Arguments {
    enum class Action {
        Converse,  ///< what the program is for
        Bench,
        Version,
        Help,
        Refuse  ///< print `fault` and end with `StatusOfMisuse`
    };

    /// The exit status after arguments that are not understood.
    static constexpr int StatusOfMisuse = 2;

    Action action = Action::Converse;
    CDialect dialect;
    BenchSettings bench;
    std::string fault;
};

/// Reads the arguments.
/// @param program  the path by which the program was called; its name may choose the dialect
/// @param words    those after it
[[nodiscard]] Arguments ParseArguments(std::string_view program,
                                       const std::vector<std::string>& words);

/// What the program is, its arguments, and where the manual is; ends in a line feed.
[[nodiscard]] std::string UsageText();

}  // namespace brenquil
