// Standard input and output as plain bytes.
#pragma once

namespace brenquil {

/// To be called once, before the first byte is read or written. From then on every byte passes as
/// it is: a line ends in one line feed, and nothing but the end of the input ends it. Windows would
/// otherwise write a carriage return before each line feed, and take the byte 26 for the end.
void UseBinaryStandardStreams() noexcept;

/// True when what is written to standard output is seen by a person at once: it is a terminal, and
/// no file or pipe.
[[nodiscard]] bool StandardOutputIsTerminal() noexcept;

/// False when standard output is a pipe that nobody will ever read from again. Where a system does
/// not tell that before something is written, true.
[[nodiscard]] bool StandardOutputHasReader() noexcept;

}  // namespace brenquil
