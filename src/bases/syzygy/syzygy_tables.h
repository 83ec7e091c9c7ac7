// All Syzygy tables that a path names: which there are, and reading them when they are needed.
//
//     CSyzygyTables tables(host);
//     tables.SetPath("/tables/wdl;/tables/dtz");     // says how many were found
//     const TbEntry* entry = tables.TbFindWdl(position, key);
//
// Setting a path only looks which files exist. A win/draw/loss table is mapped and checked by the
// first probe that needs it and stays mapped until the next path; a distance table likewise, in a
// cache of the last 64.
//
// Threads: `TbFindWdl` may be called by any number of threads at once. The first reading of a table
// happens under a mutex; afterwards no lock is taken. Everything else, the distance tables
// included, belongs to the thread of the command loop, and a new path must not be set while a
// search runs.
//
// Costs: about half a megabyte once a path has been set, and what the tables' headers hold.
#pragma once

#include "bases/host.h"
#include "bases/syzygy/tb_entry.h"
#include "bases/syzygy/tb_files.h"
#include "bases/syzygy/tb_hash.h"
#include "platform/relaxed.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace brenquil {

class CSyzygyTables {
public:
    static constexpr std::size_t DtzCacheRows = 64;

    /// @param host  takes the line that says how many tables each new path has, and ends the
    ///              program when something about them is too large
    explicit CSyzygyTables(IHost& host);
    CSyzygyTables(const CSyzygyTables&) = delete;
    CSyzygyTables& operator=(const CSyzygyTables&) = delete;
    ~CSyzygyTables();

    /// Takes the text of the path option. A text that differs from the last one and names
    /// directories is scanned; an empty or unset one puts the tables out of use and leaves them as
    /// they are.
    void SetPath(const std::string& path);

    /// Forgets all tables and looks for those of a new path.
    /// @return true: a path without tables is not a failure
    bool SyzygyInit(const std::string& path);

    /// Can there be a table for this many men. One comparison, as every node of a search asks.
    [[nodiscard]] bool Covers(int men) const noexcept { return men <= usableMen_; }

    /// Is a path set. The program need not ask; tests do.
    [[nodiscard]] bool SyzygyLoaded() const noexcept { return loaded_; }

    /// The most men of a table that was found, for tests; the program asks `Covers`.
    [[nodiscard]] int SyzygyMaxMen() const noexcept { return maxMen_; }

    /// How many tables were found.
    [[nodiscard]] std::size_t Count() const noexcept { return pieceCount_ + pawnCount_; }

    /// The win/draw/loss table of the position with that key, read if it was not yet; nothing if
    /// there is none or it cannot be read.
    [[nodiscard]] const TbEntry* TbFindWdl(const TbPosition& position, std::uint64_t key);

    /// The distance table of the position; nothing if there is none or it cannot be read.
    [[nodiscard]] const DtzEntry* TbFindDtz(const TbPosition& position);

    /// Takes a table of that name into the list, as the scan does with a file that it has found.
    /// Too many tables end the program.
    void AddTable(const std::string& name);

private:
    struct DtzCacheEntry {
        std::uint64_t key = 0;
        std::uint64_t mirrorKey = 0;
        std::unique_ptr<DtzEntry> entry;  ///< nothing: the material has no readable table
    };

    void AddKey(std::uint64_t key, TbEntry& entry);
    void ForgetTables() noexcept;
    [[nodiscard]] bool LoadWdl(const TbPosition& position, std::uint64_t key, CTbHash::Slot& slot);
    [[nodiscard]] std::unique_ptr<DtzEntry> LoadDtz(std::string_view name, const TbShape& shape);

    IHost& host_;
    std::string path_;
    Relaxed<bool> loaded_{false};
    Relaxed<int> maxMen_{0};
    Relaxed<int> usableMen_{-1};  ///< `maxMen_` while loaded
    CTbPaths paths_{host_};
    CTbHash hash_;
    std::unique_ptr<TbEntry[]> pieceEntries_;  ///< made with the first path, used up to the count
    std::unique_ptr<TbEntry[]> pawnEntries_;
    std::size_t pieceCount_ = 0;
    std::size_t pawnCount_ = 0;
    std::mutex mutex_;
    std::array<DtzCacheEntry, DtzCacheRows> dtzCache_;  ///< the last one used in front
};

}  // namespace brenquil
