// The ini file: the options as text, in the working directory.
//
// Read once at start, before the banner; written by the console command `ini` if there is none yet.
// A line is `name=value`. Text after a hash is dropped; a hash at the start of a line is dropped
// too, but not what follows it, so `# Hash=128` sets Hash. A line is heeded only if it has exactly
// two pieces around its equals signs.
#pragma once

#include "interface/line_output.h"
#include "text/option.h"

namespace brenquil {

/// Offers each setting of the file to the options. No file and unknown names are not errors.
void LoadIni(const OptionGroupList& groups);

/// Writes the present values of all options to a new file and says "created", or "already exists"
/// and leaves the file alone. If the file cannot be made it says nothing.
void WriteIni(const OptionGroupList& groups, CLineOutput& output);

}  // namespace brenquil
