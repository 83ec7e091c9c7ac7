// The clock that the code under test reads, in the hands of the test.
//
// This program defines the two clock functions of the platform room itself, so the linker never
// takes the real ones out of that room's library. As long as no `CStoppedClock` lives they show the
// real time.
#pragma once

#include <cstdint>

namespace brenquil {

/// While it lives, time passes only when the test says so.
class CStoppedClock {
public:
    explicit CStoppedClock(std::uint32_t ticks = 1000000);
    CStoppedClock(const CStoppedClock&) = delete;
    CStoppedClock& operator=(const CStoppedClock&) = delete;
    ~CStoppedClock();

    static void Advance(std::uint32_t milliseconds);

    /// How often the search has asked for the time since the clock was stopped.
    [[nodiscard]] static std::uint64_t Looks();
};

}  // namespace brenquil
