// The option group "Output": what the program prints, and in which notation.
//
// The search threads read the fields while they print. Two options steer others' fields: Logging
// switches the protocol's log, and UCI_AnalyseMode a flag of the evaluation, which may know nothing
// of this room; both are passed in.
#pragma once

#include "interface/protocol.h"
#include "text/option.h"

namespace brenquil {

/// The options of the output.
class COutputOptions final : public COptionGroup {
public:
    /// @param protocol     its `logging` follows the option Logging
    /// @param analyseMode  follows the option UCI_AnalyseMode
    COutputOptions(CProtocol& protocol, Relaxed<bool>& analyseMode);

    COptionCheck ponder;             ///< `bestmove` names a ponder move
    COptionCheck chess960;           ///< castling is written and read as king takes rook
    COptionCheck analyse;            ///< contempt is left out of the evaluation
    COptionCheck showCurrLine;       ///< `info currline` lines
    COptionCheck showRefutations;    ///< `info refutation` lines
    COptionCheck showDatabaseMoves;  ///< a line of database moves behind `bestmove`
    COptionString engineAbout;
    COptionCheck logging;
    COptionCheck debug;  ///< setoption answers; no UCI option, set by the command `debug`
};

}  // namespace brenquil
