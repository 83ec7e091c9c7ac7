// Nalimov tables: distance to mate, one file for each side to move, plain or compressed.
#pragma once

#include "tables/table_family.h"

#include <optional>

namespace brenquil {

/// A file of a Nalimov table.
struct NalimovFileChoice {
    std::string name;
    bool isCompressed = false;
};

/// The file of an ending's side to move in a folder, a plain one first, as the engine looks for
/// them; nothing if there is none.
[[nodiscard]] std::optional<NalimovFileChoice> FindNalimovFile(const std::string& folder,
                                                               const Ending& ending, int side);

/// Both files of a side, where a plain and a compressed one are there; the plain one counts.
[[nodiscard]] std::vector<NalimovFileChoice> NalimovFilesThere(const std::string& folder,
                                                               const Ending& ending, int side);

/// The contents of a file; empty if it is damaged. Throws `CTableError` if it cannot be read.
[[nodiscard]] std::vector<std::uint8_t>
ReadNalimovFile(const std::string& folder, const NalimovFileChoice& file, CWorkers& workers);

/// How Nalimov files are written.
struct NalimovWriting {
    bool plain = false;     ///< plain files are wanted, and compressed ones do not do
    bool replaces = false;  ///< what was there is not trusted: the other form of a file goes
};

class CNalimovFamily final : public ITableFamily {
public:
    explicit CNalimovFamily(TableSetting setting, NalimovWriting writing = {})
        : setting_(std::move(setting)), writing_(writing) {}

    [[nodiscard]] std::string Name() const override { return "nalimov"; }

    [[nodiscard]] std::string NameOf(const Ending& ending) const override { return ending.name; }

    [[nodiscard]] std::vector<std::string> FilesOf(const Ending& ending) const override;
    [[nodiscard]] TableState Look(const Ending& ending, std::string& culprit) const override;
    std::shared_ptr<SolvedValues> Make(const Ending& ending, const SolvedEndings& solved,
                                       std::uint64_t& bytes) override;
    void Read(Colour sideToMove, SolvedValues& values) override;
    [[nodiscard]] std::uint64_t MakingBytes(const Ending& ending) const override;

private:
    TableSetting setting_;
    NalimovWriting writing_;
};

}  // namespace brenquil
