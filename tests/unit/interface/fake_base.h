// A base whose answers a test writes down beforehand.
#pragma once

#include "bases/base.h"

#include <map>
#include <string>

namespace brenquil {

/// Knows the moves that were entered; the first of them, if any, is its root move.
class CFakeBase final : public IBase {
public:
    [[nodiscard]] std::uint32_t GetPriority() const override { return 0; }

    [[nodiscard]] bool ProbeSearch(Score&, const CPosition&, int, int) override { return false; }

    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition&) override {
        ++rootProbes;
        move = rootMove;
        return !rootMove.IsNone();
    }

    [[nodiscard]] bool ProbeMoveInfo(BaseMoveInfo& info, Move move, const CPosition&) override {
        const auto found = rows.find(move.Identity());
        if (found == rows.end()) {
            return false;
        }
        info = found->second;
        return true;
    }

    /// Makes the base know a move.
    void Enter(Move move, int score, const std::string& text, const PvLine& line = {}) {
        BaseMoveInfo info;
        info.move = move;
        info.move.SetOrder(score);
        info.text = text;
        info.line = line;
        rows[move.Identity()] = info;
    }

    Move rootMove{0};
    int rootProbes = 0;
    std::map<std::uint16_t, BaseMoveInfo> rows;
};

}  // namespace brenquil
