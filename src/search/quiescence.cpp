#include "board/capture_order.h"
#include "board/score.h"
#include "board/static_exchange.h"
#include "search/search.h"

#include <cassert>

namespace brenquil {

/// Small on purpose: no table, no bases, no repetition, no quiet checks. In check every evasion is
/// searched, so a mate can be found; otherwise captures and promotions that do not lose material
/// by the exchange test. Fail-soft on a move's cut-off, `beta` itself on standing pat.
Score CSearch::Quiescence(int ply, int qply, Score alpha, Score beta) noexcept {
    assert(ply >= 0 && ply <= MaxPly && qply >= 0);
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

    // On the stack the lists of a line are close together, and only their used part is touched.
    MoveList moves;
    if (inCheck) {
        generator_.GenerateEvasions(moves);
        static_cast<void>(ScoreCaptures(moves, position_));
    } else {
        generator_.GenerateCaptures(moves);
    }

    int legalMoves = 0;
    for (int index = 0; index < moves.count; ++index) {
        // `GenerateCaptures` has taken the first already.
        const Move move = index == 0 && !inCheck ? moves[0] : TakeBest(moves, index);
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
