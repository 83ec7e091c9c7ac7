#include "platform/clock.h"
#include "platform/cooperative_thread.h"

#include <cstdint>
#include <emscripten.h>

/// The host's half is in web/engine/host.js.
extern "C" {

/// Asks for a call of brenquil_run_thread from the event loop.
void brenquil_schedule_thread();

/// Puts the frames of the work away and asks for their return after that many milliseconds.
void brenquil_suspend_thread(int milliseconds);

/// Brings the frames back at once and returns when the work has ended.
void brenquil_resume_thread();
}

namespace brenquil {

namespace {

/// Half of what people notice, so that `stop` is obeyed at once whatever else takes time.
constexpr std::uint32_t LongestTurn = 8;

enum class State { None, Waiting, Running, Aside };

struct Work {
    void (*entry)(void*) = nullptr;
    void* argument = nullptr;
    State state = State::None;
    bool toItsEnd = false;  // somebody waits for it: no more stepping aside
    std::uint32_t turnStart = 0;
};

Work work;

}  // namespace

bool CCooperativeThread::Start(void (*entry)(void*), void* argument) noexcept {
    if (work.state != State::None) {
        return false;
    }
    work = {entry, argument, State::Waiting, false, 0};
    brenquil_schedule_thread();
    return true;
}

/// Called by the host, also to bring the frames back; then everything up to the call in StepAside
/// is skipped.
extern "C" EMSCRIPTEN_KEEPALIVE void brenquil_run_thread() {
    if (work.state != State::Waiting) {
        return;
    }
    work.state = State::Running;
    work.turnStart = TickCount();
    work.entry(work.argument);
    work.state = State::None;
}

void CCooperativeThread::Finish() noexcept {
    work.toItsEnd = true;
    if (work.state == State::Waiting) {
        brenquil_run_thread();
    } else if (work.state == State::Aside) {
        brenquil_resume_thread();
    }
}

void CCooperativeThread::StepAside(int milliseconds) noexcept {
    if (work.state != State::Running || work.toItsEnd) {
        return;
    }
    if (milliseconds == 0 && TickCount() - work.turnStart < LongestTurn) {
        return;
    }
    work.state = State::Aside;
    brenquil_suspend_thread(milliseconds);
    work.state = State::Running;
    work.turnStart = TickCount();
}

}  // namespace brenquil
