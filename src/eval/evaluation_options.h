// The option group "Evaluation": the piece values and what else steers the static score.
//
// Search threads read the options themselves, at any time and without a lock, on every evaluation.
// Exchange values are constants elsewhere and do not follow these options.
#pragma once

#include "text/option.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

namespace brenquil {

/// The options of the evaluation.
class CEvaluationOptions final : public COptionGroup {
public:
    CEvaluationOptions() : COptionGroup("Evaluation") {
        for (COptionSpin& value : pieceValues) {
            value.onChange = [this](const std::string&) {
                pieceValuesVersion.fetch_add(1, std::memory_order_release);
            };
        }
    }

    COptionSpin contempt = AddSpin("Contempt", 0, -500, 500);
    COptionSpin lazyEvalMargin = AddSpin("Lazy Eval Margin", 250, 0, 5000);
    /// By piece type, pawn to queen.
    std::array<COptionSpin, 5> pieceValues = {
        AddSpin("Pawn", 100, 0, 2000), AddSpin("Knight", 400, 0, 2000),
        AddSpin("Bishop", 400, 0, 2000), AddSpin("Rook", 600, 0, 2000),
        AddSpin("Queen", 1200, 0, 2000)};
    /// Raised after each change of a piece value. Who keeps sums of them reads it (acquire) before
    /// the values: sums made of old values are then never taken for sums of the new ones.
    std::atomic<std::uint32_t> pieceValuesVersion{0};

    COptionCheck useEndgameEval = AddCheck("Use Endgame Eval", true);

    /// Leaves the contempt out of the score. It steers the evaluation and is listed by the group
    /// of the output.
    COptionCheck analyse{nullptr, {"UCI_AnalyseMode", ""}, false};
};

}  // namespace brenquil
