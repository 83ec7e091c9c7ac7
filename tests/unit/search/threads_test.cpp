// The master and its workers, with real threads.
// ctest: threads

#include "../../support/sanitized.h"
#include "fake_clock.h"
#include "search/threads.h"
#include "search_setup.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <cstdlib>
#include <sys/resource.h>
#endif

namespace brenquil {
namespace {

/// Waits for something that another thread does; false after far too long.
template <class Condition>
bool Eventually(Condition condition) {
    for (int i = 0; i < 60000; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

/// A base that knows nothing and notes which threads ask: each has a position of its own.
class CRollCall {
public:
    explicit CRollCall(CBaseList& bases) {
        base_.answer = [this](Score& score, const CPosition& position, int, int ply) {
            const std::lock_guard lock(mutex_);
            positions_.insert(&position);
            if (ply == 0) {
                rootPly = position.ply;
                rootRecordKey = position.undo[2].key;
                rootKey = position.key;
            }
            score = 0;
            return answers && ply > 0;
        };
        bases.Add(base_);
    }

    [[nodiscard]] std::size_t Threads() {
        const std::lock_guard lock(mutex_);
        return positions_.size();
    }

    void Forget() {
        const std::lock_guard lock(mutex_);
        positions_.clear();
    }

    std::atomic<bool> answers{false};
    std::atomic<std::int32_t> rootPly{0};
    std::atomic<std::uint64_t> rootRecordKey{0};
    std::atomic<std::uint64_t> rootKey{0};

private:
    CScriptedBase base_;
    std::mutex mutex_;
    std::set<const CPosition*> positions_;
};

/// A base that knows nothing and holds the threads that ask it, until they are released. A stopped
/// thread asks no more, so the number of questions tells whether one still searches.
class CWaitingRoom {
public:
    explicit CWaitingRoom(CBaseList& bases) {
        base_.answer = [this](Score&, const CPosition& position, int, int) {
            Ask(&position);
            return false;
        };
        bases.Add(base_);
    }

    [[nodiscard]] std::size_t Waiting() {
        const std::lock_guard lock(mutex_);
        return order_.size();
    }

    [[nodiscard]] std::uint64_t Questions() {
        const std::lock_guard lock(mutex_);
        return questions_;
    }

    /// `held` counts the threads in the order in which they came.
    void ReleaseAllBut(std::size_t held) {
        const std::lock_guard lock(mutex_);
        held_ = {order_[held]};
        isOpen_ = true;
        released_.notify_all();
    }

    void ReleaseAll() {
        const std::lock_guard lock(mutex_);
        held_.clear();
        isOpen_ = true;
        released_.notify_all();
    }

    const CPosition* onlyOne = nullptr;  ///< where set, all others pass; before the search starts

private:
    void Ask(const CPosition* who) {
        std::unique_lock lock(mutex_);
        ++questions_;
        if (onlyOne != nullptr && who != onlyOne) {
            return;
        }
        if (std::find(order_.begin(), order_.end(), who) == order_.end()) {
            order_.push_back(who);
        }
        released_.wait(lock, [&] {
            return isOpen_ && std::find(held_.begin(), held_.end(), who) == held_.end();
        });
    }

    CScriptedBase base_;
    std::mutex mutex_;
    std::condition_variable released_;
    std::vector<const CPosition*> order_;
    std::vector<const CPosition*> held_;
    bool isOpen_ = false;
    std::uint64_t questions_ = 0;
};

/// Waits until a count stays the same for a while; false if it never does.
template <class Count>
bool ComesToRest(Count count) {
    for (int i = 0; i < 100; ++i) {
        const auto before = count();
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        if (count() == before) {
            return true;
        }
    }
    return false;
}

class Threads : public testing::Test {
protected:
    ~Threads() override { master->EndSearch(); }

    void SetThreads(int count) { setup.Option("Threads", std::to_string(count)); }

    void Go(const SearchLimits& limits) { ASSERT_TRUE(master->Start(limits)); }

    void GoAndWait(const SearchLimits& limits) {
        Go(limits);
        master->WaitForSearch();
    }

    static SearchLimits Depth(std::int32_t depth) {
        SearchLimits limits;
        limits.depth = depth;
        return limits;
    }

    static SearchLimits Infinite() {
        SearchLimits limits;
        limits.infinite = true;
        return limits;
    }

    SearchSetup setup;
    CRecordingReceiver receiver;
    std::unique_ptr<CMasterThread> master =
        std::make_unique<CMasterThread>(setup.Context(), receiver);
};

using ThreadsSlow = Threads;

// Workers

TEST_F(Threads, OneThreadHasNoWorkers) {
    CRollCall rollCall(setup.bases);
    for (const int threads : {1, 0, -7}) {
        SetThreads(threads);
        rollCall.Forget();
        CWorkerList workers(setup.Context());
        workers.Start(setup.position);
        EXPECT_EQ(workers.Nodes(), 0U);
        workers.Stop();
        EXPECT_EQ(rollCall.Threads(), 0U);
    }
}

TEST_F(Threads, OptionCountsTheMaster) {
    CRollCall rollCall(setup.bases);
    for (const int threads : {2, 5, 8, 3}) {
        SetThreads(threads);
        rollCall.Forget();
        const auto wanted = static_cast<std::size_t>(threads);
        Go(Infinite());
        EXPECT_TRUE(Eventually([&] { return rollCall.Threads() == wanted; }));
        master->EndSearch();
        EXPECT_EQ(rollCall.Threads(), wanted);
    }
}

TEST_F(Threads, WorkerBeginsFromTheRootWithTheHistoryOfTheGame) {
    CRollCall rollCall(setup.bases);
    setup.Set(StartFen, "g1f3 g8f6 f3g1");
    SetThreads(2);
    CWorkerList workers(setup.Context());
    workers.Start(setup.position);
    EXPECT_TRUE(Eventually([&] { return rollCall.rootPly != 0; }));
    workers.Stop();
    EXPECT_EQ(rollCall.rootPly, setup.position.ply);
    EXPECT_EQ(rollCall.rootKey, setup.position.key);
    EXPECT_EQ(rollCall.rootRecordKey, setup.position.undo[2].key);
}

TEST_F(Threads, WorkersCountTheirNodesAndAreGoneAfterStop) {
    SetThreads(3);
    CWorkerList workers(setup.Context());
    workers.Start(setup.position);
    EXPECT_TRUE(Eventually([&] { return workers.Nodes() > 1000; }));
    workers.Stop();
    EXPECT_EQ(workers.Nodes(), 0U);
    workers.Stop();
}

// Told and awaited one after the other, 32 threads took a second to stop on one processor.
TEST_F(Threads, AllWorkersAreToldToStopBeforeOneIsWaitedFor) {
    SetThreads(5);
    for (std::size_t held = 0; held < 4; ++held) {
        CWaitingRoom room(setup.bases);
        CWorkerList workers(setup.Context());
        workers.Start(setup.position);
        ASSERT_TRUE(Eventually([&] { return room.Waiting() == 4; }));
        std::thread stopper([&] { workers.Stop(); });
        room.ReleaseAllBut(held);
        EXPECT_TRUE(ComesToRest([&] { return room.Questions(); }));
        room.ReleaseAll();
        stopper.join();
        setup.bases = CBaseList();
    }
}

// Among many threads on one processor the master has its turn, and sees its flag, late.
TEST_F(Threads, StopReachesTheWorkersWithoutTheMaster) {
    CWaitingRoom room(setup.bases);
    room.onlyOne = &master->position;
    SetThreads(4);
    Go(Infinite());
    ASSERT_TRUE(Eventually([&] { return room.Waiting() == 1 && room.Questions() > 100; }));
    master->Stop();
    EXPECT_TRUE(ComesToRest([&] { return room.Questions(); }));
    EXPECT_EQ(receiver.record.ends, 0);
    room.ReleaseAll();
    master->WaitForSearch();
    EXPECT_EQ(receiver.record.ends, 1);
}

TEST_F(Threads, StartingAgainReplacesTheWorkers) {
    CRollCall rollCall(setup.bases);
    SetThreads(4);
    CWorkerList workers(setup.Context());
    workers.Start(setup.position);
    EXPECT_TRUE(Eventually([&] { return rollCall.Threads() == 3; }));
    SetThreads(1);
    workers.Start(setup.position);
    EXPECT_EQ(workers.Nodes(), 0U);
}

TEST_F(Threads, WorkerAtTheEndOfItsDepthsEndsAloneAndTheSearchGoesOn) {
    CRollCall rollCall(setup.bases);
    rollCall.answers = true;  // every reply is known, so all depths are done at once
    SetThreads(2);
    CWorkerList workers(setup.Context());
    workers.Start(setup.position);
    // Its last entry is that of the root. How long it takes to get there proves nothing: on a busy
    // machine it may stand still meanwhile.
    EXPECT_TRUE(Eventually([&] {
        const auto root = setup.hash.Probe(setup.position.key);
        return root.has_value() && root->depth == 254;
    }));
    const std::uint64_t nodes = workers.Nodes();
    EXPECT_GE(nodes, 254U);  // a root for each depth
    EXPECT_EQ(workers.Nodes(), nodes);
    workers.Stop();  // joined before the next search begins, as every search is
    ASSERT_TRUE(master->Start(Infinite()));
    EXPECT_TRUE(Eventually([&] { return master->Nodes() > 5000; }));
    master->EndSearch();
    EXPECT_EQ(receiver.record.ends, 1);
}

TEST_F(Threads, WorkerStoppedByTheGameLengthEnds) {
    setup.Set("4k3/8/8/8/8/8/8/4K3 w - - 0 100000");
    SetThreads(3);
    CWorkerList workers(setup.Context());
    workers.Start(setup.position);
    EXPECT_TRUE(Eventually([&] { return workers.Nodes() == 2; }));  // a node each
    workers.Stop();
}

#if defined(__linux__) && !defined(BRENQUIL_IS_SANITIZED)
// A sanitizer would end the program itself.
//
// The tables and caches of a search are parts of its object, which is refused as a whole.
TEST_F(Threads, SearchGoesOnWithoutTheWorkersThatMemoryIsRefusedFor) {
    SetThreads(4);
    CWorkerList workers(setup.Context());
    const auto startWithoutMemory = [&] {
        rlimit limit = {};
        limit.rlim_cur = limit.rlim_max = 1;
        if (setrlimit(RLIMIT_AS, &limit) != 0) {
            std::_Exit(1);
        }
        // What the program has in reserve goes first.
        static void* volatile last = nullptr;
        for (std::size_t size = std::size_t{1} << 20U; size >= 1024; size /= 2) {
            do {
                last = std::malloc(size);
            } while (last != nullptr);
        }
        workers.Start(setup.position);
        std::_Exit(workers.Nodes() == 0 ? 0 : 1);
    };
    EXPECT_EXIT(startWithoutMemory(), testing::ExitedWithCode(0), "");
}
#endif

TEST_F(ThreadsSlow, BoundlessNumberOfThreadsIsCutAt256) {
    CRollCall rollCall(setup.bases);
    ASSERT_TRUE(setup.hash.Resize(0));  // nobody is spared a question by another's entry
    SetThreads(100000);
    rollCall.answers = true;
    CWorkerList workers(setup.Context());
    workers.Start(setup.position);
    EXPECT_TRUE(Eventually([&] { return rollCall.Threads() == 255; }));
    workers.Stop();
    EXPECT_EQ(rollCall.Threads(), 255U);
}

// Master

TEST_F(Threads, OneThreadReportsTheSameEachTime) {
    GoAndWait(Depth(6));
    const std::vector<std::string> first = receiver.record.texts;
    receiver.record = {};
    setup.hash.Clear();
    GoAndWait(Depth(6));
    EXPECT_EQ(receiver.record.texts, first);
    EXPECT_EQ(receiver.record.statistics.back().nodes, master->Nodes());
}

TEST_F(Threads, NodesOfSeveralThreadsAreASum) {
    SetThreads(4);
    SearchLimits limits;
    limits.nodes = 50000;
    GoAndWait(limits);
    EXPECT_GE(receiver.record.statistics.back().nodes, 50'000U);
    EXPECT_EQ(receiver.record.statistics.back().nodes, master->Nodes());
    EXPECT_EQ(receiver.record.ends, 1);  // the workers may use it up before the first iteration
}

TEST_F(Threads, ChangesBetweenSearchesTakeEffectAtTheNext) {
    CRollCall rollCall(setup.bases);
    for (const int threads : {3, 1, 8, 2, 1}) {
        SetThreads(threads);
        rollCall.Forget();
        receiver.record = {};
        const auto wanted = static_cast<std::size_t>(threads);
        Go(Infinite());
        EXPECT_TRUE(Eventually([&] { return rollCall.Threads() == wanted; }));
        SetThreads(5);  // too late for this search
        const std::uint64_t before = master->Nodes();
        EXPECT_TRUE(Eventually([&] { return master->Nodes() > before + 1000; }));
        master->EndSearch();
        EXPECT_EQ(rollCall.Threads(), wanted);
        EXPECT_EQ(receiver.record.ends, 1);
    }
}

TEST_F(Threads, StopAtAnyMomentOfTheStartGivesOneEnd) {
    SetThreads(8);
    for (int round = 0; round < 30; ++round) {
        receiver.record = {};
        Go(Infinite());
        if (round % 3 == 1) {
            std::this_thread::yield();
        } else if (round % 3 == 2) {
            std::this_thread::sleep_for(std::chrono::microseconds(round * 40));
        }
        master->Stop();
        master->WaitForSearch();
        ASSERT_EQ(receiver.record.ends, 1);
    }
}

TEST_F(Threads, StopWhileTheWorkersAreCreatedFindsNoBestMove) {
    // The stop comes before the thread of the search has begun.
    SetThreads(4);
    CWorkerList real(setup.Context());
    CFakeWorkers workers;
    workers.onStart = [&] {
        real.Start(setup.position);
        setup.search->RequestStop();
    };
    setup.ThinkOn(Depth(5), receiver, workers);
    real.Stop();
    EXPECT_EQ(receiver.record.texts.back(), "no best move");
    EXPECT_TRUE(receiver.record.pvs.empty());
    EXPECT_EQ(setup.search->Nodes(), 1U);
}

TEST_F(Threads, StopBeforeASearchDoesNotHinderIt) {
    master->Stop();
    GoAndWait(Depth(3));
    EXPECT_EQ(receiver.record.pvs.size(), 3U);
    EXPECT_FALSE(receiver.record.best.IsNone());
}

TEST_F(Threads, StopRightAfterStartIsNotLost) {
    for (int round = 0; round < 100; ++round) {
        receiver.record = {};
        Go(Infinite());
        master->Stop();
        master->WaitForSearch();
        ASSERT_EQ(receiver.record.ends, 1);
    }
}

TEST_F(Threads, SecondStartEndsTheFirst) {
    SetThreads(3);
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(master->Start(Infinite()));
    }
    master->EndSearch();
    EXPECT_EQ(receiver.record.ends, 20);
}

TEST_F(Threads, PonderHitChangesNothing) {
    SearchLimits limits;
    limits.ponder = true;
    limits.depth = 2;
    Go(limits);
    master->PonderHit();
    EXPECT_TRUE(Eventually([&] { return master->Nodes() > 50; }));
    master->PonderHit();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(receiver.record.ends, 0);
    master->EndSearch();
    EXPECT_EQ(receiver.record.ends, 1);
}

// What comes before the thread

TEST_F(Threads, AnswerOfABaseNeedsNoSearchAndKeepsTheClockAndTheTable) {
    CStoppedClock clock;
    GoAndWait(Depth(2));
    const std::uint64_t nodes = master->Nodes();
    CScriptedBase base;
    setup.bases.Add(base);
    base.rootMove = Move::Make(G1, F3);
    base.rootMove.SetOrder(-12);
    setup.bases.hits = 9;
    receiver.record = {};
    CStoppedClock::Advance(700);
    GoAndWait(Depth(3));
    EXPECT_EQ(receiver.record.texts,
              (std::vector<std::string>{PvText(1, 0, -12, -32000, 32000, 0,
                                               std::vector<Move>{base.rootMove},
                                               {nodes, setup.hash.Hashfull(), 1}),
                                        BestMoveText(base.rootMove, NoMove)}));
    EXPECT_EQ(receiver.record.pvs.back().statistics.ticks, 700U);
    EXPECT_EQ(setup.hash.Age(), 1U);
}

TEST_F(Threads, InfiniteAndPonderAskNoBase) {
    CScriptedBase base;
    setup.bases.Add(base);
    base.rootMove = Move::Make(G1, F3);
    for (const bool isInfinite : {true, false}) {
        receiver.record = {};
        SearchLimits limits = Depth(1);
        limits.infinite = isInfinite;
        limits.ponder = !isInfinite;
        Go(limits);
        EXPECT_TRUE(Eventually([&] { return master->Nodes() >= 20; }));
        master->EndSearch();
        EXPECT_EQ(receiver.record.statistics.size(), 1U);
        EXPECT_EQ(setup.hash.Age(), isInfinite ? 0U : 1U);
    }
}

TEST_F(Threads, SearchCountsTimeNodesHitsAndTableFromItsBeginning) {
    CStoppedClock clock(1000000);
    GoAndWait(Depth(3));
    setup.bases.hits = 9;
    CStoppedClock::Advance(5000);
    receiver.record = {};
    receiver.onPv = [](const SearchRecord::Pv&) { CStoppedClock::Advance(40); };
    GoAndWait(Depth(3));
    ASSERT_EQ(receiver.record.pvs.size(), 3U);
    const SearchStatistics& first = receiver.record.pvs.front().statistics;
    EXPECT_EQ(first.ticks, 0U);
    EXPECT_EQ(first.clock, 0);
    EXPECT_LT(first.nodes, 50U);
    EXPECT_EQ(first.baseHits, 0U);
    EXPECT_EQ(receiver.record.pvs.back().statistics.ticks, 80U);
    EXPECT_EQ(receiver.record.statistics.back().clock, 120);
    EXPECT_EQ(setup.hash.Age(), 2U);
    EXPECT_EQ(receiver.record.rootKeys, std::vector<std::uint64_t>{master->position.key});
}

TEST_F(Threads, EndSearchWithoutASearchReturns) {
    master->EndSearch();
    master->WaitForSearch();
    EXPECT_EQ(receiver.record.ends, 0);
}

}  // namespace
}  // namespace brenquil
