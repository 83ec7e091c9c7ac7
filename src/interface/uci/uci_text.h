// The figures of the `info` lines as text and numbers, each by its own rule.
//
// Pure functions: the output takes its clocks and counters from the program, these take arguments.
#pragma once

#include "board/types.h"

#include <cstdint>
#include <string>

namespace brenquil {

/// " score mate m" for a score in the mate band, " score cp c" for any other. m counts moves, is
/// negative for the side that is mated, and a score of exactly 32000 either way stays centipawns.
[[nodiscard]] std::string ScoreText(Score score);

/// " lowerbound" for a score above beta, " upperbound" for one below alpha, else nothing. The
/// search reports finished results only, which have neither.
[[nodiscard]] std::string BoundText(Score score, Score alpha, Score beta);

/// Nodes per second, rounded down; the nodes themselves when no millisecond has passed.
[[nodiscard]] std::uint64_t NodesPerSecond(std::uint64_t nodes, std::uint32_t milliseconds);

/// Milliseconds as seconds, in six significant digits at most.
[[nodiscard]] std::string SecondsText(std::uint32_t milliseconds);

/// Clock time over tick time in thousandths, at most 1000; 0 unless both have moved on. Both run on
/// wall time, so the figure is close to 1000. It does not measure the processor and must not begin
/// to: front ends are used to it.
[[nodiscard]] std::int32_t CpuLoad(std::int32_t ticks, std::int32_t clock);

}  // namespace brenquil
