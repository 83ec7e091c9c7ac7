#include "search/threads.h"

#include "board/score.h"
#include "platform/give_way.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

namespace brenquil {

namespace {

/// Many times what the end of a search takes.
constexpr auto LongWait = std::chrono::milliseconds(500);

}  // namespace

CWorkerThread::CWorkerThread(const SearchContext& context, const CPosition& root)
    : CSearchThread(context) {
    position = root;
}

/// The search is fresh from its constructor and is not reset here: that could undo a stop.
void CWorkerThread::Run() {
    for (int depth = 1; depth <= DeepestIteration && !search_.IsStopped(); ++depth) {
        static_cast<void>(search_.AlphaBeta(depth, 0, -MateScore, MateScore, false));
    }
}

void CWorkerList::Start(const CPosition& root) {
    Stop();
    const int threads = std::min(context_.options.threads.number.Load(), MaxThreads);
    for (int worker = 1; worker < threads; ++worker) {
        if (!StartOne(root)) {
            return;  // the search goes on with the workers there are
        }
    }
}

bool CWorkerList::StartOne(const CPosition& root) {
    try {
        auto worker = std::make_unique<CWorkerThread>(context_, root);
        const std::lock_guard lock(mutex_);
        if (stopRequested_) {
            return false;
        }
        workers_.push_back(std::move(worker));
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (workers_.back()->Start()) {
        return true;
    }
    const std::lock_guard lock(mutex_);
    workers_.pop_back();
    return false;
}

std::uint64_t CWorkerList::Nodes() const noexcept {
    std::uint64_t nodes = 0;
    for (const auto& worker : workers_) {
        nodes += worker->Nodes();
    }
    return nodes;
}

/// All flags come before the first wait: a worker that has not been told to stop takes its share of
/// the processors from those that are waited for.
void CWorkerList::Stop() noexcept {
    for (const auto& worker : workers_) {
        worker->RequestStop();
    }
    for (const auto& worker : workers_) {
        worker->Join();
    }
    decltype(workers_) ended;
    const std::lock_guard lock(mutex_);
    ended.swap(workers_);
}

void CWorkerList::RequestStop() noexcept {
    const std::lock_guard lock(mutex_);
    stopRequested_ = true;
    for (const auto& worker : workers_) {
        worker->RequestStop();
    }
}

void CWorkerList::Reset() noexcept {
    const std::lock_guard lock(mutex_);
    stopRequested_ = false;
}

CMasterThread::CMasterThread(const SearchContext& context, ISearchReceiver& receiver,
                             const SearchManners& manners)
    : CSearchThread(context),
      workers_(context),
      root_(search_, position, context, workers_, receiver, manners) {}

bool CMasterThread::Start(const SearchLimits& limits) {
    EndSearch();
    if (!root_.Begin(limits)) {
        return true;
    }
    workers_.Reset();
    SetSearching(true);
    if (!StartThread()) {
        SetSearching(false);
        return false;
    }
    return true;
}

void CMasterThread::Run() {
    root_.Think();
    SetSearching(false);
}

void CMasterThread::SetSearching(bool isSearching) noexcept {
    const std::lock_guard lock(mutex_);
    isSearching_ = isSearching;
    searchEnded_.notify_all();
}

void CMasterThread::Stop() noexcept {
    root_.Release();
    workers_.RequestStop();
}

/// A `stop` that comes too late does no harm: the next search begins with a reset.
void CMasterThread::EndSearch() noexcept {
    Stop();
    WaitForSearch();
}

void CMasterThread::WaitForSearch() noexcept {
    LetSearchFinish();
    {
        std::unique_lock lock(mutex_);
        while (!searchEnded_.wait_for(lock, LongWait, [this] { return !isSearching_; })) {
            if (onLongWait) {
                onLongWait();
            }
        }
    }
    JoinThread();
}

}  // namespace brenquil
