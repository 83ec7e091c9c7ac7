// The search of one thread: everything it needs in one record, and the alpha-beta on it.
//
// Each thread searches its own `CPosition` with its own `CSearch` and meets the others only in the
// hash table. The node (`AlphaBeta`), quiescence, the picking of moves and the limits are the work
// of every thread; iterative deepening with the root search (`Think`) is the master's alone, and
// workers have their own small loop. The record is close to a megabyte, nearly all of it per-ply
// lists, so it never lives on a stack. Nothing is allocated during a search.
#pragma once

#include "bases/base.h"
#include "board/move_generator.h"
#include "board/move_list.h"
#include "board/position.h"
#include "eval/evaluation.h"
#include "eval/evaluation_options.h"
#include "eval/kpk_bitbase.h"
#include "platform/relaxed.h"
#include "search/hash_table.h"
#include "search/move_picker.h"
#include "search/search_limits.h"
#include "search/search_options.h"
#include "search/search_receiver.h"

#include <array>
#include <cstdint>
#include <optional>

namespace brenquil {

/// What all searches of the program share. The objects live until the process ends.
struct SearchContext {
    CHashTable& hash;
    CBaseList& bases;
    const CSearchOptions& options;
    const CEvaluationOptions& evaluationOptions;
    const CKpkBitbase& kpkBitbase;
};

/// The helpers of a master, as the search sees them.
class IWorkers {
public:
    IWorkers() = default;
    IWorkers(const IWorkers&) = delete;
    IWorkers& operator=(const IWorkers&) = delete;
    virtual ~IWorkers() = default;

    /// Sets "Threads" minus 1 workers to search from this root.
    virtual void Start(const CPosition& root) = 0;

    /// Sum of the workers' node counters at this moment; they may still be running.
    [[nodiscard]] virtual std::uint64_t Nodes() const noexcept = 0;

    /// Stops all workers, waits for their threads and deletes them.
    virtual void Stop() noexcept = 0;
};

class CSearch {
public:
    /// Nodes of this ply or deeper stop the search; it bounds every table indexed by ply.
    static constexpr std::int32_t MaxPly = 255;

    /// The deepest iteration of any thread.
    static constexpr std::int32_t MaxDepth = 254;

    /// Bound to a position for life, and reset.
    CSearch(CPosition& position, const SearchContext& context);

    /// Forgets the previous search: flags, counters, history, killers and lines; takes the time as
    /// the start of the next. Called before the thread of the search starts, so that a `stop` which
    /// arrives before the thread is under way is not lost.
    void ResetSearch() noexcept;

    /// The master's work, after `ResetSearch`: deepens until a limit or `stop`, reports on the way
    /// and prints the best move.
    void Think(const SearchLimits& limits, IWorkers& workers, ISearchReceiver& receiver);

    /// The full-width search of a node.
    ///
    /// `depth`: remaining plies; 0 or less only in check or on the way into quiescence. `ply`:
    /// distance from the root; 0 at a worker's root. `afterNull`: the move before was a null move.
    /// Returns the score from the view of the side to move: `alpha` itself when nothing beats it
    /// (and when stopped), a value of `beta` or more on a cut-off.
    [[nodiscard]] Score AlphaBeta(std::int32_t depth, std::int32_t ply, Score alpha, Score beta,
                                  bool afterNull) noexcept;

    /// Resolves captures, promotions and checks below the horizon. `qply` is 0 at the horizon.
    [[nodiscard]] Score Quiescence(std::int32_t ply, std::int32_t qply, Score alpha,
                                   Score beta) noexcept;

    /// The next move of a node, `NoMove` at the end.
    [[nodiscard]] Move NextMove(CMovePicker& picker) noexcept;

    /// Asks the search to unwind. Any thread may call it.
    void RequestStop() noexcept { stop_ = true; }

    [[nodiscard]] bool IsStopped() const noexcept { return stop_; }

    /// Lets the hard time limit count. It always does: nothing sets the flag that this clears, and
    /// a pondering search keeps to its limit as if the move were on the board.
    void ClearPause() noexcept { pause_ = false; }

    /// This thread's nodes; after `Think` the sum over all threads. Any thread may read it.
    [[nodiscard]] std::uint64_t Nodes() const noexcept { return nodes_; }

private:
    struct KillerPair {
        Move first{0};
        Move second{0};
    };

    /// A root move's line, kept while "MultiPV" asks for more than one.
    struct ScoredLine {
        PvLine line;
        Score score = 0;
    };

    /// What the steps of one node share.
    struct Node {
        std::int32_t depth;
        std::int32_t ply;
        Score alpha;
        Score beta;
        bool inCheck;  ///< at entry
        bool isPv;     ///< the window was wider than one point at entry
        Bound bound = Bound::Upper;
        Move bestMove{0};
        std::int32_t legalMoves = 0;
        std::int32_t reducible = 0;  ///< moves so far that met every condition of a reduction
    };

    static constexpr std::int32_t MultiPvSlots = 20;
    static constexpr std::int32_t CountdownStart = 8191;
    static constexpr std::uint32_t NoTimeLimit = 0xFFFFFFFF;

    // alpha_beta.cpp
    [[nodiscard]] bool IsRepetition() const noexcept;
    [[nodiscard]] std::optional<Score> ProbeTable(std::int32_t depth, Score alpha,
                                                  Score beta) const noexcept;
    [[nodiscard]] std::optional<Score> ProbeBases(std::int32_t depth, std::int32_t ply);
    [[nodiscard]] std::optional<Score> PruneStatically(const Node& node) noexcept;
    [[nodiscard]] std::optional<Score> TryNullMove(const Node& node, bool afterNull) noexcept;
    [[nodiscard]] bool SearchMoves(Node& node) noexcept;
    [[nodiscard]] Score SearchMove(const Node& node, std::int32_t newDepth,
                                   std::int32_t reduction) noexcept;
    [[nodiscard]] std::int32_t ExtensionOf(const Node& node, Move move, Piece moved) const noexcept;
    [[nodiscard]] std::int32_t ReductionOf(Node& node, Move move, Piece moved,
                                           std::int32_t extension, bool isQuiet) const noexcept;
    void LearnFromQuiet(const Node& node, Move move, Piece moved, Score value) noexcept;
    void RememberKiller(std::int32_t ply, Move move) noexcept;
    void RaiseAlpha(Node& node, Move move, Score value) noexcept;
    [[nodiscard]] Score StoreResult(const Node& node) noexcept;
    [[nodiscard]] bool IsQuiet(Move move) const noexcept;

    // move_picker.cpp
    [[nodiscard]] bool IsKillerUsable(Move killer, const CMovePicker& picker) const noexcept;
    [[nodiscard]] std::int32_t ScoreQuiets(MoveList& list) const noexcept;

    // limits.cpp
    void AllocateTime() noexcept;

    void CheckLimits(std::int32_t ply) noexcept {
        if (ply >= MaxPly || position_.ply >= CPosition::UndoCapacity) [[unlikely]] {
            stop_ = true;
        }
        if (receiver_ != nullptr) {
            CheckMasterLimits();
        }
    }

    void CheckMasterLimits() noexcept;
    void CheckClock() noexcept;
    [[nodiscard]] std::uint32_t Elapsed() const noexcept;
    void OutputStatus();
    [[nodiscard]] SearchStatistics Statistics() const noexcept;

    // root_search.cpp
    [[nodiscard]] std::int32_t IterationBound() const noexcept;
    [[nodiscard]] bool MayFinish(Score score, std::int32_t depth) const noexcept;
    void Iterate();
    [[nodiscard]] Score RootSearch(std::int32_t depth);
    [[nodiscard]] bool SearchRootMoves(Node& node);
    [[nodiscard]] Score SearchRootMove(const Node& node, std::int32_t newDepth) noexcept;
    void LearnFromRootQuiet(const Node& node, Move move, Piece moved, Score value) noexcept;
    [[nodiscard]] bool IsRootMoveWanted(Move move) const noexcept;
    void ReportRefutation(Move move, std::int32_t depth);
    void SaveMultiPvLine(Move move, Score value) noexcept;
    void ExtractHashLine(PvLine& line, std::int32_t maxLength) noexcept;
    void OutputPv(std::int32_t depth, Score score);
    void OutputMultiPv(std::int32_t depth);
    void PrintResult();

    // Small accessors of the per-ply and per-move tables.
    [[nodiscard]] PvLine& PvOf(std::int32_t ply) noexcept {
        return pv_[static_cast<std::size_t>(ply)];
    }

    [[nodiscard]] CMovePicker& PickerOf(std::int32_t ply) noexcept {
        return pickers_[static_cast<std::size_t>(ply)];
    }

    [[nodiscard]] KillerPair& KillersOf(std::int32_t ply) noexcept {
        return killers_[static_cast<std::size_t>(ply)];
    }

    [[nodiscard]] HistoryEntry& HistoryOf(Piece piece, Square to) noexcept {
        return history_[piece][to];
    }

    [[nodiscard]] const HistoryEntry& HistoryOf(Piece piece, Square to) const noexcept {
        return history_[piece][to];
    }

    void RebuildPv(std::int32_t ply, Move move) noexcept;

    // Read at every node.
    CPosition& position_;
    CHashTable& hash_;
    CBaseList& bases_;
    const CSearchOptions& options_;
    CMoveGenerator generator_;
    Relaxed<bool> stop_{false};   ///< set by other threads as well
    Relaxed<bool> pause_{false};  ///< written by other threads
    bool outputMoves_ = false;    ///< report each root move; raised by the first status line
    Relaxed<std::uint64_t> nodes_{0};
    std::int32_t countdown_ = CountdownStart;  ///< nodes until the next look at the clock
    std::int32_t seldepth_ = 0;                ///< deepest quiescence ply of the iteration

    // The master's; null in a worker, which has neither clock nor output.
    ISearchReceiver* receiver_ = nullptr;
    IWorkers* workers_ = nullptr;
    SearchLimits limits_;
    std::uint32_t startTick_ = 0;
    std::uint32_t lastTick_ = 0;  ///< of the last status line
    std::uint32_t hardLimit_ = NoTimeLimit;
    std::uint32_t softLimit_ = NoTimeLimit;

    CEvaluation evaluation_;
    std::array<SquareTable<HistoryEntry>, PieceCodes> history_;
    std::array<KillerPair, MaxPly> killers_;
    PvLine currentLine_;  ///< moves from the root to the current node
    PvLine bestLine_;     ///< of the last finished iteration
    std::array<CMovePicker, MaxPly> pickers_;
    std::array<PvLine, MaxPly + 2> pv_;
    std::array<ScoredLine, MultiPvSlots> multiPv_;
    std::int32_t multiPvCount_ = 0;
};

}  // namespace brenquil
