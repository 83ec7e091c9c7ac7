// A thread of the system behind a handle that reports failure by a return value.
//
//     CThreadHandle thread;
//     if (thread.Start(&Entry, this)) { ... thread.Join(); }
//
// One handle can start any number of threads, one after the other: a thread that is still held when
// the next one starts is detached first. Destroying the handle detaches as well: a thread is never
// waited for by surprise, which is what lets the program end in the middle of a search.
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

    // Runs `entry(argument)` on a new thread; false when the system gives none.
    [[nodiscard]] bool Start(void (*entry)(void*), void* argument) noexcept;

    // Waits until the thread has ended. Returns at once when there is none.
    // What the thread wrote is visible to the caller afterwards.
    void Join() noexcept;

    // Lets the thread run on by itself. Does nothing when there is none.
    void Detach() noexcept;

private:
    std::thread thread_;
};

}  // namespace brenquil
