#include "tables/workers.h"

#include "tables/table_error.h"

#include <system_error>

namespace brenquil {

namespace {

std::atomic<bool> endIsRequested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

thread_local bool isInsideLoop = false;

}  // namespace

void RequestEnd() noexcept {
    endIsRequested.store(true, std::memory_order_relaxed);
}

void ThrowIfEnding() {
    if (endIsRequested.load(std::memory_order_relaxed)) {
        throw CInterrupted();
    }
}

CWorkers::CWorkers(std::size_t threads) {
    try {
        for (std::size_t thread = 1; thread < threads; ++thread) {
            threads_.emplace_back(&CWorkers::Run, this, thread);
        }
    } catch (const std::system_error&) {  // fewer, then
    }
}

CWorkers::~CWorkers() {
    {
        const std::lock_guard guard(mutex_);
        isEnding_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void CWorkers::ForEach(std::size_t count, const Work& work) {
    if (isInsideLoop || threads_.empty()) {
        for (std::size_t item = 0; item < count; ++item) {
            ThrowIfEnding();
            work(item, 0);
        }
        return;
    }
    {
        const std::lock_guard guard(mutex_);
        work_ = &work;
        count_ = count;
        next_ = 0;
        isOpen_ = true;
        failure_ = nullptr;
        ++round_;
    }
    wake_.notify_all();
    TakeItems(0);
    std::unique_lock lock(mutex_);
    isOpen_ = false;
    done_.wait(lock, [this] { return busy_ == 0; });
    if (failure_ != nullptr) {
        std::rethrow_exception(failure_);
    }
}

void CWorkers::Run(std::size_t thread) {
    std::size_t seen = 0;
    for (;;) {
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [&] { return isEnding_ || round_ != seen; });
            if (isEnding_) {
                return;
            }
            seen = round_;
            if (!isOpen_) {
                continue;
            }
            ++busy_;
        }
        TakeItems(thread);
        const std::lock_guard guard(mutex_);
        if (--busy_ == 0) {
            done_.notify_one();
        }
    }
}

void CWorkers::TakeItems(std::size_t thread) noexcept {
    isInsideLoop = true;
    try {
        for (;;) {
            const std::size_t item = next_.fetch_add(1, std::memory_order_relaxed);
            if (item >= count_) {
                break;
            }
            ThrowIfEnding();
            (*work_)(item, thread);
        }
    } catch (...) {
        const std::lock_guard guard(mutex_);
        if (failure_ == nullptr) {
            failure_ = std::current_exception();
        }
        next_ = count_;
    }
    isInsideLoop = false;
}

}  // namespace brenquil
