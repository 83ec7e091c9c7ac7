#include "interface/output_options.h"

#include "interface/program/program_info.h"
#include "text/text.h"

namespace brenquil {

COutputOptions::COutputOptions(CProtocol& protocol, Relaxed<bool>& analyseMode)
    : COptionGroup("Output") {
    AddCheck(ponder, "Ponder", "Ponder", true);
    AddCheck(chess960, "UCI_Chess960", "Chess960", false);
    AddCheck(analyse, "UCI_AnalyseMode", "", false,
             [this, &analyseMode](const std::string&) { analyseMode = analyse.enabled; });
    AddCheck(showCurrLine, "UCI_ShowCurrLine", "Show Current Line", false);
    AddCheck(showRefutations, "UCI_ShowRefutations", "Show Refutations", false);
    AddCheck(showDatabaseMoves, "Show Database Moves", "Show Database Moves", false);
    AddString(engineAbout, "UCI_EngineAbout", "", HomePage);
    AddCheck(logging, "Logging", "Logging", false, [&protocol](const std::string& value) {
        // The fallback is false here: a text that is no truth value switches the log off, although
        // the option's own field keeps what it was.
        protocol.logging = ParseBool(value, false);
    });
    AddCheck(debug, "", "Debug", false);
}

}  // namespace brenquil
