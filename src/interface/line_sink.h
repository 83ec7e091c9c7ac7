// Where finished output lines go: standard output in the program, a list in the tests.
#pragma once

#include <cassert>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>

namespace brenquil {

/// Takes output lines. Several threads may write at the same time.
class ILineSink {
public:
    ILineSink(const ILineSink&) = delete;
    ILineSink& operator=(const ILineSink&) = delete;
    virtual ~ILineSink() = default;

    /// Writes one line and flushes it.
    /// @param line  ends in a line feed; the sink must not take it apart, so that the lines of two
    ///              threads do not mingle
    virtual void Write(const std::string& line) = 0;

protected:
    ILineSink() = default;
};

/// Writes to a stream of the C library, one line at a time.
class CFileSink final : public ILineSink {
public:
    /// @param stream  stays open as long as the sink is used
    explicit CFileSink(std::FILE* stream) noexcept : stream_(stream) { assert(stream != nullptr); }

    void Write(const std::string& line) override {
        assert(line.ends_with('\n'));
        Enter();
        // A reader that has gone away is no reason to stop: the result is ignored.
        (void)std::fwrite(line.data(), 1, line.size(), stream_);
        (void)std::fflush(stream_);
        Leave();
    }

    /// Called now and then by a thread that waits long for another one's line to be written, as
    /// nobody reads. May be null; set before there are two threads.
    std::function<void()> onLongWait;

private:
    static constexpr auto LongWait = std::chrono::milliseconds(500);

    void Enter() {
        std::unique_lock lock(mutex_);
        while (!isFree_.wait_for(lock, LongWait, [this] { return !isWriting_; })) {
            if (onLongWait) {
                onLongWait();
            }
        }
        isWriting_ = true;
    }

    void Leave() {
        const std::lock_guard lock(mutex_);
        isWriting_ = false;
        isFree_.notify_one();
    }

    std::FILE* stream_;
    bool isWriting_ = false;
    std::condition_variable isFree_;
    std::mutex mutex_;  ///< guards the flag, and is not held while a line is written
};

}  // namespace brenquil
