// The Nalimov tables as a source of answers: the distance to mate, in the search, at the root and
// in the listing of moves.
//
// The object owns its option group; a change of its options loads tables and resizes the cache.
// Questions may come from all searching threads at once. A change of path or cache frees what they
// read, so it ends the search first.
#pragma once

#include "bases/base.h"
#include "bases/host.h"
#include "bases/nalimov/nalimov_cache.h"
#include "bases/nalimov/nalimov_options.h"
#include "bases/nalimov/nalimov_tables.h"

#include <string>

namespace brenquil {

class CNalimovBasesDTM final : public IBase {
public:
    static constexpr int MostMen = 6;  ///< of any signature, kings included

    CNalimovOptions options;

    /// @param host  hears of tables that were found
    explicit CNalimovBasesDTM(IHost& host);

    /// Registers the tables of another path and says how large the largest one is, if any. The
    /// present path changes nothing.
    void SetPath(const std::string& path);

    /// Resizes the block cache to that many mebibytes, if the text is a number.
    void SetCache(const std::string& megabytes);

    [[nodiscard]] std::uint32_t GetPriority() const override { return 2; }

    /// The score, with the distance from the root folded into wins and losses.
    [[nodiscard]] bool ProbeSearch(Score& score, const CPosition& position, int depth,
                                   int ply) override;

    /// The move to the best position that a table knows. Moves that no table knows are left out.
    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition& position) override;

    /// "+M3", "-M12" or "0".
    [[nodiscard]] bool ProbeMoveInfo(BaseMoveInfo& info, Move move,
                                     const CPosition& position) override;

    /// For tests and measurements, which look at both from outside.
    [[nodiscard]] const CNalimovTables& Tables() const noexcept { return tables_; }

    [[nodiscard]] const CNalimovCache& Cache() const noexcept { return cache_; }

private:
    [[nodiscard]] bool MayAnswer(const CPosition& position) const noexcept;

    IHost& host_;
    std::string path_;
    CNalimovTables tables_{host_};
    CNalimovCache cache_{host_, tables_};
};

}  // namespace brenquil
