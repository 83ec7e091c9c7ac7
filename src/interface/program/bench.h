// The `bench` argument of the command line: speed and signature of the search.
//
// A fixed list of positions is searched to a fixed depth, a new game before each, by the same code
// that obeys `go depth`. With the default settings the total of nodes identifies the behaviour of
// the whole engine: it is the same on every compiler, build type and machine, and changes only when
// the behaviour does.
#pragma once

#include "interface/dialect.h"
#include "interface/line_sink.h"

#include <cstdint>

namespace brenquil {

/// How the list is searched. The defaults are those of the signature.
struct BenchSettings {
    int depth = 10;
    int threads = 1;  ///< with more of them the nodes differ from run to run
    int hash = 16;    ///< mebibytes
};

/// Searches the list and prints a line for each position, then nodes, time in seconds, and the line
/// "<nodes> nodes <rate> nps" that testing frameworks look for.
/// @return the total of nodes
std::uint64_t RunBench(ILineSink& sink, const BenchSettings& settings = {}, CDialect dialect = {});

}  // namespace brenquil
