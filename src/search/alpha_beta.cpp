// The node of the search. Its steps, in the order of `AlphaBeta`'s body: limits, repetition, hash
// table, bases, horizon, static pruning, null move, the moves, the result. A step that may end the
// node answers with a score, or with nothing to go on.
//
// What the four selective steps win or cost is stated beside each: the nodes that the positions of
// the bench take to depth 7 with the step switched off by its option, over those with all of them.

#include "board/score.h"
#include "search/search.h"

#include <cassert>

namespace brenquil {

namespace {

constexpr int DeepestStaticPruning = 3;
constexpr int FewestMenForStaticPruning = 5;
constexpr int ExtensionDepthOffPv = 6;

/// From this depth on a node that is evaluated asks the shared table for the pawns that the cache
/// of its thread lacks: it knows half of them. Nearer to the horizon it knows a third, and to wait
/// for its answer takes longer than to compute them.
constexpr int ShallowestPawnFetch = 2;

/// King and pawns are not enough: the side could be in zugzwang, where passing is the best "move".
bool HasPiece(const CPosition& position, Colour colour) noexcept {
    return position.colourCount[colour] != position.pieceCount[MakePiece(King, colour)] +
                                               position.pieceCount[MakePiece(Pawn, colour)];
}

}  // namespace

Score CSearch::SearchRoot(int depth) noexcept {
    assert(master_ != nullptr && depth > 0);
    pv_[0].count = 0;
    nodes_.AddLossily(1);
    CheckLimits(0);
    Node node{depth, 0, -MateScore, MateScore, position_.inCheck, true};
    if (stop_ || !SearchMoves<true>(node)) {
        return node.alpha;
    }
    return StoreResult(node);
}

Score CSearch::AlphaBeta(int depth, int ply, Score alpha, Score beta, bool afterNull) noexcept {
    assert(ply >= 0 && ply <= MaxPly);
    pv_[ply].count = 0;
    nodes_.AddLossily(1);
    CheckLimits(ply);
    if (stop_) {
        return alpha;
    }
    if (!afterNull && ply > 0 && IsRepetition()) {
        return DrawScore;
    }
    if (depth >= ShallowestPawnFetch && depth <= DeepestStaticPruning) {
        evaluation_.FetchPawns();  // while the table's entry is on its way
    }
    if (const auto score = ProbeTable(depth, alpha, beta)) {
        return *score;
    }
    if (const auto score = ProbeBases(depth, ply)) {
        return *score;
    }
    if (depth < 1 && !position_.inCheck) {
        nodes_.SubtractLossily(1);  // quiescence counts it again
        return Quiescence(ply, 0, alpha, beta);
    }

    Node node{depth, ply, alpha, beta, position_.inCheck, beta - alpha > 1};
    if (const auto score = PruneStatically(node)) {
        return *score;
    }
    if (const auto score = TryNullMove(node, afterNull)) {
        return *score;
    }
    if (!SearchMoves<false>(node)) {
        return node.alpha;  // stopped: an unfinished node leaves no trace in the table
    }
    return StoreResult(node);
}

/// One earlier occurrence is a draw, in the search as in the game before it. Every record is
/// compared, the end of the walk (a capture, a pawn move or a null move) included.
bool CSearch::IsRepetition() const noexcept {
    const UndoRecord* const bottom = position_.undo.begin();
    const std::uint64_t key = position_.key;
    for (const UndoRecord* record = bottom + position_.ply; record != bottom;) {
        --record;
        if (record->key == key) {
            return true;
        }
        if (record->halfmoveClock == 0) {
            return false;
        }
    }
    return false;
}

MaybeScore CSearch::ProbeTable(int depth, Score alpha, Score beta) const noexcept {
    const auto hit = hash_.Probe(position_.key);
    if (!hit) {
        return NoScore;
    }
    if (hit->depth < depth) {
        // The move will be tried first, unless the node is pruned meanwhile.
        if (position_.board[hit->move.From()] != PieceNone) [[likely]] {
            PrefetchAfter(hit->move, MayPassBelow(depth));
        }
        return NoScore;
    }
    switch (hit->bound) {
    case Bound::Exact: return MaybeScore(hit->score);
    case Bound::Upper: return hit->score <= alpha ? MaybeScore(alpha) : NoScore;
    case Bound::Lower: return hit->score >= beta ? MaybeScore(beta) : NoScore;
    }
    return NoScore;
}

MaybeScore CSearch::ProbeBases(int depth, int ply) {
    Score score = 0;
    return bases_.ProbeSearch(score, position_, depth, ply) ? MaybeScore(score) : NoScore;
}

/// Razoring at the lower bound and reverse futility at the upper one: near the horizon a static
/// score far outside the window is believed. Without it 2.86 times the nodes.
MaybeScore CSearch::PruneStatically(const Node& node) noexcept {
    if (node.inCheck || node.isPv || node.depth < 1 || node.depth > DeepestStaticPruning ||
        position_.MenCount() < FewestMenForStaticPruning || !options_.useFutility.enabled) {
        return NoScore;
    }
    const Score margin = options_.futilityMargins[node.depth - 1].Bounded();
    const Score lower = node.alpha - margin;
    const Score upper = node.beta + margin;
    const Score value = evaluation_.Evaluate(lower, upper);
    if (value <= lower) {
        // On purpose the node stays counted here and is counted by quiescence once more.
        return MaybeScore(Quiescence(node.ply, 0, node.alpha, node.beta));
    }
    if (value >= upper) {
        return MaybeScore(node.beta);
    }
    return NoScore;
}

/// If even passing keeps the score above beta, a move surely does. No verification, no special
/// treatment of mate scores, and no look at the stop flag. Without it 1.18 times the nodes; at
/// depth 5 it still costs more than it wins (0.93).
MaybeScore CSearch::TryNullMove(const Node& node, bool afterNull) noexcept {
    if (afterNull || node.inCheck || node.isPv || !options_.useNullmove.enabled ||
        node.depth < options_.nullmoveMinDepth.number ||
        !HasPiece(position_, position_.sideToMove)) {
        return NoScore;
    }
    position_.MakeNullMove();
    const Score value = -AlphaBeta(node.depth - options_.nullmoveReduction.Bounded() - 1,
                                   node.ply + 1, -node.beta, 1 - node.beta, true);
    position_.UndoNullMove();
    return value >= node.beta ? MaybeScore(node.beta) : NoScore;
}

/// The moves of a node, at the root with what the master wants of them. False if the search was
/// stopped.
template <bool IsRoot>
bool CSearch::SearchMoves(Node& node) noexcept {
    CMovePicker& picker = pickers_[node.ply];
    picker.Reset(node.ply, MayPassBelow(node.depth));
    for (Move move = NextMove(picker); !move.IsNone(); move = NextMove(picker)) {
        if (IsRoot && !master_->IsRootMoveWanted(move)) {
            continue;
        }
        const Piece moved = position_.board[move.From()];
        const bool isQuiet = IsQuiet(move);
        if (!position_.MakeMove(move)) {
            continue;
        }
        ++node.legalMoves;
        currentLine_.Append(move);
        const Score value =
            IsRoot ? SearchRootMove(node, move) : SearchInnerMove(node, move, moved, isQuiet);
        currentLine_.RemoveLast();
        position_.UndoMove(move);
        if (stop_) {
            return false;
        }
        if constexpr (IsRoot) {
            master_->RootMoveIsScored(move, value);
        } else if (isQuiet) {
            HistoryOf(moved, move.To()).Count(value >= node.beta);
        }
        if (value > node.alpha) {
            if (isQuiet) {
                LearnFromSuccess(node, move, moved, value);
            }
            RaiseAlpha(node, move, value);
            if (value >= node.beta) {
                break;
            }
        }
    }
    return true;
}

bool CSearch::IsQuiet(Move move) const noexcept {
    return (move.Kind() == MoveKind::Normal || move.Kind() == MoveKind::Castling) &&
           position_.board[move.To()] == PieceNone;
}

/// A ply for a check and a ply for a pawn one step from promotion. After `MakeMove`. This is the
/// step that costs nodes: without it 0.78 times as many.
int CSearch::ExtensionOf(const Node& node, Move move, Piece moved) const noexcept {
    if ((!node.isPv && node.depth >= ExtensionDepthOffPv) || !options_.useExtensions.enabled) {
        return 0;
    }
    const bool isPawnOnSeventh =
        TypeOf(moved) == Pawn && RelativeRank(move.To(), ColourOf(moved)) == 6;
    return (position_.inCheck ? 1 : 0) + (isPawnOnSeventh ? 1 : 0);
}

/// Late quiet moves that have mostly failed are searched one ply less deep. Counts the moves that
/// qualify; the first few of them are spared. After `MakeMove`. Without it 1.41 times the nodes.
int CSearch::ReductionOf(Node& node, Move move, Piece moved, int extension,
                         bool isQuiet) const noexcept {
    if (!isQuiet || extension != 0 || node.isPv || node.inCheck || position_.inCheck ||
        node.depth < options_.lmrMinDepth.number || !options_.useLmr.enabled) {
        return 0;
    }
    const HistoryEntry& history = HistoryOf(moved, move.To());
    if (history.hits > std::uint64_t{2} * history.misses) {
        return 0;
    }
    ++node.reducible;
    return options_.lmrMinMoves.number <= node.reducible ? 1 : 0;
}

/// A move that stands on the board, extended or reduced.
Score CSearch::SearchInnerMove(Node& node, Move move, Piece moved, bool isQuiet) noexcept {
    const int extension = ExtensionOf(node, move, moved);
    const int reduction = ReductionOf(node, move, moved, extension, isQuiet);
    return SearchMove(node, node.depth - 1 + extension - reduction, reduction);
}

/// A root move that stands on the board: extended by a check alone and never reduced. With
/// "MultiPV" every move has a window wide enough for an exact score near the best.
Score CSearch::SearchRootMove(const Node& node, Move move) noexcept {
    master_->RootMoveBegins(move, node.legalMoves);
    const bool isExtended = position_.inCheck && options_.useExtensions.enabled;
    const int newDepth = isExtended ? node.depth : node.depth - 1;
    Score value = 0;
    if (options_.multiPv.number > 1) {
        const Score delta = options_.multiPvDelta.Bounded();
        value = -AlphaBeta(newDepth, 1, -node.beta - delta, delta - node.alpha, false);
    } else {
        value = SearchMove(node, newDepth, 0);
    }
    master_->RootMoveEnds(move, node.depth);
    return value;
}

/// Principal variation search of the move that stands on the board: the first with the whole
/// window, the others with a null window and again if they turn out better.
[[gnu::always_inline]] inline Score CSearch::SearchMove(const Node& node, int newDepth,
                                                        int reduction) noexcept {
    const int ply = node.ply + 1;
    if (node.legalMoves == 1) {
        return -AlphaBeta(newDepth, ply, -node.beta, -node.alpha, false);
    }
    Score value = -AlphaBeta(newDepth, ply, -node.alpha - 1, -node.alpha, false);
    if (reduction != 0 && value > node.alpha) {
        value = -AlphaBeta(newDepth + 1, ply, -node.alpha - 1, -node.alpha, false);
    }
    if (value > node.alpha && value < node.beta) {
        value = -AlphaBeta(newDepth, ply, -node.beta, -node.alpha, false);
    }
    return value;
}

/// Rewards a quiet move that raised alpha, and one that cut off far more.
void CSearch::LearnFromSuccess(const Node& node, Move move, Piece moved, Score value) noexcept {
    // Only absurd options make depths whose square needs more than 32 bits.
    const std::int64_t depth = node.depth;
    const bool isCut = value >= node.beta;
    HistoryOf(moved, move.To()).Reward(isCut ? depth * depth : depth);
    if (isCut) {
        killers_[node.ply].Remember(move);
    }
}

void CSearch::RaiseAlpha(Node& node, Move move, Score value) noexcept {
    node.alpha = value;
    node.bound = value < node.beta ? Bound::Exact : Bound::Lower;
    node.bestMove = Move{move.Identity()};
    BuildLine(pv_[node.ply], node.ply, move);
}

/// The fifty-move rule comes after the moves have been searched: a mate on the hundredth half-move
/// stays a mate.
Score CSearch::StoreResult(const Node& node) noexcept {
    Score result = node.alpha;
    if (node.legalMoves == 0) {
        result = node.inCheck ? MatedAt(node.ply) : DrawScore;
    } else if (position_.halfmoveClock >= FiftyMoves) {
        result = DrawScore;
    }
    if (hash_.Store(position_.key, result, node.depth, node.bound, node.bestMove)) {
        CountClaim();
    }
    return result;
}

}  // namespace brenquil
