// The four lines with which the program begins.
#pragma once

#include "interface/protocol.h"

namespace brenquil {

/// Prints name, version, build date and author between two empty lines.
void PrintBanner(CProtocol& protocol);

}  // namespace brenquil
