// Single values out of the tables in a folder, without reading whole files.
//
// Files are opened when a position first asks for them and stay open. A damaged file answers
// nothing. Belongs to one thread.
#pragma once

#include "bases/nalimov/data_comp.h"
#include "bases/syzygy/syzygy_tables.h"
#include "platform/file_mapping.h"
#include "tables/quiet_host.h"
#include "tables/shown_position.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace brenquil {

/// What the tables of both families know of a position; nothing where they know nothing.
struct TableAnswer {
    std::optional<int> mate;     ///< n for a win in n moves, -n - 1 for a loss in n, 0 for a draw
    std::optional<int> wdl;      ///< class, -2 to 2
    std::optional<int> zeroing;  ///< plies to the next capture or pawn move, negative for a loss
};

class CTableLookup {
public:
    explicit CTableLookup(std::string folder);

    [[nodiscard]] TableAnswer Ask(const ShownPosition& position);

    /// Names of files that turned out to be damaged.
    [[nodiscard]] const std::vector<std::string>& Damaged() const noexcept { return damaged_; }

private:
    struct OpenFile {
        CFileMapping mapping;
        std::unique_ptr<DataCompInfo> info;  ///< none for a plain file
    };

    [[nodiscard]] std::optional<int> AskMate(const ShownPosition& position);
    [[nodiscard]] const OpenFile* FileOf(int number, int side);
    [[nodiscard]] static std::optional<std::uint8_t> ByteAt(const OpenFile& file,
                                                            std::uint64_t place);

    std::string folder_;
    std::map<std::pair<int, int>, std::unique_ptr<OpenFile>> files_;  // by ending and side
    CQuietHost host_;
    CSyzygyTables syzygy_{host_};
    std::vector<std::string> damaged_;
};

}  // namespace brenquil
