// The one thread beside the reading one in a build without threads, as a guest of the browser's
// event loop.
//
// `Start` only notes the work and asks the host to call `brenquil_run_thread` soon, from its event
// loop. The work runs there on a stack of its own and, at each `GiveWay` that comes late enough,
// steps aside: its frames are put away (Asyncify), the event loop runs, and the host calls again.
// Meanwhile any command may run; one that needs the end of the search calls `Finish`, which brings
// the frames back and runs the work to its end on the spot, without stepping aside again.
//
// Only the functions of src/platform/ whose names end in `_single` use this.
#pragma once

namespace brenquil {

class CCooperativeThread {
public:
    /// Notes the work. False when there is some already: there is one such thread.
    [[nodiscard]] static bool Start(void (*entry)(void*), void* argument) noexcept;

    /// Runs the work to its end; returns at once when there is none, and when it is the work itself
    /// that calls.
    static void Finish() noexcept;

    /// Steps aside when the work has run for some milliseconds, `milliseconds` long at least. Does
    /// nothing outside the work, and while `Finish` waits for it.
    static void StepAside(int milliseconds) noexcept;
};

}  // namespace brenquil
