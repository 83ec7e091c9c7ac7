#include "search/threads.h"

#include "board/score.h"

#include <algorithm>
#include <new>

namespace brenquil {

CWorkerThread::CWorkerThread(const SearchContext& context, const CPosition& root)
    : CSearchThread(context) {
    position = root;
}

/// The search is fresh from its constructor and is not reset here: that could undo a stop.
void CWorkerThread::Run() {
    for (std::int32_t depth = 1; depth <= DeepestIteration && !search_.IsStopped(); ++depth) {
        static_cast<void>(search_.AlphaBeta(depth, 0, -MateScore, MateScore, false));
    }
}

void CWorkerThread::Stop() noexcept {
    search_.RequestStop();
    JoinThread();
}

void CWorkerList::Start(const CPosition& root) {
    Stop();
    const std::int32_t threads = std::min(context_.options.threads.number.Load(), MaxThreads);
    for (std::int32_t worker = 1; worker < threads; ++worker) {
        try {
            workers_.push_back(std::make_unique<CWorkerThread>(context_, root));
        } catch (const std::bad_alloc&) {
            return;  // the search goes on with the workers there are
        }
        if (!workers_.back()->Start()) {
            workers_.pop_back();
            return;
        }
    }
}

std::uint64_t CWorkerList::Nodes() const noexcept {
    std::uint64_t nodes = 0;
    for (const auto& worker : workers_) {
        nodes += worker->Nodes();
    }
    return nodes;
}

void CWorkerList::Stop() noexcept {
    for (const auto& worker : workers_) {
        worker->Stop();
    }
    workers_.clear();
}

CMasterThread::CMasterThread(const SearchContext& context, ISearchReceiver& receiver)
    : CSearchThread(context),
      workers_(context),
      root_(search_, position, context, workers_, receiver) {}

bool CMasterThread::Start(const SearchLimits& limits) {
    EndSearch();
    if (!root_.Begin(limits)) {
        return true;
    }
    SetSearching(true);
    if (!StartThread()) {
        SetSearching(false);
        return false;
    }
    // Nothing joins the master: `quit` ends the process under it, and who needs its end waits for
    // the flag, which is the last thing that it touches.
    DetachThread();
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

/// A `stop` that comes too late does no harm: the next search begins with a reset.
void CMasterThread::EndSearch() noexcept {
    search_.RequestStop();
    WaitForSearch();
}

void CMasterThread::WaitForSearch() noexcept {
    std::unique_lock lock(mutex_);
    searchEnded_.wait(lock, [this] { return !isSearching_; });
}

}  // namespace brenquil
