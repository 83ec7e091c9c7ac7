// The end of the program.
#pragma once

namespace brenquil {

/// Ends the program at once with this exit code, whatever its other threads are doing: nothing is
/// destroyed, because they may be looking at it, and no lock is taken, because one of them may hold
/// it for ever. Nothing is flushed either, so what has to come out is flushed before.
[[noreturn]] void EndProcess(int code) noexcept;

}  // namespace brenquil
