// How the table layer ends the program when a table file cannot be what its name says.
//
// A damaged file that is found at registration is not a case for an answer of false: the user has
// to hear of it. The message goes to standard output, after three asterisks, and the exit code is
// 1.
#pragma once

#include "bases/host.h"

#include <string>

namespace brenquil {

/// Prints "*** ", the message and a line feed, and ends the program.
[[noreturn]] inline void NalimovFatal(IHost& host, const std::string& message) {
    host.Fail(IHost::Stream::Output, "*** " + message + "\n");
}

}  // namespace brenquil
