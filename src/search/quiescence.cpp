#include "board/capture_order.h"
#include "board/score.h"
#include "board/static_exchange.h"
#include "search/search.h"

#include <cassert>

namespace brenquil {

/// Small on purpose: no table, no bases, no repetition, no quiet checks. In check every evasion is
/// searched, so a mate can be found; otherwise captures and promotions that do not lose material
/// by the exchange test. Fail-soft on a move's cut-off, `beta` itself on standing pat.
///
/// Nearly half of these nodes end by standing pat, before anything of the rest has been set up.
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
    if (position_.inCheck) [[unlikely]] {
        return SearchEvasions(ply, qply, alpha, beta);
    }
    const Score standPat = evaluation_.Evaluate(alpha, beta);
    if (standPat > alpha) {
        alpha = standPat;
        if (standPat >= beta) {
            return beta;
        }
    }
    return SearchCaptures(ply, qply, alpha, beta);
}

/// The captures and promotions of a quiescence node that did not stand pat.
[[gnu::noinline]] Score CSearch::SearchCaptures(int ply, int qply, Score alpha,
                                                Score beta) noexcept {
    // On the stack the lists of a line are close together, and only their used part is touched.
    MoveList moves;
    generator_.GenerateCaptures(moves);
    if (moves.count == 0) {
        return alpha;
    }
    // `GenerateCaptures` has taken the first already.
    Move move = moves[0];
    for (int index = 1;; ++index) {
        if ((!NeedsExchangeTest(move, position_) || !LosesExchange(position_, move)) &&
            position_.MakeMove(move)) {
            const Score value = -Quiescence(ply + 1, qply + 1, -beta, -alpha);
            position_.UndoMove(move);
            if (stop_) {
                return alpha;
            }
            if (value > alpha) {
                alpha = value;
                if (value >= beta) {
                    return alpha;
                }
            }
        }
        if (index >= moves.count) {
            return alpha;
        }
        move = TakeBest(moves, index);
    }
}

/// All moves of a quiescence node in check, the captures in their order first.
[[gnu::noinline]] Score CSearch::SearchEvasions(int ply, int qply, Score alpha,
                                                Score beta) noexcept {
    MoveList moves;
    generator_.GenerateEvasions(moves);
    static_cast<void>(ScoreCaptures(moves, position_));
    int legalMoves = 0;
    for (int index = 0; index < moves.count; ++index) {
        const Move move = TakeBest(moves, index);
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
    return legalMoves == 0 ? MatedAt(ply) : alpha;
}

}  // namespace brenquil
