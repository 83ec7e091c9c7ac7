// The option group "Evaluation": the piece values and what else steers the static score.
//
// Search threads read the fields directly, at any time and without a lock, on every evaluation.
// Exchange values are constants elsewhere and do not follow these options.
#pragma once

#include "platform/relaxed.h"
#include "text/option.h"

#include <array>
#include <cstdint>

namespace brenquil {

/// The options of the evaluation.
class CEvaluationOptions final : public COptionGroup {
public:
    CEvaluationOptions();

    /// Piece values by piece type, pawn to queen, steered by the five options named after them.
    std::array<Relaxed<std::int32_t>, 5> pieceValues{100, 400, 400, 600, 1200};

    /// True leaves the contempt out of the score. Written by the interface, whose option it is.
    Relaxed<bool> analyseMode{false};

    COptionSpin contempt;
    COptionSpin lazyEvalMargin;
    COptionSpin pawn;
    COptionSpin knight;
    COptionSpin bishop;
    COptionSpin rook;
    COptionSpin queen;
    COptionCheck useEndgameEval;

private:
    void AddPieceValue(COptionSpin& option, std::string_view optionName, std::size_t type);
};

}  // namespace brenquil
