// How the table layer ends the program when a table file cannot be what its name says.
//
// A damaged file that is found at registration is no case for an answer of false: the user has to
// hear of it. The message goes to standard output, behind three asterisks, and the exit code is 1.
#pragma once

#include <string>

namespace brenquil {

/// Prints "*** ", the message and a line feed, and ends the program with code 1. Nothing is
/// destroyed: other threads may still be running.
[[noreturn]] void NalimovFatal(const std::string& message);

/// Ends the program with code 1 and says nothing.
[[noreturn]] void NalimovEnd();

}  // namespace brenquil
