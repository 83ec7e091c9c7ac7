// The option group "Output": what the program prints, and in which notation.
//
// The search threads read the options while they print.
#pragma once

#include "eval/evaluation_options.h"
#include "interface/program/program_info.h"
#include "text/option.h"

namespace brenquil {

/// The options of the output.
class COutputOptions final : public COptionGroup {
public:
    /// @param evaluation  holds one of the options that are listed here
    explicit COutputOptions(CEvaluationOptions& evaluation)
        : COptionGroup("Output"), analyse(Adopt(evaluation.analyse)) {}

    COptionCheck ponder = AddCheck("Ponder", true);  ///< `bestmove` names a ponder move
    /// Castling is written and read as king takes rook.
    COptionCheck chess960 = AddCheck({"UCI_Chess960", "Chess960"}, false);
    COptionCheck& analyse;
    /// `info currline` lines
    COptionCheck showCurrLine = AddCheck({"UCI_ShowCurrLine", "Show Current Line"}, false);
    /// `info refutation` lines
    COptionCheck showRefutations = AddCheck({"UCI_ShowRefutations", "Show Refutations"}, false);
    /// A line of database moves after `bestmove`.
    COptionCheck showDatabaseMoves = AddCheck("Show Database Moves", false);
    COptionString engineAbout = AddString({"UCI_EngineAbout", ""}, HomePage);
    COptionCheck logging = AddCheck("Logging", false);
    /// `setoption` answers; no UCI option, set by the command `debug`.
    COptionCheck debug = AddCheck({"", "Debug"}, false);
};

}  // namespace brenquil
