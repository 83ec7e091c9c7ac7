// The engine as its commands see it: a handful of verbs, and behind them every object of the
// program.
//
// A search works on the game position, the tables and the memory. Each verb that changes one of
// them, or that hands out the position, first ends the search under way and waits for its
// `bestmove`; so does an option whose change would pull something from under the search. No command
// has to think of that, so none can forget it.
//
// One engine is one program: the main function makes one and never destroys it, because a search
// thread may still look at it when the process ends. Tests make their own, each with its own sink;
// nothing here is shared between two of them. All of it is for the reading thread.
//
// It takes 1.4 MB, without the hash table, so it belongs on the heap: in one huge page, where the
// system has them.
#pragma once

#include "board/position.h"
#include "board/types.h"
#include "interface/engine_parts.h"
#include "interface/line_sink.h"
#include "interface/output_options.h"
#include "interface/protocol.h"
#include "platform/memory.h"
#include "search/search_limits.h"
#include "text/option.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brenquil {

/// The engine of one session.
class CEngine : public CInHugePages {
public:
    /// @param sink  takes every output line; outlives the engine
    explicit CEngine(ILineSink& sink, CDialect dialect = {});
    CEngine(const CEngine&) = delete;
    CEngine& operator=(const CEngine&) = delete;

    /// Ends a search that is under way.
    ~CEngine();

    // The game position. These end the search.

    /// What has been set and played.
    [[nodiscard]] const CPosition& Position();

    /// The same as a FEN.
    [[nodiscard]] std::string Fen();

    /// Sets the position from a FEN, the empty one for the start position, and notes how that FEN
    /// writes castling.
    void SetPosition(std::string_view fen);

    /// Plays one move, or reports it as illegal.
    void PlayMoveText(std::string_view word);

    /// The move that the text means here, legal or not, or `NoMove`.
    [[nodiscard]] Move TextToMove(std::string_view text);

    /// The legal move that the text means here, or `NoMove`.
    [[nodiscard]] Move TextToLegalMove(std::string_view text);

    /// Takes back the move of the last record. After a FEN with a later move number no move of this
    /// game wrote that record: the position knows and stays as it is. A number beyond the undo
    /// stack has no record at all.
    void TakeBack();

    /// Exchanges the colours.
    void Flip();

    /// Start position and an empty hash table.
    void NewGame();

    // The search.

    /// Ends the search under way, then answers from the bases or starts a search and returns.
    void Go(const SearchLimits& limits);

    /// Asks the search to stop and returns at once. The best move comes from the search's thread.
    void Stop() noexcept { parts_.master.Stop(); }

    /// Tells the search that the move it ponders over has been played.
    void PonderHit() noexcept { parts_.master.PonderHit(); }

    /// Stops the search under way and waits for its `bestmove`.
    void EndSearch() noexcept { parts_.master.EndSearch(); }

    /// Sets what a thread calls now and then while it waits long for the end of a search; see
    /// `CMasterThread::onLongWait`.
    void SetLongWait(std::function<void()> action) { parts_.master.onLongWait = std::move(action); }

    /// Waits until the search under way ends by itself.
    void WaitForSearch() noexcept { parts_.master.WaitForSearch(); }

    /// Nodes of the last search, all threads together.
    [[nodiscard]] std::uint64_t Nodes() const noexcept { return parts_.master.Nodes(); }

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
    [[nodiscard]] const OptionGroupList& Options() const noexcept { return parts_.optionGroups; }

    /// Milliseconds that a move needs on its way to the opponent.
    [[nodiscard]] int MoveOverhead() const noexcept {
        return parts_.strictOptions.moveOverhead.number;
    }

    /// What is printed, and in which notation.
    [[nodiscard]] const COutputOptions& Output() const noexcept { return parts_.outputOptions; }

    /// Ends the session after the line that is being obeyed. A search is not told: the process ends
    /// under it.
    void Quit() noexcept { protocol.running = false; }

    CProtocol protocol;

    /// Called now and then by a command that takes long. May be null.
    std::function<void()> onLongWork;

protected:
    CEngineParts parts_{protocol};  ///< for tests to look at

private:
    [[nodiscard]] CPosition& PositionAtRest();
    void MakeRoomForMoves();

    int forgottenPlies_ = 0;  ///< since the position was set
};

}  // namespace brenquil
