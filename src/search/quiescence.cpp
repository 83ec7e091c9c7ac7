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

/// A move that is made and searched if it is legal. True if it ends the node: by a cut-off, or as
/// the search was stopped.
[[gnu::always_inline]] inline bool CSearch::EndsQuiescence(QuiescenceNode& node,
                                                           Move move) noexcept {
    if (!position_.MakeMove(move)) {
        return false;
    }
    ++node.legalMoves;
    const Score value = -Quiescence(node.ply + 1, node.qply + 1, -node.beta, -node.alpha);
    position_.UndoMove(move);
    if (stop_) {
        return true;
    }
    if (value <= node.alpha) {
        return false;
    }
    node.alpha = value;
    return value >= node.beta;
}

/// The captures and promotions of a quiescence node that did not stand pat.
[[gnu::noinline]] Score CSearch::SearchCaptures(int ply, int qply, Score alpha,
                                                Score beta) noexcept {
    // On the stack the lists of a line are close together, and only their used part is touched.
    MoveList moves;
    generator_.GenerateCaptures(moves);
    QuiescenceNode node{ply, qply, alpha, beta};
    for (int index = 0; index < moves.count; ++index) {
        // `GenerateCaptures` has taken the first already.
        const Move move = index == 0 ? moves[0] : TakeBest(moves, index);
        if ((!NeedsExchangeTest(move, position_) || !LosesExchange(position_, move)) &&
            EndsQuiescence(node, move)) {
            break;
        }
    }
    return node.alpha;
}

/// All moves of a quiescence node in check, the captures in their order first.
[[gnu::noinline]] Score CSearch::SearchEvasions(int ply, int qply, Score alpha,
                                                Score beta) noexcept {
    MoveList moves;
    generator_.GenerateEvasions(moves);
    static_cast<void>(ScoreCaptures(moves, position_));
    QuiescenceNode node{ply, qply, alpha, beta};
    for (int index = 0; index < moves.count; ++index) {
        if (EndsQuiescence(node, TakeBest(moves, index))) {
            break;
        }
    }
    return node.legalMoves == 0 ? MatedAt(ply) : node.alpha;
}

}  // namespace brenquil
