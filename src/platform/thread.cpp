#include "platform/thread.h"

#include <cassert>
#include <exception>

namespace brenquil {

CThreadHandle::~CThreadHandle() {
    Join();
}

bool CThreadHandle::Start(void (*entry)(void*), void* argument) noexcept {
    assert(entry != nullptr);
    Join();
    try {
        // noexcept: an exception of the entry function ends the program where it is thrown, with
        // the stack intact.
        thread_ = std::thread([entry, argument]() noexcept { entry(argument); });
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

void CThreadHandle::Join() noexcept {
    if (thread_.joinable()) {
        thread_.join();
    }
}

}  // namespace brenquil
