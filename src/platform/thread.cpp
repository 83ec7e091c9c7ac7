#include "platform/thread.h"

#include <exception>
#include <system_error>

namespace brenquil {

CThreadHandle::~CThreadHandle() {
    Detach();
}

bool CThreadHandle::Start(void (*entry)(void*), void* argument) noexcept {
    Detach();
    try {
        // noexcept: an exception of the entry function ends the program where it is thrown, with
        // its stack.
        thread_ = std::thread([entry, argument]() noexcept { entry(argument); });
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

void CThreadHandle::Join() noexcept {
    if (!thread_.joinable()) {
        return;
    }
    try {
        thread_.join();
    } catch (const std::system_error&) {
        // Only a thread that joins itself gets here. It cannot wait for its own end.
        Detach();
    }
}

void CThreadHandle::Detach() noexcept {
    if (!thread_.joinable()) {
        return;
    }
    try {
        thread_.detach();
    } catch (const std::system_error&) {
        // The system no longer knows the thread, so there is nothing left to let go of.
        return;
    }
}

}  // namespace brenquil
