#include "reference_search.h"

#include "board/move_generator.h"
#include "board/polyglot_keys.h"
#include "board/static_exchange.h"
#include "search_setup.h"

#include <cstdlib>

namespace brenquil {

namespace {

constexpr std::uint64_t SideNumber = 0xF8D626AAAF278509;

/// One selection step: exchanges the entry at the index with every later one of a higher key.
Move Select(Moves& list, std::size_t& index) {
    for (std::size_t other = index + 1; other < list.size(); ++other) {
        if (list[other].Order() > list[index].Order()) {
            std::swap(list[index], list[other]);
        }
    }
    return list[index++];
}

/// Whether a capture can count as good only after the exchange test.
bool IsDoubtful(const CPosition& position, Move move) {
    const Piece moved = position.board[move.From()];
    const Piece captured = position.board[move.To()];
    if (move.Kind() == MoveKind::Promotion || move.Kind() == MoveKind::EnPassant) {
        return false;
    }
    if (captured == PieceNone) {
        return false;
    }
    return (captured & 0xE) < (moved & 0xE);
}

}  // namespace

CReferenceSearch::CReferenceSearch(const CSearchOptions& options,
                                   const CEvaluationOptions& evaluationOptions, std::size_t entries)
    : options_(options),
      evaluation_(position, evaluationOptions, noPawnHash_, TestBitbase()),
      table_(entries) {
    freeCount = static_cast<std::uint32_t>(entries);
    Reset();
}

void CReferenceSearch::Reset() {
    stop = false;
    nodes = 0;
    checks = 0;
    seldepth_ = 0;
    for (auto& piece : history_) {
        piece.fill(History());
    }
    killers_.assign(255, {0, 0});
    pv_.assign(257, {});
    bestLine_.clear();
    limits_ = SearchLimits();
}

void CReferenceSearch::CheckLimits(int ply) {
    ++checks;
    if (ply >= 255 || position.ply >= 500) {
        stop = true;
    }
    if (limits_.nodes != 0 && nodes >= static_cast<std::uint64_t>(limits_.nodes)) {
        stop = true;
    }
}

CReferenceSearch::Entry* CReferenceSearch::Find() {
    return table_.empty() ? nullptr : &table_[position.key % table_.size()];
}

void CReferenceSearch::Store(int score, int depth, unsigned bound, unsigned move) {
    Entry* const entry = Find();
    if (entry == nullptr) {
        return;
    }
    const auto entryAge = static_cast<std::uint32_t>(entry->data & 0xFF);
    const int entryDepth = static_cast<int>(entry->data >> 16 & 0xFFFF);
    if (entryAge == age && entryDepth > depth) {
        return;
    }
    if (entryDepth == 0 || entryAge < age) {
        --freeCount;
    }
    entry->data = 0;
    entry->data |= age & 0xFF;
    entry->data |= static_cast<std::uint64_t>(move & 0xFFFF) << 48;
    entry->data |= static_cast<std::uint64_t>(depth & 0xFFFF) << 16;
    entry->data |= static_cast<std::uint64_t>(score & 0xFFFF) << 32;
    entry->bound = static_cast<std::uint8_t>(bound);
    entry->verification = entry->data ^ position.key;
}

int CReferenceSearch::Hashfull() const {
    if (table_.empty()) {
        return 0;
    }
    const auto count = static_cast<std::uint32_t>(table_.size());
    const std::uint32_t claimed = count - freeCount;
    const double full = static_cast<double>(claimed) / count * 1000.0;
    return full > 1000.0 ? 1000 : static_cast<int>(full);
}

Moves CReferenceSearch::Generate(MoveKinds wanted) const {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, wanted);
    return {list.begin(), list.end()};
}

void CReferenceSearch::ScoreCaptures(Moves& list) const {
    constexpr int Victim[] = {1, 2, 2, 3, 4, 0};
    constexpr int Attacker[] = {5, 4, 3, 2, 1, 0};
    for (Move& move : list) {
        const Piece captured = position.board[move.To()];
        int v = captured == PieceNone ? 0 : Victim[captured / 2];
        if (move.Kind() == MoveKind::Promotion) {
            const PieceType made = PromotionType(move.Index());
            v += made == Queen ? 3 : made == Rook ? 2 : 1;
        }
        if (move.Kind() == MoveKind::EnPassant) {
            v += 1;
        }
        if (v != 0) {
            move.SetOrder(8 * v + Attacker[position.board[move.From()] / 2]);
        }
    }
}

bool CReferenceSearch::NextMove(Move& move, ReferencePicker& picker) {
    const CMoveGenerator generator(position);
    if (picker.stage == 0) {
        picker.stage = 1;
        const Entry* const entry = Find();
        if (entry != nullptr && entry->verification == (entry->data ^ position.key)) {
            const Move stored{static_cast<std::uint32_t>(entry->data >> 48)};
            if (stored.word != 0 && generator.IsStoredMoveValid(stored)) {
                picker.hashMove = stored;
                move = stored;
                return true;
            }
        }
    }
    if (picker.stage == 1) {
        picker.goodList = Generate(MoveKinds::Captures);
        ScoreCaptures(picker.goodList);
        picker.index = 0;
        picker.stage = 2;
    }
    if (picker.stage == 2) {
        while (picker.index < picker.goodList.size()) {
            move = Select(picker.goodList, picker.index);
            if (SameMove(move, picker.hashMove)) {
                continue;
            }
            if (!IsDoubtful(position, move) || StaticExchange(position, move) >= 0) {
                return true;
            }
            picker.badList.push_back(move);
        }
        picker.stage = 3;
    }
    const auto& killers = killers_[static_cast<std::size_t>(picker.ply)];
    if (picker.stage == 3) {
        picker.stage = 4;
        const Move killer{killers.first};
        if (killer.word != 0 && !SameMove(killer, picker.hashMove) &&
            generator.IsStoredMoveValid(killer)) {
            picker.killerMove1 = killer;
            move = killer;
            return true;
        }
    }
    if (picker.stage == 4) {
        picker.stage = 5;
        const Move killer{killers.second};
        if (killer.word != 0 && !SameMove(killer, picker.hashMove) &&
            generator.IsStoredMoveValid(killer)) {
            picker.killerMove2 = killer;
            move = killer;
            return true;
        }
    }
    if (picker.stage == 5) {
        picker.quietList = Generate(MoveKinds::Quiets);
        for (Move& quiet : picker.quietList) {
            const Piece piece = position.board[quiet.From()];
            quiet.SetOrder(history_[piece][static_cast<std::size_t>(quiet.To())].ordering);
        }
        picker.index = 0;
        picker.stage = 6;
    }
    if (picker.stage == 6) {
        while (picker.index < picker.quietList.size()) {
            move = Select(picker.quietList, picker.index);
            if (!SameMove(move, picker.hashMove) && !SameMove(move, picker.killerMove1) &&
                !SameMove(move, picker.killerMove2)) {
                return true;
            }
        }
        picker.stage = 7;
        picker.index = 0;
    }
    if (picker.index < picker.badList.size()) {
        move = Select(picker.badList, picker.index);
        return true;
    }
    return false;
}

void CReferenceSearch::UpdateKillers(int ply, Move move) {
    auto& killers = killers_[static_cast<std::size_t>(ply)];
    if ((move.word & 0xFFFF) != killers.first) {
        killers.second = killers.first;
        killers.first = move.word & 0xFFFF;
    }
}

int CReferenceSearch::AlphaBeta(int depth, int ply, int alpha, int beta, bool afterNull) {
    const auto line = static_cast<std::size_t>(ply);
    // Counting and limits.
    pv_[line].clear();
    ++nodes;
    CheckLimits(ply);
    if (stop) {
        return alpha;
    }
    // Repetition.
    if (!afterNull && ply > 0 && position.ply > 0) {
        int count = 1;
        for (int i = position.ply - 1; i >= 0; --i) {
            const UndoRecord& record = position.undo[i];
            if (record.key == position.key) {
                ++count;
            }
            if (record.halfmoveClock == 0) {
                break;
            }
        }
        if (count >= 2) {
            return 0;
        }
    }
    // Hash table.
    if (const Entry* const entry = Find();
        entry != nullptr && entry->verification == (entry->data ^ position.key)) {
        const int storedDepth = static_cast<int>(entry->data >> 16 & 0xFFFF);
        const int storedScore = static_cast<std::int16_t>(entry->data >> 32 & 0xFFFF);
        if (storedDepth >= depth) {
            if (entry->bound == 0) {
                return storedScore;
            }
            if (entry->bound == 1 && storedScore <= alpha) {
                return alpha;
            }
            if (entry->bound == 2 && storedScore >= beta) {
                return beta;
            }
        }
    }
    // Bases.
    for (IBase* const base : bases) {
        Score score = 0;
        if (base->ProbeSearch(score, position, depth, ply)) {
            ++baseHits;
            return score;
        }
    }
    // Horizon.
    if (depth < 1 && !position.inCheck) {
        --nodes;
        return Quiescence(ply, 0, alpha, beta);
    }
    // What stays as it was at entry.
    unsigned bestMove = 0;
    unsigned bound = 1;
    const bool inCheckAtEntry = position.inCheck;
    const int windowWidth = beta - alpha;
    // Static pruning.
    if (options_.useFutility.enabled && !position.inCheck && windowWidth <= 1 && depth >= 1 &&
        depth <= 3 && position.colourCount[Black] + position.colourCount[White] >= 5) {
        const int margin = options_.futilityMargins[static_cast<std::size_t>(depth - 1)].number;
        const int lower = alpha - margin;
        const int upper = beta + margin;
        const int value = evaluation_.Evaluate(lower, upper);
        if (value <= lower) {
            return Quiescence(ply, 0, alpha, beta);
        }
        if (value >= upper) {
            return beta;
        }
    }
    // Null move.
    const Colour us = position.sideToMove;
    bool hasPiece = false;
    for (const PieceType type : {Knight, Bishop, Rook, Queen}) {
        hasPiece = hasPiece || position.PiecesOf(type, us) != 0;
    }
    if (options_.useNullmove.enabled && !position.inCheck && windowWidth <= 1 &&
        depth >= options_.nullmoveMinDepth.number && !afterNull && hasPiece) {
        UndoRecord& record = position.undo[position.ply];
        ++position.ply;
        record.halfmoveClock = position.halfmoveClock;
        record.enPassant = position.enPassant;
        record.castlingRights = position.castlingRights;
        record.movedPiece = PieceNone;
        record.capturedPiece = PieceNone;
        position.halfmoveClock = 0;
        if (position.enPassant != SquareNone) {
            position.key ^= PolyglotKeys[772 + position.enPassant % 8];
        }
        position.sideToMove = us == White ? Black : White;
        position.enPassant = SquareNone;
        position.key ^= SideNumber;

        const int r = options_.nullmoveReduction.number;
        const int value = -AlphaBeta(depth - r - 1, ply + 1, -beta, 1 - beta, true);

        --position.ply;
        position.halfmoveClock = record.halfmoveClock;
        position.enPassant = record.enPassant;
        position.castlingRights = record.castlingRights;
        position.sideToMove = us;
        position.key ^= SideNumber;  // the en passant number is not put back
        if (value >= beta) {
            return beta;
        }
    }
    // The moves.
    ReferencePicker picker;
    picker.ply = ply;
    int legalMoves = 0;
    int reducible = 0;
    for (Move move; NextMove(move, picker);) {
        const Piece moved = position.board[move.From()];
        const bool quiet = (move.Kind() == MoveKind::Normal || move.Kind() == MoveKind::Castling) &&
                           position.board[move.To()] == PieceNone;
        History& history = history_[moved][static_cast<std::size_t>(move.To())];
        if (!position.MakeMove(move)) {
            continue;
        }
        ++legalMoves;
        // Extension.
        int extension = 0;
        if (options_.useExtensions.enabled && (windowWidth > 1 || depth < 6)) {
            if (position.inCheck) {
                ++extension;
            }
            if ((moved == WhitePawn && move.To() / 8 == 6) ||
                (moved == BlackPawn && move.To() / 8 == 1)) {
                ++extension;
            }
        }
        // Reduction.
        int reduction = 0;
        if (options_.useLmr.enabled && quiet && extension == 0 && windowWidth <= 1 &&
            !inCheckAtEntry && !position.inCheck && depth >= options_.lmrMinDepth.number &&
            history.hits <= 2 * history.misses) {
            ++reducible;
            if (options_.lmrMinMoves.number <= reducible) {
                reduction = 1;
            }
        }
        // Principal variation search.
        const int newDepth = depth - 1 + extension - reduction;
        int value = 0;
        if (legalMoves == 1) {
            value = -AlphaBeta(newDepth, ply + 1, -beta, -alpha, false);
        } else {
            value = -AlphaBeta(newDepth, ply + 1, -alpha - 1, -alpha, false);
            if (reduction == 1 && value > alpha) {
                value = -AlphaBeta(newDepth + 1, ply + 1, -alpha - 1, -alpha, false);
            }
            if (value > alpha && value < beta) {
                value = -AlphaBeta(newDepth, ply + 1, -beta, -alpha, false);
            }
        }
        position.UndoMove(move);
        if (stop) {
            return alpha;
        }
        // History and killers.
        if (quiet) {
            if (value >= beta) {
                ++history.hits;
            } else {
                ++history.misses;
            }
            if (value > alpha) {
                history.ordering += value >= beta ? depth * depth : depth;
                if (history.ordering > 32000) {
                    history.ordering = 32000;
                }
            }
            if (value >= beta) {
                UpdateKillers(ply, move);
            }
        }
        // A better move.
        if (value > alpha) {
            alpha = value;
            bound = value < beta ? 0 : 2;
            bestMove = move.word & 0xFFFF;
            pv_[line].assign(1, move);
            pv_[line].insert(pv_[line].end(), pv_[line + 1].begin(), pv_[line + 1].end());
            if (value >= beta) {
                break;
            }
        }
    }
    // The result, which is stored.
    int result = 0;
    if (legalMoves > 0) {
        result = position.halfmoveClock >= 100 ? 0 : alpha;
    } else {
        result = inCheckAtEntry ? ply - 32000 : 0;
    }
    Store(result, depth, bound, bestMove);
    return result;
}

int CReferenceSearch::Quiescence(int ply, int qply, int alpha, int beta) {
    // Counting and limits.
    ++nodes;
    CheckLimits(ply);
    if (stop) {
        return alpha;
    }
    if (qply > seldepth_) {
        seldepth_ = qply;
    }
    // Standing pat.
    const bool inCheckAtEntry = position.inCheck;
    if (!inCheckAtEntry) {
        const int value = evaluation_.Evaluate(alpha, beta);
        if (value > alpha) {
            alpha = value;
            if (value >= beta) {
                return beta;
            }
        }
    }
    // The moves: evasions, or captures.
    Moves list;
    if (inCheckAtEntry) {
        MoveList evasions;
        CMoveGenerator(position).GenerateEvasions(evasions);
        list.assign(evasions.begin(), evasions.end());
    } else {
        list = Generate(MoveKinds::Captures);
    }
    ScoreCaptures(list);
    int legalMoves = 0;
    for (std::size_t index = 0; index < list.size();) {
        const Move move = Select(list, index);
        if (!inCheckAtEntry && IsDoubtful(position, move) && StaticExchange(position, move) < 0) {
            continue;
        }
        if (!position.MakeMove(move)) {
            continue;
        }
        ++legalMoves;
        const int value = -Quiescence(ply + 1, qply + 1, -beta, -alpha);
        position.UndoMove(move);
        if (stop) {
            return alpha;
        }
        if (value > alpha) {
            alpha = value;
            if (value >= beta) {
                break;
            }
        }
    }
    // Mate is seen here, stalemate is not.
    if (!inCheckAtEntry || legalMoves > 0) {
        return alpha;
    }
    return ply - 32000;
}

int CReferenceSearch::RootSearch(int depth) {
    // Counting and limits.
    multiPv_.clear();
    pv_[0].clear();
    ++nodes;
    CheckLimits(0);
    if (stop) {
        return -32000;
    }
    const bool inCheck = position.inCheck;
    unsigned bestMove = 0;
    unsigned bound = 1;
    int legalMoves = 0;
    int alpha = -32000;
    ReferencePicker picker;
    // The moves.
    for (Move move; NextMove(move, picker);) {
        bool wanted = limits_.searchmoves.count == 0;
        for (const Move other : limits_.searchmoves) {
            wanted = wanted || SameMove(move, other);
        }
        if (!wanted) {
            continue;
        }
        const Piece moved = position.board[move.From()];
        const bool quiet = (move.Kind() == MoveKind::Normal || move.Kind() == MoveKind::Castling) &&
                           position.board[move.To()] == PieceNone;
        if (!position.MakeMove(move)) {
            continue;
        }
        ++legalMoves;
        // Extension by a check alone.
        const bool extended = options_.useExtensions.enabled && position.inCheck;
        const int newDepth = extended ? depth : depth - 1;
        // A wide window with MultiPV, else principal variation search.
        int value = 0;
        const int delta = options_.multiPvDelta.number;
        if (options_.multiPv.number > 1) {
            value = -AlphaBeta(newDepth, 1, -32000 - delta, delta - alpha, false);
        } else if (legalMoves == 1) {
            value = -AlphaBeta(newDepth, 1, -32000, -alpha, false);
        } else {
            value = -AlphaBeta(newDepth, 1, -alpha - 1, -alpha, false);
            if (value > alpha && value < 32000) {
                value = -AlphaBeta(newDepth, 1, -32000, -alpha, false);
            }
        }
        position.UndoMove(move);
        if (stop) {
            return alpha;
        }
        // The last slot stays empty.
        if (options_.multiPv.number > 1 && multiPv_.size() + 1 < 20) {
            Moves line{move};
            line.insert(line.end(), pv_[1].begin(), pv_[1].end());
            multiPv_.emplace_back(line, value);
        }
        if (value <= alpha) {
            continue;
        }
        // History and killers.
        if (quiet) {
            History& history = history_[moved][static_cast<std::size_t>(move.To())];
            history.ordering += value >= 32000 ? depth * depth : depth;
            if (history.ordering > 32000) {
                history.ordering = 32000;
            }
            if (value >= 32000) {
                UpdateKillers(0, move);
            }
        }
        // A better move.
        bestMove = move.word & 0xFFFF;
        bound = value < 32000 ? 0 : 2;
        alpha = value;
        pv_[0].assign(1, move);
        pv_[0].insert(pv_[0].end(), pv_[1].begin(), pv_[1].end());
        if (alpha >= 32000) {
            break;
        }
    }
    // The result, which is stored.
    int result = 0;
    if (legalMoves > 0) {
        result = position.halfmoveClock >= 100 ? 0 : alpha;
    } else {
        result = inCheck ? -32000 : 0;
    }
    Store(result, depth, bound, bestMove);
    return result;
}

void CReferenceSearch::ExtractHashLine(Moves& line, int maxLength) {
    Moves made;
    for (int i = 0; i < maxLength; ++i) {
        const Entry* const entry = Find();
        if (entry == nullptr || entry->verification != (entry->data ^ position.key)) {
            break;
        }
        const Move stored{static_cast<std::uint32_t>(entry->data >> 48)};
        // A refused move would leave nothing to take back; without key clashes there is none.
        if (stored.word == 0 || !position.MakeMove(stored)) {
            break;
        }
        made.push_back(stored);
    }
    line.insert(line.end(), made.begin(), made.end());
    while (!made.empty()) {
        position.UndoMove(made.back());
        made.pop_back();
    }
}

void CReferenceSearch::Report(int depth, int score, int alpha, int beta, const Moves& line,
                              int multiPv) {
    reports_.push_back(PvText(depth, depth + seldepth_, score, alpha, beta, multiPv, line,
                              {nodes, static_cast<std::uint32_t>(Hashfull()), baseHits}));
}

void CReferenceSearch::OutputPv(int depth, int score) {
    const int multiPv = options_.multiPv.number;
    if (multiPv < 2) {
        const int men = position.colourCount[Black] + position.colourCount[White];
        if (men > 5 || std::abs(score) > 100) {
            Report(depth, score, -32000, 32000, bestLine_, 0);
        } else {
            Report(depth, 0, 0, 0, bestLine_, 0);
        }
        return;
    }
    for (int i = 1; i <= multiPv; ++i) {
        const auto slot = static_cast<std::size_t>(i - 1);
        if (slot >= multiPv_.size()) {
            continue;
        }
        for (std::size_t other = slot + 1; other < multiPv_.size(); ++other) {
            if (multiPv_[other].second > multiPv_[slot].second) {
                std::swap(multiPv_[slot], multiPv_[other]);
            }
        }
        Report(depth, multiPv_[slot].second, -32000, 32000, multiPv_[slot].first, i);
    }
}

std::vector<std::string> CReferenceSearch::Think(const SearchLimits& limits) {
    reports_.clear();
    Reset();
    limits_ = limits;
    const int bound = limits.mate != 0 ? limits.mate + 1
                    : limits.depth > 0 ? limits.depth + 1
                                       : 255;
    for (int d = 1; d < bound; ++d) {
        seldepth_ = 0;
        const int score = RootSearch(d);
        if (stop) {
            break;
        }
        if (pv_[0].empty()) {
            ExtractHashLine(pv_[0], d);
        }
        bestLine_ = pv_[0];
        int distance = 0;
        if (score >= 31746) {
            distance = 32000 - score;
        } else if (score <= -31746) {
            distance = -32000 - score;
        }
        if (distance != 0 && d >= distance) {
            break;
        }
        OutputPv(d, score);
    }
    reports_.push_back(StatsText({nodes, static_cast<std::uint32_t>(Hashfull()), baseHits}));
    if (bestLine_.empty()) {
        reports_.emplace_back("no best move");
    } else {
        reports_.push_back(
            BestMoveText(bestLine_[0], bestLine_.size() > 1 ? bestLine_[1] : NoMove));
    }
    return reports_;
}

}  // namespace brenquil
