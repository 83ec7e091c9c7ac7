#include "platform/relaxed.h"
#include "platform/thread.h"

#include <chrono>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

namespace brenquil {
namespace {

void SetToOne(void* argument) {
    *static_cast<int*>(argument) = 1;
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
    for (int i = 0; i < 20000 && !flag; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
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

TEST(Thread, JoinAndDetachWithoutAThreadReturnAtOnce) {
    CThreadHandle thread;
    thread.Join();
    thread.Detach();
    int value = 0;
    ASSERT_TRUE(thread.Start(&SetToOne, &value));
    thread.Join();
    thread.Join();
    thread.Detach();
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

TEST(Thread, ADetachedThreadRunsOn) {
    static Gate gate;
    CThreadHandle thread;
    ASSERT_TRUE(thread.Start(&WaitAtGate, &gate));
    thread.Detach();
    thread.Join();
    EXPECT_FALSE(gate.passed);
    gate.open = true;
    EXPECT_TRUE(BecomesTrue(gate.passed));
}

TEST(Thread, DestroyingTheHandleDoesNotWait) {
    static Gate gate;
    std::optional<CThreadHandle> thread;
    thread.emplace();
    ASSERT_TRUE(thread->Start(&WaitAtGate, &gate));
    thread.reset();
    EXPECT_FALSE(gate.passed);
    gate.open = true;
    EXPECT_TRUE(BecomesTrue(gate.passed));
}

}  // namespace
}  // namespace brenquil
