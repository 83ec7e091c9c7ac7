#include "platform/cooperative_thread.h"
#include "platform/give_way.h"

namespace brenquil {

void GiveWay() noexcept {
    CCooperativeThread::StepAside(0);
}

void Rest() noexcept {
    // Longer than elsewhere: a page that waits should not keep a phone awake.
    constexpr int Milliseconds = 10;
    CCooperativeThread::StepAside(Milliseconds);
}

void LetSearchFinish() noexcept {
    CCooperativeThread::Finish();
}

}  // namespace brenquil
