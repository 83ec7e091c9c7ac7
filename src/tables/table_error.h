// What ends a command early: it is thrown where it happens and caught by the program's main
// function, which prints the text and ends with status 1. Nothing half-made is left behind: files
// are written under another name first.
#pragma once

#include <stdexcept>

namespace brenquil {

class CTableError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The memory is cannot be had, or is not allowed.
class COutOfMemory : public CTableError {
public:
    using CTableError::CTableError;
};

/// The user has asked for the end, by an interrupt from the keyboard or a signal of the system.
class CInterrupted : public CTableError {
public:
    CInterrupted() : CTableError("interrupted") {}
};

}  // namespace brenquil
