// What is expected of a search beyond its answer. None of it changes the tree.
//
// A record with everything off is the settled way; the program decides what is turned on.
#pragma once

namespace brenquil {

/// Each is a promise to whoever reads the reports.
struct SearchManners {
    /// Every finished iteration is reported, the last one too, and with all lines of MultiPV the
    /// best is always among them.
    bool showsEveryIteration = false;

    /// Wherever there is a legal move one is named, and never an illegal one, after a report with a
    /// score. A position without moves is not searched.
    bool alwaysNamesMove = false;

    /// `infinite` is answered after a stop alone and `ponder` after a stop or a hit, whatever else
    /// would end the search. The clocks of a pondering search begin at the hit.
    bool waitsForItsRelease = false;

    /// A reported line that is shorter than its depth is continued from the table, and ends where
    /// the game does.
    bool completesLines = false;
};

}  // namespace brenquil
