// A lock for a few instructions, in one word.
//
// Works with std::lock_guard. A thread that finds it taken spins reading the word, which keeps the
// cache line shared, and gives its processor away when that takes long: with more threads than
// processors the holder may be waiting for its turn.
#pragma once

#include <atomic>
#include <cassert>
#include <cstdint>
#include <thread>

namespace brenquil {

class CSpinLock {
public:
    CSpinLock() noexcept = default;
    CSpinLock(const CSpinLock&) = delete;
    CSpinLock& operator=(const CSpinLock&) = delete;
    ~CSpinLock() = default;

    /// The names are those that the standard library's guards call.
    void lock() noexcept {  // NOLINT(readability-identifier-naming): see above
        while (word_.exchange(1, std::memory_order_acquire) != 0) {
            for (int spins = 0; word_.load(std::memory_order_relaxed) != 0; ++spins) {
                if (spins >= SpinsBeforeYield) {
                    std::this_thread::yield();
                }
            }
        }
    }

    void unlock() noexcept {  // NOLINT(readability-identifier-naming): likewise
        assert(word_.load(std::memory_order_relaxed) != 0);
        word_.store(0, std::memory_order_release);
    }

private:
    static constexpr int SpinsBeforeYield = 200;

    std::atomic<std::uint32_t> word_{0};
};

static_assert(sizeof(CSpinLock) == 4);

}  // namespace brenquil
