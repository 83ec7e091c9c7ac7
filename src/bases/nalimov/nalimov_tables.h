// The registered tables: which files there are, and how each is read.
//
// Registration walks the directories of a path, tries the file names of all signatures, sides and
// extents, checks the sizes of what it finds and notes it. Nothing else is read of a plain file;
// of a compressed one the header is read and kept. A file that is not there is the normal case; one
// that cannot be what its name says ends the program with a message.
//
// Registration is for the thread that sets the options, while no probe is under way, as it frees
// what a probe reads. Afterwards any number of threads may look things up; what changes then (open
// streams, failed extents) is guarded as told at each member.
#pragma once

#include "bases/host.h"
#include "bases/nalimov/data_comp.h"
#include "bases/nalimov/nalimov_file.h"
#include "bases/nalimov/nalimov_index.h"
#include "bases/nalimov/nalimov_material_tree.h"
#include "bases/nalimov/nalimov_signatures.h"
#include "bases/nalimov/nalimov_spin_lock.h"
#include "platform/relaxed.h"

#include <array>
#include <cassert>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace brenquil {

struct NalimovCacheEntry;

inline constexpr std::uint32_t NalimovBlockSize = 8192;
inline constexpr int NalimovMaximumExtents = 18;
inline constexpr std::uint32_t NalimovBuckets = 32;  ///< of one side of a table
inline constexpr unsigned NalimovExtentShift = 31;   ///< an extent has 2^31 bytes

/// A hash chain of the block cache. A block's bucket is its number modulo the count of buckets.
struct NalimovBucket {
    CSpinLock lock;  ///< guards the chain and the bytes of its blocks
    NalimovCacheEntry* head = nullptr;
};

static_assert(sizeof(NalimovBucket) == 2 * sizeof(void*));

/// One file of a side; a table that is not split has one extent.
struct NalimovExtent {
    std::string fileName;         ///< empty: not there
    Relaxed<bool> usable{false};  ///< there, and no read of it has failed so far
    CNalimovFile file;            ///< open once it was needed; guarded by the side's file lock
    std::unique_ptr<DataCompInfo> decodeInfo;  ///< none for a plain file
};

/// The files of one side to move, and its part of the block cache.
struct NalimovSide {
    std::array<NalimovExtent, NalimovMaximumExtents> extents;
    CSpinLock fileLock;
    std::array<NalimovBucket, NalimovBuckets> buckets;
};

/// What is known of one table.
struct NalimovTable {
    [[nodiscard]] bool IsSymmetric() const noexcept { return (flags & NalimovSymmetric) != 0; }

    [[nodiscard]] bool IsTwoByte() const noexcept { return (flags & NalimovTwoByte) != 0; }

    [[nodiscard]] bool IsSplit() const noexcept { return (flags & NalimovSplit) != 0; }

    /// The number of files of a side, when they are all there. Before the first directory has been
    /// searched `positions` are 0, and the answer is 1 for every table.
    [[nodiscard]] int Extents(int side) const noexcept;

    int index = 0;
    std::uint32_t flags = 0;
    std::array<const CNalimovCalculator*, 2> calculators{};  ///< null until files are looked for
    std::string_view name;
    std::array<std::uint64_t, 2> positions{};           ///< 0 until then
    std::array<std::unique_ptr<NalimovSide>, 2> sides;  ///< none where no file was found
};

/// The list of tables.
class CNalimovTables {
public:
    /// @param host  ends the program over a damaged file
    explicit CNalimovTables(IHost& host);

    /// Forgets all files, then looks for tables in the directories of `path`, which are separated
    /// by "," or ";". An empty piece is the current directory. A file that was found first stays.
    /// @return the number of men of the largest table that was found, 3 to 6, or 0
    int RegisterAll(const std::string& path);

    /// Looks for one file, of a list that `RegisterAll` has searched a directory for.
    /// @return false when it is absent; a damaged one ends the program
    bool RegisterOne(const std::string& directory, NalimovTable& table, int side, int extent);

    /// The signed number of the table for these counts, as the tree has it: a table of an earlier
    /// path may be without files.
    [[nodiscard]] int FindTable(const NalimovCounts& counts) const noexcept {
        return tree_.Find(counts);
    }

    /// Closes all open table files; they are opened again when needed.
    void CloseFiles();

    /// The table of a number, from 1; number 0 is the two bare kings.
    [[nodiscard]] NalimovTable& Table(int number) noexcept {
        assert(number >= 0 && number <= NalimovTableCount);
        return tables_[number];
    }

    [[nodiscard]] const NalimovTable& Table(int number) const noexcept {
        assert(number >= 0 && number <= NalimovTableCount);
        return tables_[number];
    }

    /// Is there a compressed file among the registered ones.
    [[nodiscard]] bool HasCompressedFiles() const noexcept { return hasCompressedFiles_; }

    /// What RegisterAll returned last: positions of more men need not be looked for.
    Relaxed<int> menLoaded{0};

private:
    /// What the system said about drive letters during one registration.
    struct Drives {
        std::array<bool, 26> isChecked{};
        std::array<bool, 26> isNotReady{};
    };

    /// Takes the numbering of each table over. Not before a directory is searched: making the
    /// calculators takes longer than all else at the start of the program, and few have tables.
    void ChooseCalculators();

    void Forget();
    [[nodiscard]] bool RegisterSide(const std::string& directory, NalimovTable& table, int side);
    [[nodiscard]] bool MayReadDrive(const std::string& directory);
    void EnterMaterial(const NalimovTable& table);

    IHost& host_;
    std::array<NalimovTable, NalimovTableCount + 1> tables_;
    CNalimovMaterialTree tree_;
    Drives drives_;
    bool hasCompressedFiles_ = false;
    bool hasCalculators_ = false;
};

}  // namespace brenquil
