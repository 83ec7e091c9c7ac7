#include "eval/evaluation_options.h"

#include "text/text.h"

namespace brenquil {

CEvaluationOptions::CEvaluationOptions() : COptionGroup("Evaluation") {
    AddSpin(contempt, "Contempt", "Contempt", 0, -500, 500);
    AddSpin(lazyEvalMargin, "Lazy Eval Margin", "Lazy Eval Margin", 250, 0, 5000);
    AddPieceValue(pawn, "Pawn", 0);
    AddPieceValue(knight, "Knight", 1);
    AddPieceValue(bishop, "Bishop", 2);
    AddPieceValue(rook, "Rook", 3);
    AddPieceValue(queen, "Queen", 4);
    AddCheck(useEndgameEval, "Use Endgame Eval", "Use Endgame Eval", true);
}

void CEvaluationOptions::AddPieceValue(COptionSpin& option, std::string_view optionName,
                                       std::size_t type) {
    Relaxed<std::int32_t>& pieceValue = pieceValues[type];
    AddSpin(option, optionName, optionName, pieceValue, 0, 2000,
            [&pieceValue](const std::string& value) {
                if (IsNumeric(value)) {
                    pieceValue = COptionSpin::Bound(ToInteger(value));
                }
            });
}

}  // namespace brenquil
