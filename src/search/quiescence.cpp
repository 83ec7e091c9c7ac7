#include "board/capture_order.h"
#include "board/score.h"
#include "board/static_exchange.h"
#include "search/search.h"

namespace brenquil {

/// Small on purpose: no table, no bases, no repetition, no quiet checks. In check every evasion is
/// searched, so a mate can be found; otherwise captures and promotions that do not lose material
/// by the exchange test. Fail-soft on a move's cut-off, `beta` itself on standing pat.
Score CSearch::Quiescence(std::int32_t ply, std::int32_t qply, Score alpha, Score beta) noexcept {
    nodes_.AddLossily(1);
    CheckLimits(ply);
    if (stop_) {
        return alpha;
    }
    if (qply > seldepth_) {
        seldepth_ = qply;
    }
    const bool inCheck = position_.inCheck;
    if (!inCheck) {
        const Score standPat = evaluation_.Evaluate(alpha, beta);
        if (standPat > alpha) {
            alpha = standPat;
            if (standPat >= beta) {
                return beta;
            }
        }
    }

    // On the stack the lists of a line lie close together, and only their used part is touched.
    CSelectionList moves;
    if (inCheck) {
        generator_.GenerateEvasions(moves.list);
        moves.Restart(ScoreCaptures(moves.list, position_));
    } else {
        generator_.GenerateCaptures(moves.list);
        moves.RestartWithBestFirst();
    }

    std::int32_t legalMoves = 0;
    while (!moves.IsAtEnd()) {
        const Move move = moves.Take();
        if (!inCheck && NeedsExchangeTest(move, position_) && LosesExchange(position_, move)) {
            continue;
        }
        if (!position_.MakeMove(move)) {
            continue;
        }
        ++legalMoves;
        const Score value = -Quiescence(ply + 1, qply + 1, -beta, -alpha);
        position_.UndoMove(move);
        if (stop_) {
            return alpha;
        }
        if (value > alpha) {
            alpha = value;
            if (value >= beta) {
                break;
            }
        }
    }
    return inCheck && legalMoves == 0 ? MatedAt(ply) : alpha;
}

}  // namespace brenquil
