// Where input lines come from: standard input in the program, another source wherever else the
// engine runs.
#pragma once

#include <istream>
#include <optional>
#include <string>

namespace brenquil {

/// Gives input lines. For the reading thread.
class ILineSource {
public:
    ILineSource() = default;
    ILineSource(const ILineSource&) = delete;
    ILineSource& operator=(const ILineSource&) = delete;
    virtual ~ILineSource() = default;

    /// The next line, without its line feed; waits for one if the source can wait. Nothing when
    /// there is none now, or at the end of the input never again.
    [[nodiscard]] virtual std::optional<std::string> TakeLine() = 0;

    /// True when no line will ever come again.
    [[nodiscard]] virtual bool HasEnded() const = 0;
};

/// Lines of a stream, without a carriage return before the line feed.
class CStreamSource final : public ILineSource {
public:
    /// @param stream  outlives this object
    explicit CStreamSource(std::istream& stream) noexcept : stream_(stream) {}

    [[nodiscard]] std::optional<std::string> TakeLine() override {
        std::string line;
        if (!std::getline(stream_, line)) {
            return std::nullopt;
        }
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        return line;
    }

    [[nodiscard]] bool HasEnded() const override { return !stream_.good(); }

private:
    std::istream& stream_;
};

}  // namespace brenquil
