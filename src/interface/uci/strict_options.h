// The options that strict UCI has beyond the settled list: the names that other programs use for
// existing ones, and what match tools set. None of them is in the ini file.
#pragma once

#include "text/option.h"

namespace brenquil {

/// A group without a place in the ini file.
class CStrictOptions final : public COptionGroup {
public:
    CStrictOptions() : COptionGroup("Strict UCI") {}

    COptionPath syzygyPath = AddPath({"SyzygyPath", ""});  ///< the same as "Syzygy Path"
    /// Milliseconds that are taken off every clock, for the move's way to the opponent.
    COptionSpin moveOverhead = AddSpin({"Move Overhead", ""}, 10, 0, 5000);
    COptionButton clearHash = AddButton({"Clear Hash", ""});
    COptionCheck showWdl = AddCheck({"UCI_ShowWDL", ""}, false);  ///< chances after the score
};

}  // namespace brenquil
