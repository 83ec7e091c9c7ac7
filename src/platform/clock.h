// The two millisecond clocks of the program.
//
// Both count real time, never go back when somebody sets the time of day, and wrap at 32 bits.
// Differences are taken in the type of the clock and are right across the wrap, as long as less
// than one round (49 or 24 days) has passed.
//
// Cost: some tens of nanoseconds a call.
#pragma once

#include <cstdint>

namespace brenquil {

/// Milliseconds since a moment in the past that is the same for the whole run; usually the start of
/// the machine.
[[nodiscard]] std::uint32_t TickCount() noexcept;

/// Milliseconds since the start of the program: wall time, not processor time. After 2^31 - 1 it
/// wraps to -2^31.
[[nodiscard]] std::int32_t WallClock() noexcept;

}  // namespace brenquil
