// Sharing a processor with those who wait for an answer.
//
// Most systems interrupt a thread by themselves, and these functions cost nothing there. A browser
// page that is not isolated has one thread only: while it computes, no message reaches it. The
// build for such pages runs the search as a cooperative thread (cooperative_thread.h), and the
// search calls these at the places where it can be left for a while.
#pragma once

namespace brenquil {

/// Called every few thousand nodes: lets waiting messages through when some milliseconds have
/// passed since that was done last. No locks are held, and the objects of the search are in a state
/// in which a command may ask it to stop.
void GiveWay() noexcept;

/// Called again and again by a search that has nothing left to do but wait: sleeps for about a
/// millisecond.
void Rest() noexcept;

/// Called before the caller waits for a word of the search: where threads do not run by themselves
/// the search runs to its end here.
void LetSearchFinish() noexcept;

}  // namespace brenquil
