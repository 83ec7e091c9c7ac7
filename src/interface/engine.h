// The engine as its commands see it: a handful of verbs, and behind them every object of the
// program.
//
// A search works on the game position, the tables and the memory. Each verb that changes one of
// them, or that hands out the position, first ends the search under way and waits for its
// `bestmove`; so does an option whose change would pull something away from under it. No command
// has to think of that, and none can forget it.
//
// One engine is one program: the main function makes one and never destroys it, because a search
// thread may still look at it when the process ends. Tests make their own, each with its own sink;
// nothing here is shared between two of them. All of it is for the reading thread.
//
// Some two megabytes large, without the hash table; it belongs on the heap.
#pragma once

#include "bases/base.h"
#include "bases/host.h"
#include "bases/nalimov/nalimov_bases_dtm.h"
#include "bases/syzygy/syzygy_bases.h"
#include "bases/syzygy/syzygy_options.h"
#include "bases/syzygy/syzygy_tables.h"
#include "board/position.h"
#include "board/position_text.h"
#include "book/book.h"
#include "eval/evaluation_options.h"
#include "eval/kpk_bitbase.h"
#include "interface/line_sink.h"
#include "interface/output_options.h"
#include "interface/protocol.h"
#include "interface/uci/uci_output.h"
#include "search/hash_table.h"
#include "search/memory_options.h"
#include "search/search_limits.h"
#include "search/search_options.h"
#include "search/threads.h"
#include "text/option.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// The engine of one session.
class CEngine : private IHost {
public:
    /// @param sink  takes every output line; outlives the engine
    explicit CEngine(ILineSink& sink);
    CEngine(const CEngine&) = delete;
    CEngine& operator=(const CEngine&) = delete;

    /// Ends a search that is under way.
    ~CEngine() override;

    // The game position. These end the search.

    /// What has been set and played.
    [[nodiscard]] const CPosition& Position();

    /// The same as a FEN.
    [[nodiscard]] std::string Fen();

    /// Sets the position from a FEN, the empty one included, and notes how that FEN writes
    /// castling.
    void SetPosition(std::string_view fen);

    /// Plays one move, or reports it as illegal.
    void PlayMoveText(std::string_view word);

    /// The move that the text means here, or `NoMove`.
    [[nodiscard]] Move TextToMove(std::string_view text);

    /// Takes back the move of the last record. After a FEN with a later move number that is a
    /// record which no move of this game wrote: the position knows and stays as it is. A number
    /// beyond the undo stack has no record at all.
    void TakeBack();

    /// Exchanges the colours.
    void Flip();

    /// Start position and an empty hash table.
    void NewGame();

    // The search.

    /// Ends the search under way, then answers from the bases or starts a search and returns.
    void Go(const SearchLimits& limits);

    /// Asks the search to stop and returns at once. The best move comes from the search's thread.
    void Stop() noexcept { master.Stop(); }

    /// Tells the search that the move it ponders over has been played.
    void PonderHit() noexcept { master.PonderHit(); }

    /// Stops the search under way and waits for its `bestmove`.
    void EndSearch() override;

    /// Waits until the search under way ends by itself.
    void WaitForSearch() noexcept { master.WaitForSearch(); }

    /// Nodes of the last search, all threads together.
    [[nodiscard]] std::uint64_t Nodes() const noexcept { return master.Nodes(); }

    /// The static score of a position from the view of the side to move. Ends the search.
    [[nodiscard]] Score Evaluate(const CPosition& position);

    /// The moves of the game position with what the bases know about each, a row a move. Ends the
    /// search.
    [[nodiscard]] std::vector<std::string> ListMoves();

    // Options and session.

    /// Gives the value to the option of that name.
    /// @return false when there is none
    bool SetOption(std::string_view name, const std::string& value);

    /// All options, in the order of their `option` lines.
    [[nodiscard]] const OptionGroupList& Options() const noexcept { return optionGroups; }

    /// What is printed, and in which notation.
    [[nodiscard]] const COutputOptions& Output() const noexcept { return outputOptions; }

    /// Ends the session after the line that is being obeyed. A search is not told: the process ends
    /// under it.
    void Quit() noexcept { protocol.running = false; }

    CProtocol protocol;

protected:
    // The objects, for tests to look at. The group of the output lists an option of the
    // evaluation's and comes after it; else they only take addresses while they are made, and their
    // order means nothing.
    CHashTable hashTable;
    CBaseList bases;
    const CKpkBitbase kpkBitbase;
    CSearchOptions searchOptions;
    CEvaluationOptions evaluationOptions;
    COutputOptions outputOptions{evaluationOptions};
    CUciOutput output{protocol, outputOptions, bases};
    CMasterThread master;
    CMemoryOptions memoryOptions{*this, hashTable};
    CBook book{*this};
    CNalimovBasesDTM nalimov{*this};
    CSyzygyTables syzygyTables{*this};
    CSyzygyOptions syzygyOptions;
    CSyzygyBasesDTZ syzygyDtz{syzygyTables, syzygyOptions};
    CSyzygyBasesWDL syzygyWdl{syzygyTables, syzygyOptions};
    const OptionGroupList optionGroups{&memoryOptions, &searchOptions, &evaluationOptions,
                                       &outputOptions, &book.options,  &nalimov.options,
                                       &syzygyOptions};

private:
    [[nodiscard]] SearchContext Context() noexcept;
    [[nodiscard]] CPosition& PositionAtRest();

    // What book, tables and memory have to say.
    void Print(std::string_view message) override;
    void PrintBare(std::string_view line) override;
};

}  // namespace brenquil
