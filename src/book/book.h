// The opening book as a source of ready moves, the first one that is asked.
//
// The book holds moves with weights for a position. The option "Book Mode" says how far down the
// list, sorted by weight, a choice may reach; within that range every move is equally likely. So
// the weights set the order and the size of the range, not the odds:
//
// | mode       | the choice falls among                |
// |------------|---------------------------------------|
// | Wide       | all moves                             |
// | Standard   | the better half, rounded up           |
// | Tournament | the best fifth, rounded up            |
// | BestMove   | the first move alone                  |
//
// A weight counts as a signed 16-bit number: from 32768 up it stands last. A book move is
// pseudo-legal and no more: one that leaves the king in check is not a fault of the
// engine.
//
// The book's file is replaced by the reading thread and questioned by it, and by the master's
// thread at the end of a search. A new path therefore ends the search first.
#pragma once

#include "bases/base.h"
#include "bases/host.h"
#include "book/book_file.h"
#include "book/book_options.h"

#include <cstdint>
#include <random>
#include <string>

namespace brenquil {

/// The book, its options and the choice among its moves.
class CBook final : public IBase {
public:
    CBookOptions options;

    /// @param host  hears of a book that has been opened
    explicit CBook(IHost& host);

    /// The number of records of the open book, 0 without one.
    [[nodiscard]] std::uint32_t RecordCount() const noexcept { return file_.RecordCount(); }

    /// Appends the book's moves for the position, in the order of the file; nothing if there is no
    /// book or it is not to be used.
    void LookUp(MoveList& list, const CPosition& position) noexcept;

    /// The book's choice in the present mode, with its weight in the upper half of the word. For
    /// the reading thread.
    /// @return false if the book has no move
    [[nodiscard]] bool PickMove(Move& result, const CPosition& position);

    [[nodiscard]] std::uint32_t GetPriority() const override { return 0; }

    [[nodiscard]] bool ProbeSearch(Score&, const CPosition&, int, int) override { return false; }

    /// The choice, with a score of 0.
    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition& position) override;

    /// Share of the move and the book's best line after it.
    [[nodiscard]] bool ProbeMoveInfo(BaseMoveInfo& info, Move move,
                                     const CPosition& position) override;

private:
    using Mode = CBookOptions::Mode;

    void Load(const std::string& path);
    [[nodiscard]] bool Pick(Move& result, const CPosition& position, Mode mode);
    [[nodiscard]] int RandomBelow(int limit);
    void FollowLine(PvLine& line, Move move, const CPosition& position);

    IHost& host_;
    CBookFile file_;
    std::string path_;
    std::mt19937 random_;
    bool isSeeded_ = false;
};

}  // namespace brenquil
