// A handle of a thread of the system that reports failure by a return value.
//
//     CThreadHandle thread;
//     if (thread.Start(&Entry, this)) { ... thread.Join(); }
//
// One handle can start any number of threads, one after the other. It keeps each of them until it
// has ended: the next start and the destructor wait for the thread that is held. No thread is ever
// detached: with the thread library of MinGW, one that is detached before its first instruction can
// be lost, and then never runs.
//
// No exception escapes, neither from the handle nor from the thread. A handle belongs to one
// thread.
#pragma once

#include <thread>

namespace brenquil {

class CThreadHandle {
public:
    CThreadHandle() noexcept = default;
    CThreadHandle(const CThreadHandle&) = delete;
    CThreadHandle& operator=(const CThreadHandle&) = delete;
    CThreadHandle(CThreadHandle&&) = delete;
    CThreadHandle& operator=(CThreadHandle&&) = delete;
    ~CThreadHandle();

    /// Runs `entry(argument)` on a new thread; false when the system gives none.
    [[nodiscard]] bool Start(void (*entry)(void*), void* argument) noexcept;

    /// Waits until the thread has ended. Returns at once when there is none.
    /// What the thread wrote is visible to the caller afterwards.
    void Join() noexcept;

private:
    std::thread thread_;
};

}  // namespace brenquil
