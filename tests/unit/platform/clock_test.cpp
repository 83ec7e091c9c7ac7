#include "platform/clock.h"

#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <thread>

namespace brenquil {
namespace {

constexpr auto Pause = std::chrono::milliseconds(60);

// A busy machine may let a sleeper lie for long, but never wakes it early: only the lower bound is
// sharp.
constexpr int AtLeast = 55;
constexpr int AtMost = 30000;

TEST(Clock, TicksAreMilliseconds) {
    const std::uint32_t before = TickCount();
    std::this_thread::sleep_for(Pause);
    const std::uint32_t elapsed = TickCount() - before;
    EXPECT_GE(elapsed, static_cast<std::uint32_t>(AtLeast));
    EXPECT_LE(elapsed, static_cast<std::uint32_t>(AtMost));
}

TEST(Clock, WallClockCountsWhileTheProgramSleeps) {
    const std::int32_t before = WallClock();
    std::this_thread::sleep_for(Pause);
    const std::int32_t elapsed = WallClock() - before;
    EXPECT_GE(elapsed, AtLeast);
    EXPECT_LE(elapsed, AtMost);
}

TEST(Clock, WallClockBeganWithTheProgram) {
    // This program has run for seconds, in a slow build for minutes; the machine has usually been
    // up for hours.
    EXPECT_GE(WallClock(), 0);
    EXPECT_LT(WallClock(), 1000 * 60 * 60);
}

TEST(Clock, TicksNeverGoBack) {
    std::uint32_t last = TickCount();
    for (int i = 0; i < 100000; ++i) {
        const std::uint32_t now = TickCount();
        ASSERT_LT(now - last, static_cast<std::uint32_t>(AtMost));
        last = now;
    }
}

}  // namespace
}  // namespace brenquil
