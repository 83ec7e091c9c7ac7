#include "platform/cooperative_thread.h"
#include "platform/thread.h"

namespace brenquil {

namespace {

/// Whose thread the cooperative one is.
const CThreadHandle* owner = nullptr;

}  // namespace

CThreadHandle::~CThreadHandle() {
    Join();
}

/// The search gets the one cooperative thread there is; its helpers get none.
bool CThreadHandle::Start(void (*entry)(void*), void* argument) noexcept {
    Join();
    if (!CCooperativeThread::Start(entry, argument)) {
        return false;
    }
    owner = this;
    return true;
}

void CThreadHandle::Join() noexcept {
    if (owner == this) {
        CCooperativeThread::Finish();
        owner = nullptr;
    }
}

}  // namespace brenquil
