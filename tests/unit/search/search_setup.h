// What the tests of the search share: a search with everything that it needs, a receiver that
// writes down what is reported, workers and bases whose answers a test decides, and positions.
#pragma once

#include "bases/base.h"
#include "board/move_generator.h"
#include "board/position.h"
#include "board/position_text.h"
#include "board/score.h"
#include "platform/relaxed.h"
#include "search/root_search.h"
#include "search/search.h"
#include "search/workers.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

inline const CKpkBitbase& TestBitbase() {
    static const CKpkBitbase bitbase;
    return bitbase;
}

// Reports as text

/// Squares, and for moves that are not normal the kind and its index.
[[nodiscard]] std::string MoveName(Move move);

/// The moves of a line, joined by blanks.
[[nodiscard]] std::string LineText(std::span<const Move> line);

[[nodiscard]] std::string PvText(std::int32_t depth, std::int32_t selectiveDepth, Score score,
                                 Score alpha, Score beta, std::int32_t multiPv,
                                 std::span<const Move> line, const SearchStatistics& statistics);
[[nodiscard]] std::string StatsText(const SearchStatistics& statistics);
[[nodiscard]] std::string BestMoveText(Move best, Move ponder);

/// What a search has reported: everything as text in its order, and the parts by kind.
struct SearchRecord {
    struct Pv {
        PvReport report;
        PvLine line;
        SearchStatistics statistics;
    };

    /// The reports whose text begins so.
    [[nodiscard]] std::vector<std::string> Beginning(std::string_view start) const;

    std::vector<std::string> texts;
    std::vector<std::uint64_t> rootKeys;
    std::vector<Pv> pvs;
    std::vector<SearchStatistics> statistics;
    Move best{0};
    Move ponder{0};
    Relaxed<int> ends{0};  ///< best moves and missing best moves; may be read during a search
};

/// Writes the record.
class CRecordingReceiver final : public ISearchReceiver {
public:
    void SetRoot(const CPosition& root) override;
    void PrintPv(const PvReport& report, const SearchStatistics& statistics) override;
    void PrintCurrMove(Move move, std::int32_t number) override;
    void PrintRefutation(Move move, const PvLine& line) override;
    void PrintStats(const SearchStatistics& statistics) override;
    void PrintCurrentLine(const PvLine& line) override;
    void PrintBestMove(Move best, Move ponder) override;
    void PrintNoBestMove() override;

    SearchRecord record;

    /// Called after each report of its kind, if set.
    std::function<void(const SearchRecord::Pv& pv)> onPv;
    std::function<void()> onStats;
    std::function<void(Move move)> onCurrMove;
};

/// Workers that do nothing and have the nodes that the test gives them.
class CFakeWorkers final : public IWorkers {
public:
    void Start(const CPosition& root) override {
        calls += "start ";
        rootKey = root.key;
        if (onStart) {
            onStart();
        }
    }

    [[nodiscard]] std::uint64_t Nodes() const noexcept override { return isStopped ? 0 : nodes; }

    void Stop() noexcept override {
        calls += "stop ";
        isStopped = true;
    }

    std::string calls;
    std::uint64_t rootKey = 0;
    std::uint64_t nodes = 0;
    bool isStopped = false;
    std::function<void()> onStart;
};

/// A base that asks the test for its answer.
class CScriptedBase final : public IBase {
public:
    using Answer = std::function<bool(Score& score, const CPosition& position, int depth, int ply)>;

    explicit CScriptedBase(std::uint32_t priority = 0) : priority_(priority) {}

    [[nodiscard]] std::uint32_t GetPriority() const override { return priority_; }

    [[nodiscard]] bool ProbeSearch(Score& score, const CPosition& position, int depth,
                                   int ply) override {
        return answer && answer(score, position, depth, ply);
    }

    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition&) override {
        move = rootMove;
        return !rootMove.IsNone();
    }

    [[nodiscard]] bool ProbeMoveInfo(BaseMoveInfo&, Move, const CPosition&) override {
        return false;
    }

    Answer answer;
    Move rootMove{0};  ///< the answer to `go`; none if `NoMove`

private:
    std::uint32_t priority_;
};

// Positions

/// Sets up the FEN and plays the moves of the text, each of which must be legal. Castling is the
/// king's move to its target.
void SetPosition(CPosition& position, std::string_view fen, std::string_view moves = "");

/// The move that the text names on the position; a failure if there is none.
[[nodiscard]] Move MoveOf(const CPosition& position, std::string_view text);

/// The legal moves in the order of the generator.
[[nodiscard]] std::vector<Move> LegalMoves(CPosition& position);

/// Plays up to `count` random legal moves.
void PlayRandomly(CPosition& position, int count, std::mt19937_64& random);

/// The start position of a Chess960 game.
[[nodiscard]] std::string RandomChess960Fen(std::mt19937_64& random);

/// Varied positions: openings, middlegames, tactics, endings, checks, Chess960.
[[nodiscard]] std::span<const std::string_view> VariedPositions();

/// A search, and the objects that it works on. Hash of 1 MB, default options, no bases.
struct SearchSetup {
    explicit SearchSetup(std::uint32_t megabytes = 1) { EXPECT_TRUE(hash.Resize(megabytes)); }

    [[nodiscard]] SearchContext Context() {
        return {hash, bases, options, evaluationOptions, TestBitbase()};
    }

    void Set(std::string_view fen, std::string_view moves = "") {
        SetPosition(position, fen, moves);
    }

    /// Sets an option by its name.
    void Option(std::string_view name, const std::string& value) {
        EXPECT_TRUE(options.SetOption(name, value)) << name;
    }

    /// A whole search with its own receiver and workers, as `go` starts it.
    SearchRecord Think(const SearchLimits& limits) {
        CRecordingReceiver receiver;
        CFakeWorkers workers;
        Think(limits, receiver, workers);
        return receiver.record;
    }

    void Think(const SearchLimits& limits, CRecordingReceiver& receiver, IWorkers& workers) {
        hash.BeginSearch(false);
        bases.hits = 0;
        ThinkOn(limits, receiver, workers);
    }

    /// The same with the table's age as it is: what the test has stored is of this search.
    void ThinkOn(const SearchLimits& limits, ISearchReceiver& receiver, IWorkers& workers) {
        CRootSearch rootSearch(*search, position, Context(), workers, receiver);
        root = &rootSearch;
        rootSearch.Prepare(limits);
        rootSearch.Think();
        root = nullptr;
    }

    SearchRecord ThinkToDepth(std::int32_t depth) {
        SearchLimits limits;
        limits.depth = depth;
        return Think(limits);
    }

    /// One node with its tree, on a search that knows nothing.
    Score Node(std::int32_t depth, std::int32_t ply = 1, Score alpha = -MateScore,
               Score beta = MateScore, bool afterNull = false) {
        search->ResetSearch();
        return search->AlphaBeta(depth, ply, alpha, beta, afterNull);
    }

    Score Quiescence(std::int32_t ply = 1, Score alpha = -MateScore, Score beta = MateScore) {
        search->ResetSearch();
        return search->Quiescence(ply, 0, alpha, beta);
    }

    /// The static score of the position.
    [[nodiscard]] Score Static(Score alpha = -MateScore, Score beta = MateScore) {
        return CEvaluation(position, evaluationOptions, hash.pawnHash, TestBitbase())
            .Evaluate(alpha, beta);
    }

    CHashTable hash;
    CBaseList bases;
    CSearchOptions options;
    CEvaluationOptions evaluationOptions;
    CPosition position;
    std::unique_ptr<CSearch> search = std::make_unique<CSearch>(position, Context());
    CRootSearch* root = nullptr;  ///< while `Think` runs
};

}  // namespace brenquil
