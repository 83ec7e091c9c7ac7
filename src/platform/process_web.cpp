#include "platform/process.h"

#include <emscripten.h>

/// The host's half is in web/engine/host.js: it ends the worker in which all threads live.
extern "C" void brenquil_ended(int status);

namespace brenquil {

void EndProcess(int code) noexcept {
    brenquil_ended(code);
    // Until the worker is gone: leaves this call and delivers no more messages to the worker.
    emscripten_exit_with_live_runtime();
}

}  // namespace brenquil
