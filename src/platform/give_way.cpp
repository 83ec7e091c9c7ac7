#include "platform/give_way.h"

#include <chrono>
#include <thread>

namespace brenquil {

void GiveWay() noexcept {
    // The system takes the processor when others need it.
}

void Rest() noexcept {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void LetSearchFinish() noexcept {
    // Threads run by themselves.
}

}  // namespace brenquil
