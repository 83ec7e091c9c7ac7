// Where finished output lines go: standard output in the program, a list in the tests.
#pragma once

#include <cstdio>
#include <string>

namespace brenquil {

/// Takes output lines. Several threads may write at the same time.
class ILineSink {
public:
    ILineSink(const ILineSink&) = delete;
    ILineSink& operator=(const ILineSink&) = delete;
    virtual ~ILineSink() = default;

    /// Writes one line and brings it out at once.
    /// @param line  ends in a line feed; the sink must not take it apart, so that the lines of two
    ///              threads do not mingle
    virtual void Write(const std::string& line) = 0;

protected:
    ILineSink() = default;
};

/// Writes to a stream of the C library, whose own lock keeps each line whole.
class CFileSink final : public ILineSink {
public:
    /// @param stream  stays open as long as the sink is used
    explicit CFileSink(std::FILE* stream) noexcept : stream_(stream) {}

    void Write(const std::string& line) override {
        // A reader that has gone away is no reason to stop: the result is not looked at.
        (void)std::fwrite(line.data(), 1, line.size(), stream_);
        (void)std::fflush(stream_);
    }

private:
    std::FILE* stream_;
};

}  // namespace brenquil
