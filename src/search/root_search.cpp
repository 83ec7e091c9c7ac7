#include "search/root_search.h"

#include "board/score.h"
#include "platform/give_way.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <span>
#include <utility>

namespace brenquil {

namespace {

constexpr int FewMen = 5;
constexpr Score NearlyEqual = 100;

/// No list wants every move.
bool IsWanted(Move move, const MoveList& wanted) noexcept {
    return wanted.count == 0 || std::any_of(wanted.begin(), wanted.end(),
                                            [move](Move other) { return SameMove(move, other); });
}

/// Whether a stored move can be played in this position without damaging it.
///
/// A move from the table was legal where it was stored. Yet that may have been another position of
/// the same key: the key includes the castling rights but not their rooks, so where two rooks stand
/// on one side of the king in Chess960 a castling can be that of the wrong one. And the node that
/// stored an en passant capture may have lost its square to a null move, which its key shows; such
/// a capture is followed all the same.
bool CanFollow(Move move, const CPosition& position, const CMoveGenerator& generator) noexcept {
    if (move.Kind() == MoveKind::EnPassant) {
        const Colour us = position.sideToMove;
        return position.board[move.From()] == MakePiece(Pawn, us) &&
               position.board[move.To()] == PieceNone &&
               (PawnAttacks[us][move.From()] & BitOf(move.To())) != 0;
    }
    return generator.IsPseudoLegal(move);
}

}  // namespace

CRootSearch::CRootSearch(CSearch& search, CPosition& position, const SearchContext& context,
                         IWorkers& workers, ISearchReceiver& receiver,
                         const SearchManners& manners) noexcept
    : search_(search),
      position_(position),
      hash_(context.hash),
      bases_(context.bases),
      options_(context.options),
      generator_(position),
      workers_(workers),
      receiver_(receiver),
      manners_(manners) {}

bool CRootSearch::Begin(const SearchLimits& limits) {
    receiver_.SetRoot(position_);
    bases_.hits = 0;
    if (!limits.infinite && !limits.ponder && AnswerFromBases(limits.searchmoves)) {
        return false;
    }
    hash_.BeginSearch(limits.infinite);
    Prepare(limits);
    return true;
}

bool CRootSearch::AnswerFromBases(const MoveList& wanted) {
    Move move = NoMove;
    if (!bases_.ProbeRoot(move, position_) ||
        (manners_.alwaysNamesMove && !IsPlayable(move, wanted))) {
        return false;
    }
    PvLine line;
    line.Append(move);
    receiver_.PrintPv({1, 0, move.Order(), -MateScore, MateScore, &line, 0}, Statistics());
    receiver_.PrintBestMove(move, NoMove);
    return true;
}

void CRootSearch::Prepare(const SearchLimits& limits) noexcept {
    timeControl_.Start(limits, position_.sideToMove, manners_.waitsForItsRelease);
    search_.ResetSearch();
    search_.SetMaster(*this, timeControl_.HasNodeLimit() ? 1 : ChecksPerLookAtClock);
    checksToClock_ = ChecksPerLookAtClock;
    areMovesReported_ = false;
    isReleased_ = false;
    bestLine_.count = 0;
    firstScore_ = -MateScore;
}

/// A base knows nothing of the moves that are wanted, and a book's move may leave the king in
/// check.
bool CRootSearch::IsPlayable(Move move, const MoveList& wanted) {
    if (!IsWanted(move, wanted) || !generator_.IsPseudoLegal(move) || !position_.MakeMove(move)) {
        return false;
    }
    position_.UndoMove(move);
    return true;
}

/// The first legal move of those that are wanted; `NoMove` if there is none.
Move CRootSearch::FirstMove() {
    const MoveList& wanted = timeControl_.Limits().searchmoves;
    MoveList moves;
    generator_.GenerateMoves(moves, MoveKinds::All);
    const Move* const found = std::find_if(moves.begin(), moves.end(),
                                           [&](Move move) { return IsPlayable(move, wanted); });
    return found == moves.end() ? NoMove : *found;
}

void CRootSearch::Think() {
    if (manners_.alwaysNamesMove && FirstMove().IsNone()) {
        HoldBack();
        receiver_.PrintNoBestMove();
        return;
    }
    workers_.Start(position_);
    Iterate();
    HoldBack();
    if (manners_.alwaysNamesMove && bestLine_.count == 0) {
        NameSomeMove();
    }
    search_.AddNodes(workers_.Nodes());
    workers_.Stop();
    PrintStatus();
    PrintResult();
}

/// An answer to `infinite` or `ponder` that came too early is held back until it is asked for. The
/// limits and status lines of a search go on; the workers may still be counting nodes.
void CRootSearch::HoldBack() noexcept {
    const auto mayAnswer = [this] {
        return manners_.waitsForItsRelease ? isReleased_ || !timeControl_.IsUnbounded()
                                           : search_.IsStopped();
    };
    while (timeControl_.IsUnbounded() && !mayAnswer()) {
        if (timeControl_.IsNodeLimitReached(Nodes())) {
            search_.RequestStop();
        }
        LookAtClock();
        Rest();
    }
}

/// No iteration has been finished: the best move so far, or any.
void CRootSearch::NameSomeMove() {
    bestLine_ = search_.RootLine();
    Score score = firstScore_;
    if (bestLine_.count == 0) {
        bestLine_.Append(FirstMove());
        score = search_.StaticScore();
    }
    const int number = options_.multiPv.number >= 2 ? 1 : 0;
    receiver_.PrintPv({1, 1, score, -MateScore, MateScore, &bestLine_, number}, Statistics());
}

/// Deepens until the bound, a stopping rule or `stop`. An iteration that was stopped is thrown away
/// whole, though its best move may have been better. When a rule ends the search the last line is
/// not printed, unless the manners ask for it; the best move is taken from it in any case.
void CRootSearch::Iterate() {
    for (int depth = 1; depth < timeControl_.IterationBound(); ++depth) {
        search_.ResetSeldepth();
        lineCount_ = 0;
        const Score score = search_.SearchRoot(depth);
        if (search_.IsStopped()) {
            firstScore_ = score;
            return;
        }
        bestLine_ = search_.RootLine();
        if (bestLine_.count == 0) {
            ExtractHashLine(bestLine_, depth);
        }
        const bool isFinished = !timeControl_.IsUnbounded() && timeControl_.MayFinish(score, depth);
        if (!isFinished || manners_.showsEveryIteration) {
            OutputPv(depth, score);
        }
        if (isFinished) {
            return;
        }
    }
}

/// With a node limit every check is a look, and the clock keeps its own distance.
std::int64_t CRootSearch::LookAtLimits() noexcept {
    if (!timeControl_.HasNodeLimit()) {
        LookAtClock();
        return ChecksPerLookAtClock;
    }
    if (timeControl_.IsNodeLimitReached(Nodes())) {
        search_.RequestStop();
    }
    if (--checksToClock_ == 0) {
        checksToClock_ = ChecksPerLookAtClock;
        LookAtClock();
    }
    return 1;
}

void CRootSearch::LookAtClock() noexcept {
    if (timeControl_.IsHardLimitPassed()) {
        search_.RequestStop();
    }
    if (timeControl_.IsStatusDue()) {
        areMovesReported_ = true;
        PrintStatus();
    }
}

bool CRootSearch::IsRootMoveWanted(Move move) const noexcept {
    return IsWanted(move, timeControl_.Limits().searchmoves);
}

void CRootSearch::RootMoveBegins(Move move, int number) {
    if (areMovesReported_) {
        receiver_.PrintCurrMove(move, number);
    }
}

/// Reports what the table holds of the reply, while the move stands on the board.
void CRootSearch::RootMoveEnds(Move move, int depth) {
    if (!areMovesReported_) {
        return;
    }
    PvLine line;
    ExtractHashLine(line, depth);
    if (line.count > 0) {
        receiver_.PrintRefutation(move, line);
    }
}

/// One slot is never used, whatever "MultiPV" says, and the root moves that come later are dropped;
/// unless every iteration is to be shown, which takes the best of all moves.
void CRootSearch::RootMoveIsScored(Move move, Score value) noexcept {
    if (options_.multiPv.number <= 1) {
        return;
    }
    const std::size_t usable = lines_.size() - (manners_.showsEveryIteration ? 0 : 1);
    if (lineCount_ == usable) {
        if (!manners_.showsEveryIteration || !DropWorstLine(value)) {
            return;
        }
    }
    assert(lineCount_ < lines_.size());
    ScoredLine& slot = lines_[lineCount_++];
    slot.score = value;
    search_.BuildLine(slot.line, 0, move);
}

/// Makes room for a line of this score, at the end: among equal ones the first is the best.
bool CRootSearch::DropWorstLine(Score value) noexcept {
    auto* const end = lines_.begin() + lineCount_;
    auto* const worst =
        std::min_element(lines_.begin(), end, [](const ScoredLine& one, const ScoredLine& other) {
            return one.score < other.score;
        });
    if (worst->score >= value) {
        return false;
    }
    std::rotate(worst, worst + 1, end);
    --lineCount_;
    return true;
}

/// Cuts a line where the game ends by repetition or by the fifty-move rule, and continues one that
/// is shorter than it was when its nodes were searched: with moves of the table, as long as they
/// are legal and do not end the game so.
void CRootSearch::FinishLine(PvLine& line, int length) noexcept {
    const auto isDrawn = [this] {
        return position_.halfmoveClock >= FiftyMoves || search_.IsRepetition();
    };
    int made = 0;
    bool isOver = false;
    while (made < line.count && !isOver && position_.MakeMove(line[made])) {
        ++made;
        isOver = isDrawn();
    }
    line.count = made;
    while (!isOver && line.count < std::min(length, PvLine::Capacity)) {
        const auto hit = hash_.Probe(position_.key);
        if (!hit || hit->move.IsNone() || !generator_.IsPseudoLegal(hit->move) ||
            !position_.MakeMove(hit->move)) {
            break;
        }
        line.Append(hit->move);
        if (isDrawn()) {
            position_.UndoMove(hit->move);
            line.RemoveLast();
            break;
        }
    }
    for (int i = line.count; i > 0;) {
        position_.UndoMove(line[--i]);
    }
}

/// Appends the stored best moves along the line from the current position, as far as they can be
/// made there.
void CRootSearch::ExtractHashLine(PvLine& line, int maxLength) noexcept {
    const int before = line.count;
    for (int length = 0; length < maxLength && line.count < PvLine::Capacity; ++length) {
        const auto hit = hash_.Probe(position_.key);
        if (!hit || hit->move.IsNone() || !CanFollow(hit->move, position_, generator_) ||
            !position_.MakeMove(hit->move)) {
            break;
        }
        line.Append(hit->move);
    }
    for (int i = line.count; i > before;) {
        position_.UndoMove(line[--i]);
    }
}

/// A small endgame with a nearly equal score is reported as a dead draw; the score itself goes on
/// steering the search.
void CRootSearch::OutputPv(int depth, Score score) {
    const int selectiveDepth = depth + search_.Seldepth();
    if (options_.multiPv.number >= 2) {
        OutputLines(depth, selectiveDepth);
        return;
    }
    if (manners_.completesLines) {
        FinishLine(bestLine_, depth);
    }
    PvReport report{depth, selectiveDepth, score, -MateScore, MateScore, &bestLine_, 0};
    if (position_.MenCount() <= FewMen && std::abs(score) <= NearlyEqual) {
        report.score = DrawScore;
        report.alpha = DrawScore;
        report.beta = DrawScore;
    }
    receiver_.PrintPv(report, Statistics());
}

/// One pass of selection sort for each line that is printed. Lines that failed low are printed with
/// their bound as the score.
void CRootSearch::OutputLines(int depth, int selectiveDepth) {
    std::span<ScoredLine> rest(lines_.data(), lineCount_);
    for (int number = 1; number <= options_.multiPv.number && !rest.empty(); ++number) {
        ScoredLine& slot = rest.front();
        rest = rest.subspan(1);
        for (ScoredLine& candidate : rest) {
            if (candidate.score > slot.score) {
                std::swap(slot, candidate);
            }
        }
        if (manners_.completesLines) {
            FinishLine(slot.line, depth);
        }
        receiver_.PrintPv(
            {depth, selectiveDepth, slot.score, -MateScore, MateScore, &slot.line, number},
            Statistics());
    }
}

void CRootSearch::PrintStatus() {
    receiver_.PrintStats(Statistics());
    if (search_.CurrentLine().count > 0) {
        receiver_.PrintCurrentLine(search_.CurrentLine());
    }
}

void CRootSearch::PrintResult() {
    if (bestLine_.count > 0) {
        receiver_.PrintBestMove(bestLine_[0], bestLine_.count > 1 ? bestLine_[1] : NoMove);
    } else {
        receiver_.PrintNoBestMove();
    }
}

std::uint64_t CRootSearch::Nodes() const noexcept {
    return search_.Nodes() + workers_.Nodes();
}

SearchStatistics CRootSearch::Statistics() const noexcept {
    search_.ReportClaims();
    return {Nodes(), hash_.Hashfull(), bases_.hits, timeControl_.Ticks(), timeControl_.Clock()};
}

}  // namespace brenquil
