// The lines that a search prints, one builder for each form.
//
// The search reports figures and moves through ISearchReceiver and decides when; the order of the
// fields, the notation of the moves and the options that silence a line are all here. Builders make
// strings freely: they run a few times a second at most.
//
// Moves are spelt from a copy of the root position, because the position that the search works on
// is somewhere in the tree when a line is printed and has lost the castling rights that tell how a
// castling move is written. Rights are never gained, so the root's serve for every move of a line.
#pragma once

#include "bases/base.h"
#include "board/position.h"
#include "interface/output_options.h"
#include "interface/protocol.h"
#include "interface/uci/strict_options.h"
#include "search/search_receiver.h"

#include <string>

namespace brenquil {

/// Prints for one master search at a time. Used by the reading thread while no search runs, and by
/// the master's thread while one does.
class CUciOutput final : public ISearchReceiver {
public:
    /// All four outlive this object.
    CUciOutput(CProtocol& protocol, const COutputOptions& options,
               const CStrictOptions& strictOptions, const CBaseList& bases);

    void SetRoot(const CPosition& root) override { root_ = root; }

    void PrintPv(const PvReport& report, const SearchStatistics& statistics) override;
    void PrintCurrMove(Move move, int number) override;
    void PrintRefutation(Move move, const PvLine& line) override;
    void PrintStats(const SearchStatistics& statistics) override;
    void PrintCurrentLine(const PvLine& line) override;
    void PrintBestMove(Move best, Move ponder) override;
    void PrintNoBestMove() override;

    /// The moves of a line, joined by one blank.
    [[nodiscard]] std::string PvText(const PvLine& line) const;

private:
    [[nodiscard]] std::string ChancesText(Score score) const;
    [[nodiscard]] std::string MoveText(Move move) const;
    [[nodiscard]] std::string DatabaseText(Move best);

    CProtocol& protocol_;
    const COutputOptions& options_;
    const CStrictOptions& strictOptions_;
    const CBaseList& bases_;
    CPosition root_;
};

}  // namespace brenquil
