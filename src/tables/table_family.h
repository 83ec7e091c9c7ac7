// The two families of table files, as one interface: solving an ending, writing and reading its
// files, in one folder.
//
// A family object belongs to one command on one thread; the threads that it works with are given to
// it.
#pragma once

#include "tables/ending_values.h"
#include "tables/progress.h"
#include "tables/workers.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brenquil {

/// What is known of an ending's files.
enum class TableState {
    Absent,   ///< at least one of them is not there
    Damaged,  ///< all are there, and one is not what it should be
    Sound     ///< all are there, and their sums, sizes and structure are right
};

/// How files are looked for and made.
struct TableSetting {
    std::string folder;
    CWorkers& workers;
    CProgress& progress;
};

class ITableFamily {
public:
    ITableFamily() = default;
    ITableFamily(const ITableFamily&) = delete;
    ITableFamily& operator=(const ITableFamily&) = delete;
    virtual ~ITableFamily() = default;

    /// "nalimov" or "syzygy".
    [[nodiscard]] virtual std::string Name() const = 0;

    /// What the ending is called in the names of the family's files.
    [[nodiscard]] virtual std::string NameOf(const Ending& ending) const = 0;

    /// The names that the ending's files can have.
    [[nodiscard]] virtual std::vector<std::string> FilesOf(const Ending& ending) const = 0;

    /// Looks at the ending's files.
    /// @param culprit  takes the name of a damaged one
    [[nodiscard]] virtual TableState Look(const Ending& ending, std::string& culprit) const = 0;

    /// Solves an ending and writes its files. `solved` has all endings that it can turn into.
    /// @param bytes  takes the size of the files together
    /// @return the values, for solving others
    virtual std::shared_ptr<SolvedValues> Make(const Ending& ending, const SolvedEndings& solved,
                                               std::uint64_t& bytes) = 0;

    /// Reads the values of one side to move from the ending's files.
    virtual void Read(Colour sideToMove, SolvedValues& values) = 0;

    /// Bytes that `Make` takes at its peak beside the endings that it can turn into.
    [[nodiscard]] virtual std::uint64_t MakingBytes(const Ending& ending) const = 0;
};

}  // namespace brenquil
