// The two levels above the node, the master's alone: iterative deepening and the root of one
// iteration. Every iteration opens with the full window, and the root takes its moves from the
// picker like any other node: there is no stored root order.

#include "board/score.h"
#include "search/search.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace brenquil {

namespace {

constexpr std::int32_t FewMen = 5;
constexpr Score NearlyEqual = 100;

/// Whether a stored move can be followed on this position. A move of the table was legal where it
/// was stored, so this is about key clashes, and about two moves that `IsStoredMoveValid` refuses:
/// castling onto the own rook's square, and an en passant capture stored by a node whose key had
/// lost its en passant square to a null move.
bool CanFollow(Move move, const CPosition& position, const CMoveGenerator& generator) noexcept {
    const Piece moved = position.board[move.From()];
    const Colour us = position.sideToMove;
    if (move.Kind() == MoveKind::Castling) {
        const CastlingRecord& record = position.castling[move.Index()];
        return moved == MakePiece(King, us) &&
               (position.castlingRights >> move.Index() & 1U) != 0 &&
               record.kingFrom == move.From() && record.kingTo == move.To();
    }
    if (move.Kind() == MoveKind::EnPassant) {
        return moved == MakePiece(Pawn, us) && position.board[move.To()] == PieceNone &&
               (PawnAttacks[us][move.From()] & BitOf(move.To())) != 0;
    }
    return generator.IsStoredMoveValid(move);
}

}  // namespace

void CSearch::Think(const SearchLimits& limits, IWorkers& workers, ISearchReceiver& receiver) {
    limits_ = limits;
    workers_ = &workers;
    receiver_ = &receiver;
    AllocateTime();
    workers.Start(position_);
    Iterate();
    if (limits_.infinite || limits_.ponder) {
        // The depth bound came first: the move is held back until it is asked for.
        while (!stop_) {
            CheckLimits(0);
        }
    }
    nodes_ = nodes_ + workers.Nodes();
    workers.Stop();
    PrintResult();
}

std::int32_t CSearch::IterationBound() const noexcept {
    if (limits_.mate != 0) {
        return std::min(limits_.mate, MaxDepth) + 1;  // plies, not moves
    }
    return limits_.depth > 0 ? std::min(limits_.depth, MaxDepth) + 1 : MaxDepth + 1;
}

/// Deepens until the bound, a stopping rule or `stop`. An iteration that was stopped is thrown away
/// whole, though its best move may have been better. When a rule ends the search the last line is
/// not printed; the best move still comes from it.
void CSearch::Iterate() {
    const bool isUnbounded = limits_.infinite || limits_.ponder;
    for (std::int32_t depth = 1; depth < IterationBound(); ++depth) {
        seldepth_ = 0;
        const Score score = RootSearch(depth);
        if (stop_) {
            return;
        }
        PvLine& line = PvOf(0);
        if (line.count == 0) {
            ExtractHashLine(line, depth);
        }
        bestLine_ = line;
        if (!isUnbounded && MayFinish(score, depth)) {
            return;
        }
        OutputPv(depth, score);
    }
}

void CSearch::PrintResult() {
    OutputStatus();
    if (bestLine_.count > 0) {
        receiver_->PrintBestMove(bestLine_[0], bestLine_.count > 1 ? bestLine_[1] : NoMove);
    } else {
        receiver_->PrintNoBestMove();
    }
}

/// One iteration. -32000 if it was stopped before its first move, the best score so far if it was
/// stopped later.
Score CSearch::RootSearch(std::int32_t depth) {
    multiPvCount_ = 0;
    PvOf(0).count = 0;
    nodes_.AddBySoleWriter(1);
    CheckLimits(0);
    if (stop_) {
        return -MateScore;
    }
    Node node{depth, 0, -MateScore, MateScore, position_.inCheck, true};
    if (!SearchRootMoves(node)) {
        return node.alpha;
    }
    return StoreResult(node);
}

bool CSearch::SearchRootMoves(Node& node) {
    const bool isMultiPv = options_.multiPv.number > 1;
    CMovePicker& picker = PickerOf(0);
    picker.Reset(0);
    for (Move move = NextMove(picker); !move.IsNone(); move = NextMove(picker)) {
        if (!IsRootMoveWanted(move)) {
            continue;
        }
        const Piece moved = position_.board[move.From()];
        const bool isQuiet = IsQuiet(move);
        if (!position_.MakeMove(move)) {
            continue;
        }
        ++node.legalMoves;
        currentLine_.Append(move);
        if (outputMoves_) {
            receiver_->PrintCurrMove(move, node.legalMoves);
        }
        const bool isExtended = position_.inCheck && options_.useExtensions.enabled;
        const Score value = SearchRootMove(node, isExtended ? node.depth : node.depth - 1);
        if (outputMoves_) {
            ReportRefutation(move, node.depth);
        }
        currentLine_.RemoveLast();
        position_.UndoMove(move);
        if (stop_) {
            return false;
        }
        if (isMultiPv) {
            SaveMultiPvLine(move, value);
        }
        if (value <= node.alpha) {
            continue;
        }
        if (isQuiet) {
            LearnFromRootQuiet(node, move, moved, value);
        }
        RaiseAlpha(node, move, value);
        if (value >= MateScore) {
            break;
        }
    }
    return true;
}

bool CSearch::IsRootMoveWanted(Move move) const noexcept {
    const auto wanted = limits_.searchmoves.Used();
    return wanted.empty() || std::any_of(wanted.begin(), wanted.end(),
                                         [move](Move other) { return SameMove(move, other); });
}

/// With "MultiPV" every move is searched with a window wide enough for an exact score near the
/// best; otherwise it is the principal variation search of a node, without reductions.
Score CSearch::SearchRootMove(const Node& node, std::int32_t newDepth) noexcept {
    if (options_.multiPv.number > 1) {
        const Score delta = options_.multiPvDelta.Bounded();
        return -AlphaBeta(newDepth, 1, -MateScore - delta, delta - node.alpha, false);
    }
    if (node.legalMoves == 1) {
        return -AlphaBeta(newDepth, 1, -MateScore, -node.alpha, false);
    }
    Score value = -AlphaBeta(newDepth, 1, -node.alpha - 1, -node.alpha, false);
    if (value > node.alpha && value < MateScore) {
        value = -AlphaBeta(newDepth, 1, -MateScore, -node.alpha, false);
    }
    return value;
}

/// The root rewards like a node, but leaves the hits and misses alone.
void CSearch::LearnFromRootQuiet(const Node& node, Move move, Piece moved, Score value) noexcept {
    const bool isCut = value >= MateScore;
    HistoryOf(moved, move.To()).Reward(isCut ? node.depth * node.depth : node.depth);
    if (isCut) {
        RememberKiller(0, move);
    }
}

/// What the table holds of the reply to the root move that stands on the board.
void CSearch::ReportRefutation(Move move, std::int32_t depth) {
    PvLine line;
    ExtractHashLine(line, depth);
    if (line.count > 0) {
        receiver_->PrintRefutation(move, line);
    }
}

/// One slot is never used, whatever "MultiPV" says; the root moves that come later are dropped.
void CSearch::SaveMultiPvLine(Move move, Score value) noexcept {
    if (multiPvCount_ + 1 >= MultiPvSlots) {
        return;
    }
    ScoredLine& slot = multiPv_[static_cast<std::size_t>(multiPvCount_)];
    ++multiPvCount_;
    slot.score = value;
    slot.line.count = 0;
    slot.line.Append(move);
    for (const Move reply : PvOf(1)) {
        slot.line.Append(reply);
    }
}

/// Appends the stored best moves along the line from the current position. They are trusted: they
/// were legal where they were stored.
void CSearch::ExtractHashLine(PvLine& line, std::int32_t maxLength) noexcept {
    const std::int32_t before = line.count;
    for (std::int32_t length = 0; length < maxLength && line.count < PvLine::Capacity; ++length) {
        const auto hit = hash_.Probe(position_.key);
        if (!hit || hit->move.IsNone() || !CanFollow(hit->move, position_, generator_) ||
            !position_.MakeMove(hit->move)) {
            break;
        }
        line.Append(hit->move);
    }
    for (std::int32_t i = line.count; i > before;) {
        position_.UndoMove(line[--i]);
    }
}

/// A small endgame with a nearly equal score is reported as a dead draw; the score itself goes on
/// steering the search.
void CSearch::OutputPv(std::int32_t depth, Score score) {
    if (options_.multiPv.number >= 2) {
        OutputMultiPv(depth);
        return;
    }
    PvReport report{depth, depth + seldepth_, score, -MateScore, MateScore, &bestLine_, 0};
    if (position_.MenCount() <= FewMen && std::abs(score) <= NearlyEqual) {
        report.score = DrawScore;
        report.alpha = DrawScore;
        report.beta = DrawScore;
    }
    receiver_->PrintPv(report, Statistics());
}

/// One pass of selection sort for each line that is printed. Lines that failed low are printed with
/// their bound as the score.
void CSearch::OutputMultiPv(std::int32_t depth) {
    const std::int32_t wanted = std::min<std::int32_t>(options_.multiPv.number, multiPvCount_);
    for (std::int32_t index = 0; index < wanted; ++index) {
        ScoredLine& slot = multiPv_[static_cast<std::size_t>(index)];
        for (std::int32_t other = index + 1; other < multiPvCount_; ++other) {
            ScoredLine& candidate = multiPv_[static_cast<std::size_t>(other)];
            if (candidate.score > slot.score) {
                std::swap(slot, candidate);
            }
        }
        receiver_->PrintPv(
            {depth, depth + seldepth_, slot.score, -MateScore, MateScore, &slot.line, index + 1},
            Statistics());
    }
}

}  // namespace brenquil
