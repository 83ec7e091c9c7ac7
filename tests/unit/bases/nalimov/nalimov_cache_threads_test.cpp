// The block cache, read by many threads at once.
// ctest: threads

#include "nalimov_cache_fixture.h"

#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <vector>

namespace brenquil {
namespace {

class NalimovCacheThreads : public CNalimovCacheTest {
protected:
    /// Registers all tables of three men and one of four, of which the cache holds a part. Returns
    /// the contents of the large one, kqkr.nbw.
    Bytes OpenMoreThanTheCacheHolds() {
        WriteThreeMen();
        const Bytes large = Pattern(Positions("kqkr", 0), 99);
        folder.Write("kqkr.nbw.emd", test::Compressed(large));
        Register();
        cache->Resize(1);
        return large;
    }
};

/// Runs work(seed) on this many threads at once, each with a seed of its own.
template <class Work>
void RunOnThreads(unsigned count, const Work& work) {
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < count; ++seed) {
        threads.emplace_back(work, seed);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// Threads that read everything in random order from a cache that cannot hold it.
TEST_F(NalimovCacheThreads, EightThreadsOnOneMegabyteReadRightValues) {
    const Bytes large = OpenMoreThanTheCacheHolds();
    std::atomic<int> wrong{0};
    const auto work = [&](unsigned seed) {
        std::mt19937 random(seed);
        for (int probe = 0; probe < 3000; ++probe) {
            const bool isLarge = random() % 2 == 0;
            const std::size_t file = random() % contents.size();
            const Bytes& bytes = isLarge ? large : contents[file];
            const std::size_t at = random() % bytes.size();
            const int value = isLarge ? cache->ReadValue(TableNumber("kqkr"), 0, at)
                                      : cache->ReadValue(static_cast<int>(file / 2) + 1,
                                                         static_cast<int>(file % 2), at);
            wrong += value == Meaning(bytes[at]) ? 0 : 1;
        }
    };
    RunOnThreads(8, work);
    EXPECT_EQ(wrong, 0);
}

TEST_F(NalimovCacheThreads, ThirtyTwoThreadsDecodeAtOnceWhileFilesFail) {
    const Bytes large = OpenMoreThanTheCacheHolds();
    std::filesystem::remove(folder / "kpk.nbb");
    std::atomic<int> wrong{0};
    std::atomic<int> failed{0};
    const auto work = [&](unsigned seed) {
        std::mt19937 random(seed);
        for (int probe = 0; probe < 500; ++probe) {
            const std::size_t at = random() % large.size();
            wrong += cache->ReadValue(TableNumber("kqkr"), 0, at) == Meaning(large[at]) ? 0 : 1;
            failed += cache->ReadValue(1, 1, random() % 80000) == NoValue ? 1 : 0;
        }
    };
    RunOnThreads(32, work);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(failed, 32 * 500);
}

}  // namespace
}  // namespace brenquil
