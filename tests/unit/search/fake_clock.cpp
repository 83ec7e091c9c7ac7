#include "fake_clock.h"

#include "platform/clock.h"

#include <atomic>
#include <chrono>

namespace brenquil {

namespace {

std::atomic<bool> isStopped{false};
std::atomic<std::uint32_t> stoppedAt{0};
std::atomic<std::uint64_t> looks{0};

}  // namespace

std::uint32_t TickCount() noexcept {
    if (isStopped) {
        ++looks;
        return stoppedAt;
    }
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

std::int32_t WallClock() noexcept {
    return static_cast<std::int32_t>(isStopped ? stoppedAt.load() : TickCount());
}

CStoppedClock::CStoppedClock(std::uint32_t ticks) {
    stoppedAt = ticks;
    looks = 0;
    isStopped = true;
}

CStoppedClock::~CStoppedClock() {
    isStopped = false;
}

void CStoppedClock::Advance(std::uint32_t milliseconds) {
    stoppedAt += milliseconds;
}

std::uint64_t CStoppedClock::Looks() {
    return looks;
}

}  // namespace brenquil
