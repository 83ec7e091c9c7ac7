#include "platform/process.h"

#include <cstdlib>
#include <windows.h>

namespace brenquil {

/// The usual ways out of a process, std::_Exit among them, end its other threads one by one and
/// then run code of every library, which waits for ever for a lock that such a thread held.
void EndProcess(int code) noexcept {
    (void)TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    std::_Exit(code);  // for the compiler: the line above does not return
}

}  // namespace brenquil
