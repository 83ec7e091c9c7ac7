#include "platform/clock.h"

#include <chrono>

namespace brenquil {

namespace {

std::uint64_t SteadyMilliseconds() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

/// Read before main. A constructor of another file that runs earlier still finds 0 here and
/// measures from the start of the machine, which does no harm to differences that stay on one side
/// of main.
const std::uint64_t StartOfProgram = SteadyMilliseconds();

}  // namespace

std::uint32_t TickCount() noexcept {
    return static_cast<std::uint32_t>(SteadyMilliseconds());
}

std::int32_t WallClock() noexcept {
    return static_cast<std::uint32_t>(SteadyMilliseconds() - StartOfProgram);
}

}  // namespace brenquil
