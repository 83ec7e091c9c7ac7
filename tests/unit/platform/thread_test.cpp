// ctest: threads

#include "platform/relaxed.h"
#include "platform/thread.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace brenquil {
namespace {

void SetToOne(void* argument) {
    *static_cast<int*>(argument) = 1;
}

void SetToOneLate(void* argument) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    SetToOne(argument);
}

// Two flags by which a test and its thread talk.
struct Gate {
    Relaxed<bool> open;
    Relaxed<bool> passed;
};

void WaitAtGate(void* argument) {
    auto* const gate = static_cast<Gate*>(argument);
    while (!gate->open) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    gate->passed = true;
}

bool BecomesTrue(const Relaxed<bool>& flag) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!flag && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    return flag;
}

TEST(Thread, JoinWaitsAndMakesTheResultVisible) {
    CThreadHandle thread;
    int value = 0;
    ASSERT_TRUE(thread.Start(&SetToOne, &value));
    thread.Join();
    EXPECT_EQ(value, 1);
}

TEST(Thread, RunsBesideItsStarter) {
    CThreadHandle thread;
    Gate gate;
    ASSERT_TRUE(thread.Start(&WaitAtGate, &gate));
    EXPECT_FALSE(gate.passed);
    gate.open = true;
    thread.Join();
    EXPECT_TRUE(gate.passed);
}

TEST(Thread, JoinWithoutAThreadReturnsAtOnce) {
    CThreadHandle thread;
    thread.Join();
    int value = 0;
    ASSERT_TRUE(thread.Start(&SetToOne, &value));
    thread.Join();
    thread.Join();
    EXPECT_EQ(value, 1);
}

TEST(Thread, OneHandleServesOneThreadAfterAnother) {
    CThreadHandle thread;
    for (int i = 0; i < 20; ++i) {
        int value = 0;
        ASSERT_TRUE(thread.Start(&SetToOne, &value));
        thread.Join();
        ASSERT_EQ(value, 1);
    }
}

TEST(Thread, StartingAgainWaitsForTheThreadBefore) {
    CThreadHandle thread;
    int first = 0;
    int second = 0;
    ASSERT_TRUE(thread.Start(&SetToOneLate, &first));
    ASSERT_TRUE(thread.Start(&SetToOne, &second));
    EXPECT_EQ(first, 1);
    thread.Join();
    EXPECT_EQ(second, 1);
}

TEST(Thread, DestroyingTheHandleWaits) {
    int value = 0;
    {
        CThreadHandle thread;
        ASSERT_TRUE(thread.Start(&SetToOneLate, &value));
    }
    EXPECT_EQ(value, 1);
}

// Under Wine one thread in some fifty that were detached at once never ran.
TEST(Thread, NoneIsLost) {
    CThreadHandle thread;
    for (int i = 0; i < 500; ++i) {
        Gate gate;
        gate.open = true;
        ASSERT_TRUE(thread.Start(&WaitAtGate, &gate));
        ASSERT_TRUE(BecomesTrue(gate.passed)) << "round " << i;
        thread.Join();
    }
}

}  // namespace
}  // namespace brenquil
