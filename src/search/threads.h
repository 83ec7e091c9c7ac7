// The threads of a search: one master for the whole program, and workers for the length of one
// search.
//
// Every thread runs a complete search of the same position on objects of its own; the threads help
// one another only through the shared hash table. There is no split point, no queue and no vote: a
// worker sees a table filled by the others and takes other paths by timing alone. Only the master
// reports and decides, and the workers' results are thrown away.
#pragma once

#include "board/position.h"
#include "platform/memory.h"
#include "platform/thread.h"
#include "search/root_search.h"
#include "search/search.h"
#include "search/search_limits.h"
#include "search/search_receiver.h"
#include "search/workers.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace brenquil {

/// Something that runs on a thread of its own.
class CThread {
public:
    CThread() = default;
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;
    CThread(CThread&&) = delete;
    CThread& operator=(CThread&&) = delete;
    virtual ~CThread() = default;

    /// The thread's work.
    virtual void Run() = 0;

protected:
    /// Runs `Run` on a new thread; false if the system gives none.
    [[nodiscard]] bool StartThread() noexcept { return handle_.Start(&ThreadEntry, this); }

    void JoinThread() noexcept { handle_.Join(); }

private:
    static void ThreadEntry(void* object) { static_cast<CThread*>(object)->Run(); }

    CThreadHandle handle_;
};

/// A thread that searches: a position and the search on it. All of it is used at every node, and a
/// worker is made anew for each search, so a worker lies in one huge page.
class CSearchThread : public CThread, public CInHugePages {
public:
    explicit CSearchThread(const SearchContext& context) : search_(position, context) {}

    CPosition position;

protected:
    CSearch search_;
};

/// A helper for one search. Its results live in the shared hash table only.
class CWorkerThread final : public CSearchThread {
public:
    /// Takes over the master's position whole, with the history that its repetition test needs.
    CWorkerThread(const SearchContext& context, const CPosition& root);

    /// Searches deeper and deeper until the stop flag is set or the last depth is done. There is no
    /// root logic here: the table can answer at the root, so a worker races through depths that
    /// others have done.
    void Run() override;

    /// False if the system gives no thread; the object then does nothing.
    [[nodiscard]] bool Start() noexcept { return StartThread(); }

    /// Asks the search to stop and returns at once.
    void RequestStop() noexcept { search_.RequestStop(); }

    /// Waits for the end of the thread.
    void Join() noexcept { JoinThread(); }

    [[nodiscard]] std::uint64_t Nodes() const noexcept { return search_.Nodes(); }
};

/// The workers of the search under way; empty between searches. Used by the master's thread alone,
/// but for `RequestStop` and `Reset`.
class CWorkerList final : public IWorkers {
public:
    /// More threads than this are not started, whatever the option says: each takes two megabytes.
    static constexpr int MaxThreads = 256;

    explicit CWorkerList(const SearchContext& context) noexcept : context_(context) {}

    CWorkerList(const CWorkerList&) = delete;
    CWorkerList& operator=(const CWorkerList&) = delete;

    ~CWorkerList() override { Stop(); }

    void Start(const CPosition& root) override;
    [[nodiscard]] std::uint64_t Nodes() const noexcept override;
    void Stop() noexcept override;

    /// Asks the present workers to stop, lets no more be started until `Reset`, and returns at
    /// once. For the reading thread: where threads share a processor, the master would learn of a
    /// `stop` only after each worker has had its turn.
    void RequestStop() noexcept;

    /// Takes `RequestStop` back. Called before a search starts.
    void Reset() noexcept;

private:
    [[nodiscard]] bool StartOne(const CPosition& root);

    SearchContext context_;
    std::vector<std::unique_ptr<CWorkerThread>> workers_;
    bool stopRequested_ = false;
    std::mutex mutex_;  ///< guards changes of the list against `RequestStop`, and the flag
};

/// The one search thread that reports. Its position is the game position: the one that
/// `position`, `ucinewgame` and the console commands act on. All operations but `Run` are the
/// reading thread's. In the program the object lives until the process ends, whatever its thread is
/// doing.
class CMasterThread final : public CSearchThread {
public:
    CMasterThread(const SearchContext& context, ISearchReceiver& receiver,
                  const SearchManners& manners = {});
    CMasterThread(const CMasterThread&) = delete;
    CMasterThread& operator=(const CMasterThread&) = delete;

    ~CMasterThread() override { EndSearch(); }

    /// Ends a search that is under way, then answers from the bases or starts a search on the
    /// position with these limits, and returns. False if the system gives no thread.
    [[nodiscard]] bool Start(const SearchLimits& limits);

    /// Asks the search to stop and returns at once. The best move comes from the search's thread.
    void Stop() noexcept;

    /// Clears the pause flag, which only `SearchManners::waitsForItsRelease` ever sets.
    void PonderHit() noexcept { root_.ClearPause(); }

    /// Stops a search that is under way and waits until it has reported its best move. Needed
    /// before anything that a search reads is rewritten. Takes the time of a node or two.
    void EndSearch() noexcept;

    /// Waits until the search under way has ended by itself, and then for its thread.
    void WaitForSearch() noexcept;

    /// Nodes of the last search, all threads together.
    [[nodiscard]] std::uint64_t Nodes() const noexcept { return search_.Nodes(); }

    void Run() override;

    /// Called now and then by a thread that has waited for the end of a search longer than it can
    /// take: the search is stuck writing a line that nobody reads. May be null; set before the
    /// first search.
    std::function<void()> onLongWait;

private:
    void SetSearching(bool isSearching) noexcept;

    CWorkerList workers_;
    CRootSearch root_;
    bool isSearching_ = false;  ///< true only while there is a thread that will clear it
    std::condition_variable searchEnded_;
    std::mutex mutex_;  ///< guards the flag
};

}  // namespace brenquil
