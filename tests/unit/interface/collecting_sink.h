// A sink that keeps the printed lines, for the tests of this room.
#pragma once

#include "interface/line_sink.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace brenquil {

/// Keeps lines without their line feeds.
class CCollectingSink final : public ILineSink {
public:
    void Write(const std::string& line) override {
        const std::lock_guard lock(mutex_);
        lines_.push_back(line.substr(0, line.find('\n')));
    }

    /// The lines since the last call.
    [[nodiscard]] std::vector<std::string> Take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }

private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace brenquil
