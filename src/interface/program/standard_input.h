// Standard input as the source of the reading thread's lines, and how a `quit` is seen when that
// thread is stuck.
//
// The reading thread waits for searches: for the end of one before it changes what the search
// reads, and for one that is writing a line before it writes its own. Both are over in a moment,
// unless nobody reads what the program writes; then they last for ever, and the `quit` after them
// would never be seen. So when a wait gets long, a thread of this object reads on in the reading
// thread's place, and when it finds a command that ends the program, the program ends.
//
// In all other sessions the reading thread reads for itself, and there is no such thread.
#pragma once

#include "interface/line_source.h"
#include "platform/thread.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <istream>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace brenquil {

/// The lines of standard input. Made by the reading thread, and never destroyed while the stream
/// may still bring a line, for which the object's thread would go on waiting.
class CStandardInput final : public ILineSource {
public:
    /// At most this many bytes are read ahead; a `quit` further on is not found.
    static constexpr std::size_t MostBytesAhead = 16U << 20U;

    /// @param stream  outlives this object
    explicit CStandardInput(std::istream& stream) noexcept : stream_(stream) {}

    CStandardInput(const CStandardInput&) = delete;
    CStandardInput& operator=(const CStandardInput&) = delete;
    ~CStandardInput() override;

    [[nodiscard]] std::optional<std::string> TakeLine() override;
    [[nodiscard]] bool HasEnded() const override;

    /// To be called now and then while a thread waits for a search. On the reading thread the first
    /// call begins to read ahead, and later ones return whether a command that ends the program has
    /// been found. On another thread nothing happens.
    [[nodiscard]] bool IsEndWaiting();

private:
    static void ReadAhead(void* input);
    void ReadAhead();

    CStreamSource stream_;
    const std::thread::id reader_ = std::this_thread::get_id();
    bool readsAhead_ = false;  ///< the reading thread's own; from then on the stream is the other's

    mutable std::mutex mutex_;  ///< guards all below
    std::condition_variable changed_;
    std::deque<std::string> lines_;
    std::size_t bytes_ = 0;
    bool endFound_ = false;
    bool hasEnded_ = false;
    bool closing_ = false;

    CThreadHandle thread_;  ///< last, so that it is joined before the rest goes
};

}  // namespace brenquil
