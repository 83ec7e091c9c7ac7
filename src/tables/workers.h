// The threads of the program: one loop at a time, shared out among them.
//
//     CWorkers workers(threads);
//     workers.ForEach(count, [&](std::size_t item, std::size_t thread) { ... });
//
// The calling thread works along, so `CWorkers(1)` starts no thread. Items are handed out in
// ascending order; a thread that the system wakes too late is not waited for. What an item throws
// ends the loop early and is thrown again by ForEach; so does the user's wish to end, which is
// looked for before each item. A loop inside a loop runs on the thread that meets it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace brenquil {

/// How many positions of an ending make an item, where nothing speaks for fewer.
inline constexpr std::size_t ChunkSize = std::size_t{1} << 15U;

class CWorkers {
public:
    using Work = std::function<void(std::size_t item, std::size_t thread)>;

    /// Where the system gives fewer threads, the object goes on with these.
    explicit CWorkers(std::size_t threads);
    CWorkers(const CWorkers&) = delete;
    CWorkers& operator=(const CWorkers&) = delete;
    ~CWorkers();

    /// The number of threads; the second argument of the work is below it.
    [[nodiscard]] std::size_t Count() const noexcept { return threads_.size() + 1; }

    void ForEach(std::size_t count, const Work& work);

private:
    void Run(std::size_t thread);
    void TakeItems(std::size_t thread) noexcept;

    std::vector<std::thread> threads_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    const Work* work_ = nullptr;
    std::size_t count_ = 0;
    std::atomic<std::size_t> next_{0};
    std::size_t round_ = 0;  // of loops so far
    std::size_t busy_ = 0;   // threads that have begun the round and not finished it
    bool isOpen_ = false;    // the round may still be joined
    bool isEnding_ = false;
    std::exception_ptr failure_;
};

/// Makes the program's loops end with `CInterrupted`. May be called by a signal handler.
void RequestEnd() noexcept;

/// Throws `CInterrupted` when the end has been asked for.
void ThrowIfEnding();

}  // namespace brenquil
