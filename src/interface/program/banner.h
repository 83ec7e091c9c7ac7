// The four lines with which the program begins.
#pragma once

#include "interface/line_output.h"

namespace brenquil {

/// Prints name, version, build date and author between two empty lines.
void PrintBanner(CLineOutput& output);

}  // namespace brenquil
