// Syzygy tables: classes under the fifty-move rule (".rtbw") and distances to the next capture or
// pawn move (".rtbz").
#pragma once

#include "bases/syzygy/syzygy_tables.h"
#include "tables/quiet_host.h"
#include "tables/table_family.h"

namespace brenquil {

/// The position of the men, as the reader of the tables has it.
[[nodiscard]] TbPosition TbPositionOf(const Ending& ending, const EndingSquares& squares,
                                      Colour sideToMove) noexcept;

class CSyzygyFamily final : public ITableFamily {
public:
    explicit CSyzygyFamily(TableSetting setting) : setting_(std::move(setting)) {}

    [[nodiscard]] std::string Name() const override { return "syzygy"; }

    [[nodiscard]] std::string NameOf(const Ending& ending) const override {
        return ending.syzygyName;
    }

    [[nodiscard]] std::vector<std::string> FilesOf(const Ending& ending) const override;
    [[nodiscard]] TableState Look(const Ending& ending, std::string& culprit) const override;
    std::shared_ptr<SolvedValues> Make(const Ending& ending, const SolvedEndings& solved,
                                       std::uint64_t& bytes) override;
    void Read(Colour sideToMove, SolvedValues& values) override;
    [[nodiscard]] std::uint64_t MakingBytes(const Ending& ending) const override;

private:
    TableSetting setting_;
    CQuietHost host_;
    CSyzygyTables tables_{host_};
};

}  // namespace brenquil
