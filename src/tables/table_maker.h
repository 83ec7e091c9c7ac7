// Makes tables in the order in which they need each other.
//
// What an ending can turn into is made first, or read when it is there. Solved endings stay in
// memory as long as there is room, those of a recent use longest. A table that is there and sound
// is not made again, so a run that was ended goes on where it stopped.
#pragma once

#include "tables/table_family.h"

#include <vector>

namespace brenquil {

struct MakingPlan {
    std::vector<int> endings;       ///< numbers of the wanted ones
    std::uint64_t memoryBytes = 0;  ///< what values, contents and tables may take together
    bool force = false;             ///< make also what is there
};

/// Makes the wanted endings and all that they can turn into. Throws `CTableError`.
void MakeTables(ITableFamily& family, const MakingPlan& plan, CProgress& progress);

/// Bytes that making an ending takes at its peak, with what it can turn into.
[[nodiscard]] std::uint64_t BytesToMake(const ITableFamily& family, const Ending& ending);

/// Solved endings that are read or handed over, as many as the memory holds.
class CSolvedStore {
public:
    CSolvedStore(ITableFamily& family, std::uint64_t memoryBytes)
        : family_(family), memoryBytes_(memoryBytes) {}

    /// The endings that `ending` can turn into, with the sides to move that it needs of them,
    /// beside `workBytes` of other memory. Throws `CTableError` if that does not fit or cannot be
    /// read.
    [[nodiscard]] const SolvedEndings& SuccessorsOf(const Ending& ending, std::uint64_t workBytes);

    /// The same with all values of the ending itself.
    [[nodiscard]] const SolvedEndings& WithSuccessorsOf(const Ending& ending,
                                                        std::uint64_t workBytes);

    /// All values of an ending, read if need be.
    [[nodiscard]] std::shared_ptr<const SolvedValues> ValuesOf(const Ending& ending);

    /// Gives all memory back.
    void Clear() noexcept;

    /// Takes values over.
    void Keep(std::shared_ptr<SolvedValues> values);

private:
    /// By ending: the sides to move that are needed, as bits.
    using Sides = std::vector<std::uint8_t>;

    const SolvedEndings& LoadAll(const Ending& ending, const Sides& needed,
                                 std::uint64_t workBytes);
    void MakeRoom(std::uint64_t bytes, const Sides& needed);
    void Load(int number, unsigned sides);

    ITableFamily& family_;
    std::uint64_t memoryBytes_;
    SolvedEndings solved_;
    std::vector<int> recent_;  // numbers, the last used at the end
};

}  // namespace brenquil
