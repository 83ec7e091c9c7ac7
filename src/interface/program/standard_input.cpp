#include "interface/program/standard_input.h"

#include "interface/command_loop.h"

#include <utility>

namespace brenquil {

namespace {

std::size_t BytesOf(const std::string& line) noexcept {
    return sizeof(std::string) + line.size();
}

}  // namespace

CStandardInput::~CStandardInput() {
    {
        const std::lock_guard lock(mutex_);
        closing_ = true;
        changed_.notify_all();
    }
    thread_.Join();
}

std::optional<std::string> CStandardInput::TakeLine() {
    if (!readsAhead_) {
        return stream_.TakeLine();
    }
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !lines_.empty() || hasEnded_; });
    if (lines_.empty()) {
        return std::nullopt;
    }
    std::string line = std::move(lines_.front());
    lines_.pop_front();
    bytes_ -= BytesOf(line);
    changed_.notify_all();
    return line;
}

bool CStandardInput::HasEnded() const {
    if (!readsAhead_) {
        return stream_.HasEnded();
    }
    const std::lock_guard lock(mutex_);
    return lines_.empty() && hasEnded_;
}

bool CStandardInput::IsEndWaiting() {
    if (std::this_thread::get_id() != reader_) {
        return false;
    }
    if (!readsAhead_) {
        readsAhead_ = thread_.Start(&CStandardInput::ReadAhead, this);
        return false;
    }
    const std::lock_guard lock(mutex_);
    return endFound_;
}

void CStandardInput::ReadAhead(void* input) {
    static_cast<CStandardInput*>(input)->ReadAhead();
}

void CStandardInput::ReadAhead() {
    bool isLast = false;
    while (!isLast) {
        std::optional<std::string> line = stream_.TakeLine();
        std::unique_lock lock(mutex_);
        if (!line) {
            hasEnded_ = true;
            changed_.notify_all();
            return;
        }
        isLast = IsLastCommand(CommandWord(*line));
        endFound_ = endFound_ || isLast;
        changed_.wait(lock, [this] { return bytes_ < MostBytesAhead || closing_; });
        bytes_ += BytesOf(*line);
        lines_.push_back(std::move(*line));
        changed_.notify_all();
        isLast = isLast || closing_;
    }
}

}  // namespace brenquil
