// The search of one thread: everything it needs in one record, and the alpha-beta on it.
//
// Each thread searches its own `CPosition` with its own `CSearch` and meets the others only in the
// hash table. The record knows the node (`AlphaBeta`), quiescence, the picking of moves, history
// and killers. What deepens, decides and reports is above it: `CRootSearch` for the master, a small
// loop of their own for the workers.
//
// The record is close to a megabyte, nearly all of it per-ply lists, so it never lives on a stack.
// Nothing is allocated during a search.
#pragma once

#include "bases/base.h"
#include "board/move_generator.h"
#include "board/move_list.h"
#include "board/position.h"
#include "board/score.h"
#include "eval/evaluation.h"
#include "eval/evaluation_options.h"
#include "eval/kpk_bitbase.h"
#include "platform/give_way.h"
#include "platform/relaxed.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/move_picker.h"
#include "search/search_master.h"
#include "search/search_options.h"

#include <array>
#include <cassert>
#include <cstdint>
#include <limits>

namespace brenquil {

/// What all searches of the program share. The objects live until the process ends.
struct SearchContext {
    CHashTable& hash;
    CBaseList& bases;
    const CSearchOptions& options;
    const CEvaluationOptions& evaluationOptions;
    const CKpkBitbase& kpkBitbase;
};

/// Half-moves without a capture or pawn move that make a game drawn.
inline constexpr int FiftyMoves = 100;

class CSearch {
public:
    /// Nodes of this ply or deeper stop the search; it bounds every table indexed by ply.
    static constexpr int MaxPly = 255;

    /// Bound to a position for life, and reset.
    CSearch(CPosition& position, const SearchContext& context);

    /// Forgets the previous search: flags, counters, history, killers and lines. The search is
    /// nobody's until `SetMaster`. Called before the thread of the search starts, so that a `stop`
    /// that arrives before the thread is under way is not lost.
    void ResetSearch() noexcept;

    /// Puts the search under a master, which looks at the limits for the first time after `checks`
    /// checks. After `ResetSearch`; a worker has no master.
    void SetMaster(ISearchMaster& master, std::int64_t checks) noexcept;

    /// One iteration at the root, for a search with a master.
    ///
    /// Opens with the full window, and takes its moves from the picker like any other node: there
    /// is no stored root order. Returns -32000 when it was stopped before its first move, and the
    /// best score so far when it was stopped later.
    [[nodiscard]] Score SearchRoot(int depth) noexcept;

    /// The full-width search of a node.
    ///
    /// `depth`: remaining plies; 0 or less only in check or on the way into quiescence. `ply`:
    /// distance from the root; 0 at a worker's root. `afterNull`: the move before was a null move.
    /// Returns the score from the view of the side to move: `alpha` itself when nothing beats it
    /// (and when stopped), a value of `beta` or more on a cut-off.
    [[nodiscard]] Score AlphaBeta(int depth, int ply, Score alpha, Score beta,
                                  bool afterNull) noexcept;

    /// Resolves captures, promotions and checks below the horizon. `qply` is 0 at the horizon.
    [[nodiscard]] Score Quiescence(int ply, int qply, Score alpha, Score beta) noexcept;

    /// The next move of a node, `NoMove` at the end.
    [[nodiscard]] Move NextMove(CMovePicker& picker) noexcept;

    /// Bounds the ply, which every thread does, and counts down to the master's next look at its
    /// limits. A limit acts through the stop flag.
    void CheckLimits(int ply) noexcept {
        if (ply >= MaxPly || position_.ply >= CPosition::UndoCapacity) [[unlikely]] {
            stop_ = true;
        }
        if (--countdown_ == 0) [[unlikely]] {
            assert(master_ != nullptr);
            countdown_ = master_->LookAtLimits();
            assert(countdown_ > 0);
            GiveWay();
        }
    }

    /// Asks the search to unwind. Any thread may call it.
    void RequestStop() noexcept { stop_ = true; }

    [[nodiscard]] bool IsStopped() const noexcept { return stop_; }

    /// Whether the position has occurred before, in the search or in the game.
    [[nodiscard]] bool IsRepetition() const noexcept;

    /// The evaluation of the position, without a search.
    [[nodiscard]] Score StaticScore() noexcept {
        return evaluation_.Evaluate(-MateScore, MateScore);
    }

    /// This thread's nodes, and those that `AddNodes` has brought. Any thread may read it.
    [[nodiscard]] std::uint64_t Nodes() const noexcept { return nodes_; }

    void AddNodes(std::uint64_t nodes) noexcept { nodes_.AddLossily(nodes); }

    /// Tells the table how many entries this search has claimed since the last time. Called by the
    /// thread of the search before it reads the table's count.
    void ReportClaims() noexcept {
        hash_.NoteClaims(claims_);
        claims_ = 0;
    }

    /// The deepest quiescence ply since `ResetSeldepth`, counted from the horizon.
    [[nodiscard]] int Seldepth() const noexcept { return seldepth_; }

    void ResetSeldepth() noexcept { seldepth_ = 0; }

    /// The moves from the root to the node that is being searched.
    [[nodiscard]] const PvLine& CurrentLine() const noexcept { return currentLine_; }

    /// The principal variation of the root.
    [[nodiscard]] const PvLine& RootLine() const noexcept { return pv_[0]; }

    /// Makes `line` this move followed by the principal variation of the ply after it.
    void BuildLine(PvLine& line, int ply, Move move) const noexcept;

private:
    /// What the steps of one node share.
    struct Node {
        int depth;
        int ply;
        Score alpha;
        Score beta;
        bool inCheck;  ///< at entry
        bool isPv;     ///< the window was wider than one point at entry
        Bound bound = Bound::Upper;
        Move bestMove{0};
        int legalMoves = 0;
        int reducible = 0;  ///< moves so far that met every condition of a reduction
    };

    /// A countdown that no search lives to the end of.
    static constexpr std::int64_t Endless = std::numeric_limits<std::int64_t>::max();

    /// A worker's last few are never told.
    static constexpr std::uint32_t ClaimsAtOnce = 64;

    // alpha_beta.cpp
    [[nodiscard]] MaybeScore ProbeTable(int depth, Score alpha, Score beta) const noexcept;
    [[nodiscard]] MaybeScore ProbeBases(int depth, int ply);
    [[nodiscard]] MaybeScore PruneStatically(const Node& node) noexcept;
    [[nodiscard]] MaybeScore TryNullMove(const Node& node, bool afterNull) noexcept;
    template <bool IsRoot>
    [[nodiscard]] bool SearchMoves(Node& node) noexcept;
    [[nodiscard]] Score SearchInnerMove(Node& node, Move move, Piece moved, bool isQuiet) noexcept;
    [[nodiscard]] Score SearchRootMove(const Node& node, Move move) noexcept;
    [[nodiscard, gnu::always_inline]] inline Score SearchMove(const Node& node, int newDepth,
                                                              int reduction) noexcept;
    [[nodiscard]] int ExtensionOf(const Node& node, Move move, Piece moved) const noexcept;
    [[nodiscard]] int ReductionOf(Node& node, Move move, Piece moved, int extension,
                                  bool isQuiet) const noexcept;
    void LearnFromSuccess(const Node& node, Move move, Piece moved, Score value) noexcept;
    void RaiseAlpha(Node& node, Move move, Score value) noexcept;
    [[nodiscard]] Score StoreResult(const Node& node) noexcept;
    [[nodiscard]] bool IsQuiet(Move move) const noexcept;

    void CountClaim() noexcept {
        if (++claims_ == ClaimsAtOnce) {
            ReportClaims();
        }
    }

    // quiescence.cpp
    /// What the moves of one quiescence node share.
    struct QuiescenceNode {
        int ply;
        int qply;
        Score alpha;
        Score beta;
        int legalMoves = 0;
    };

    [[nodiscard, gnu::always_inline]] inline bool EndsQuiescence(QuiescenceNode& node,
                                                                 Move move) noexcept;
    [[nodiscard]] Score SearchCaptures(int ply, int qply, Score alpha, Score beta) noexcept;
    [[nodiscard]] Score SearchEvasions(int ply, int qply, Score alpha, Score beta) noexcept;

    // next_move.cpp
    /// Whether the nodes below one of this depth are deep enough for a null move.
    [[nodiscard]] bool MayPassBelow(int depth) const noexcept {
        return depth > options_.nullmoveMinDepth.number;
    }

    /// Fetches the table's entry of the position after a move that will be made soon, if it is one.
    /// Where a null move may answer it, its entry is asked for next and nearly at once, so it is
    /// fetched as well.
    void PrefetchAfter(Move move, bool mayPassBelow) const noexcept {
        if (move.IsNone()) {
            return;
        }
        const std::uint64_t key = position_.LikelyKeyAfter(move);
        hash_.Prefetch(key);
        if (mayPassBelow) {
            hash_.Prefetch(key ^ SideKey);
        }
    }

    [[nodiscard]] bool IsKillerUsable(Move killer, const CMovePicker& picker) const noexcept;

    [[nodiscard]] HistoryEntry& HistoryOf(Piece piece, Square to) noexcept {
        return history_[piece][to];
    }

    [[nodiscard]] const HistoryEntry& HistoryOf(Piece piece, Square to) const noexcept {
        return history_[piece][to];
    }

    // Read at every node.
    CPosition& position_;
    CHashTable& hash_;
    CBaseList& bases_;
    const CSearchOptions& options_;
    CMoveGenerator generator_;
    Relaxed<bool> stop_{false};  ///< set by other threads as well
    Relaxed<std::uint64_t> nodes_{0};
    std::int64_t countdown_ = Endless;  ///< checks until the master's next look at its limits
    int seldepth_ = 0;
    std::uint32_t claims_ = 0;         ///< of entries of the table, not reported yet
    ISearchMaster* master_ = nullptr;  ///< null in a worker, whose countdown never ends

    CEvaluation evaluation_;
    HistoryTable history_;
    std::array<KillerPair, MaxPly> killers_;
    PvLine currentLine_;
    std::array<CMovePicker, MaxPly> pickers_;
    std::array<PvLine, MaxPly + 2> pv_;
};

}  // namespace brenquil
