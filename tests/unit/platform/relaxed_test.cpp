// ctest: threads

#include "platform/relaxed.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>

namespace brenquil {
namespace {

constinit Relaxed<int> initialisedAtCompileTime = 7;

TEST(Relaxed, StartsWithZeroOrTheGivenValue) {
    const Relaxed<std::uint64_t> zero;
    const Relaxed<bool> yes = true;
    EXPECT_EQ(zero.Load(), 0U);
    EXPECT_TRUE(yes);
    EXPECT_EQ(initialisedAtCompileTime, 7);
}

TEST(Relaxed, ReadsAndTakesValuesLikeAVariable) {
    Relaxed<int> value;
    value = 5;
    EXPECT_EQ(value + 1, 6);
    value.Store(-3);
    EXPECT_EQ(value.Load(), -3);
}

TEST(Relaxed, ACopyIsIndependent) {
    Relaxed<int> first = 1;
    Relaxed<int> second = first;
    first = 2;
    EXPECT_EQ(second, 1);
    second = first;
    first = 3;
    EXPECT_EQ(second, 2);
}

TEST(Relaxed, AddLossilyWrapsLikeTheType) {
    Relaxed<std::uint8_t> value = std::uint8_t{250};
    value.AddLossily(10);
    EXPECT_EQ(value, 4);
}

TEST(Relaxed, ACounterWithOneWriterIsSeenGrowingByOthers) {
    constexpr std::uint64_t Rounds = 200000;
    Relaxed<std::uint64_t> counter;
    std::thread writer([&counter] {
        for (std::uint64_t round = 0; round < Rounds; ++round) {
            counter.AddLossily(1);
        }
    });
    std::uint64_t last = 0;
    bool neverBackwards = true;
    while (last < Rounds) {
        const std::uint64_t now = counter;
        neverBackwards = neverBackwards && now >= last;
        last = now;
        std::this_thread::yield();
    }
    writer.join();
    EXPECT_TRUE(neverBackwards);
    EXPECT_EQ(counter, Rounds);
}

}  // namespace
}  // namespace brenquil
