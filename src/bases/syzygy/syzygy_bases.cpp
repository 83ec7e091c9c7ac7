#include "bases/syzygy/syzygy_bases.h"

#include "board/move_generator.h"
#include "board/score.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace brenquil {

namespace {

/// "0" for a draw, otherwise the sign of the value and what it leads to.
[[nodiscard]] std::string MarkOf(int value, std::string_view what) {
    if (value == 0) {
        return "0";
    }
    return std::string(1, value > 0 ? '+' : '-').append(what);
}

}  // namespace

bool CSyzygyBasesWDL::ProbeSearch(Score& score, const CPosition& position, int /*depth*/, int ply) {
    const int tbClass = probe_.SyzygyProbeWDL(position);
    if (tbClass == TbNoClass) [[likely]] {
        return false;
    }
    score = probe_.SignOf(tbClass) * (MateScore - ply);
    return true;
}

bool CSyzygyBasesWDL::ProbeRoot(Move& /*move*/, const CPosition& /*position*/) {
    return false;
}

bool CSyzygyBasesWDL::ProbeMoveInfo(BaseMoveInfo& info, Move move, const CPosition& position) {
    if (!probe_.Covers(position.MenCount())) {
        return false;
    }
    CPosition copy;
    copy.CopyFrom(position);
    // The copy may let another rook castle than the position does.
    if (!CMoveGenerator(copy).IsPseudoLegal(move) || !copy.MakeMove(move)) {
        return false;
    }
    const int tbClass = probe_.SyzygyProbeWDL(copy);
    if (tbClass == TbNoClass) {
        return false;
    }
    const Score score = -probe_.SignOf(tbClass) * MateScore;
    info.move = move;
    info.move.SetOrder(score);
    info.text = MarkOf(score, "M?");
    return true;
}

bool CSyzygyBasesDTZ::ProbeSearch(Score& /*score*/, const CPosition& /*position*/, int /*depth*/,
                                  int /*ply*/) {
    return false;
}

bool CSyzygyBasesDTZ::ProbeRoot(Move& move, const CPosition& position) {
    return probe_.TbResultToMove(probe_.SyzygyProbeRoot(position), move);
}

bool CSyzygyBasesDTZ::ProbeMoveInfo(BaseMoveInfo& info, Move move, const CPosition& position) {
    if (!probe_.Covers(position.MenCount())) {
        return false;
    }
    CPosition copy;
    copy.CopyFrom(position);
    PvLine line;
    Move next = move;
    // The given move may be impossible on the copy, as above; what the tables answer is not.
    while (line.count < PvLine::Capacity && CMoveGenerator(copy).IsPseudoLegal(next) &&
           copy.MakeMove(next) && ProbeRoot(next, copy)) {
        line.Append(next);
    }
    if (line.count == 0) {
        return false;
    }
    const int distance = -line[0].Order();
    int sortScore = 0;
    if (distance != 0) {
        sortScore = distance > 0 ? MateScore - distance : distance - MateScore;
    }
    info.text = MarkOf(distance, std::string(1, 'Z') += std::to_string(std::abs(distance)));
    // The sort score of this class alone is turned for Black, so its rows stand with the worst move
    // first. Required behaviour.
    info.move = move;
    info.move.SetOrder(position.sideToMove == Black ? -sortScore : sortScore);
    info.line = line;
    return true;
}

}  // namespace brenquil
