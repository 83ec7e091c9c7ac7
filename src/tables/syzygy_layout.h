// From a number in a Syzygy table back to the squares of the men: what a reader never needs and a
// maker does all the time.
//
// A layout is the order in which a table lists its men and the order in which their groups are
// multiplied up (bases/syzygy/tb_index.h). Both are free; some compress much better than others.
#pragma once

#include "bases/syzygy/tb_index.h"
#include "tables/ending.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace brenquil {

/// An order of the men and of the groups.
struct SyzygyOrder {
    std::array<std::uint8_t, TbMaxTableMen> pieceCodes{};
    unsigned order = 0;
    unsigned secondOrder = TbNoSecondOrder;
};

/// All orders that are worth a trial for an ending.
[[nodiscard]] std::vector<SyzygyOrder> SyzygyOrders(const TbShape& shape);

/// One file group of a table in one order.
class CSyzygyLayout {
public:
    /// @param file  the file group, 0 to 3; 0 without pawns
    CSyzygyLayout(const Ending& ending, const TbShape& shape, const SyzygyOrder& order,
                  unsigned file);

    [[nodiscard]] const Ending& Of() const noexcept { return ending_; }

    /// How many numbers there are.
    [[nodiscard]] std::uint64_t Size() const noexcept { return layout_.size; }

    /// The squares of a number, in the order of the ending's men. Some numbers stand for no
    /// position.
    /// @return false for one that stands for no placement at all
    [[nodiscard]] bool SquaresOf(std::uint64_t number, EndingSquares& squares) const noexcept;

private:
    struct Group {
        std::size_t first;  ///< its first man in the list
        std::size_t count;
        std::uint64_t factor;
        std::uint64_t size;
        Square lowest;
    };

    void ListGroups(const TbShape& shape, unsigned file);

    const Ending& ending_;
    TbLayout layout_;
    std::size_t leaders_ = 0;  // men of the leading group
    std::uint64_t leadingSize_ = 0;
    /// By number of the leading group: its squares; -1 for none. Lives as long as the program.
    const std::vector<std::array<Square, 4>>* leading_ = nullptr;
    std::vector<Group> groups_;  // after the leading one, in the order of the list
    std::array<std::uint8_t, EndingMostMen> manOf_{};  // by place in the list: man of the ending
};

}  // namespace brenquil
