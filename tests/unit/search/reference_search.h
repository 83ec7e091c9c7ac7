// A second search, slow and literal, to hold the real one against.
//
// It goes through the steps of the algorithm one by one and shares nothing with `CSearch` but what
// lies below the search: position, generator, evaluation, exchanges. Lists are vectors and are
// really sorted by selection, the table is a vector of plain entries indexed by a remainder, scores
// and depths are packed and unpacked by hand. One thread, no clock.
#pragma once

#include "bases/base.h"
#include "board/move_generator.h"
#include "board/position.h"
#include "eval/evaluation.h"
#include "search/search_limits.h"
#include "search/search_options.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace brenquil {

using Moves = std::vector<Move>;

/// The state of one node's move supply.
struct ReferencePicker {
    int ply = 0;
    int stage = 0;
    std::size_t index = 0;
    Move hashMove{0};
    Move killerMove1{0};
    Move killerMove2{0};
    Moves goodList;
    Moves quietList;
    Moves badList;
};

class CReferenceSearch {
public:
    /// The options and the bases outlive the object. `entries`: size of its own table.
    CReferenceSearch(const CSearchOptions& options, const CEvaluationOptions& evaluationOptions,
                     std::size_t entries);

    /// A whole search; its reports as text, in the form of `CRecordingReceiver`.
    std::vector<std::string> Think(const SearchLimits& limits);

    /// Forgets the previous search, as `ResetSearch` does.
    void Reset();

    int AlphaBeta(int depth, int ply, int alpha, int beta, bool afterNull);
    int Quiescence(int ply, int qply, int alpha, int beta);

    /// The next move; false at the end.
    bool NextMove(Move& move, ReferencePicker& picker);

    void Store(int score, int depth, unsigned bound, unsigned move);

    CPosition position;
    std::vector<IBase*> bases;
    std::uint64_t nodes = 0;
    std::uint64_t baseHits = 0;
    std::uint64_t checks = 0;  ///< how often the limits were looked at
    std::uint32_t age = 0;
    std::uint32_t freeCount = 0;
    bool stop = false;

private:
    struct Entry {
        std::uint64_t verification = 0;
        std::uint64_t data = 0;
        std::uint8_t bound = 0;
    };

    struct History {
        int ordering = -32000;
        int hits = 0;
        int misses = 0;
    };

    void CheckLimits(int ply);
    int RootSearch(int depth);
    void ExtractHashLine(Moves& line, int maxLength);
    void OutputPv(int depth, int score);
    void Report(int depth, int score, int alpha, int beta, const Moves& line, int multiPv);
    Entry* Find();
    void ScoreCaptures(Moves& list) const;
    Moves Generate(MoveKinds wanted) const;
    void UpdateKillers(int ply, Move move);
    int Hashfull() const;

    const CSearchOptions& options_;
    CPawnHash noPawnHash_;
    CEvaluation evaluation_;
    std::vector<Entry> table_;
    SearchLimits limits_;
    int seldepth_ = 0;
    std::array<std::array<History, 64>, 12> history_;
    std::vector<std::pair<unsigned, unsigned>> killers_;
    std::vector<Moves> pv_;
    Moves bestLine_;
    std::vector<std::pair<Moves, int>> multiPv_;
    std::vector<std::string> reports_;
};

}  // namespace brenquil
