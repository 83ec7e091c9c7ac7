// The values of all positions of one ending, in the numbering of the solver.
//
// One number a place, from the view of the side to move: what it means is up to the family of
// tables (tables/rules.h). Places that are not positions hold anything.
//
// Memory: one or two bytes a place; five men without pawns have 168 million places for each side to
// move, with one pawn 403 million. The object may be read by any number of threads.
#pragma once

#include "platform/memory.h"
#include "tables/ending.h"
#include "tables/ending_index.h"
#include "tables/table_error.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace brenquil {

template <class Code>
class CEndingValues {
public:
    /// Holds nothing yet.
    explicit CEndingValues(const Ending& ending) : ending_(ending), index_(ending) {}

    /// Makes room for one side to move; all values are 0. Throws `CTableError` where the memory
    /// cannot be had.
    void Allocate(Colour sideToMove) {
        pages_[sideToMove] = CPages::Allocate(BytesOfSide());
        if (!Has(sideToMove)) {
            throw COutOfMemory("out of memory: " + ending_.name + " needs " +
                               std::to_string(2 * BytesOfSide() >> 20U) + " MiB for its values");
        }
    }

    /// Gives the memory of one side to move back.
    void Release(Colour sideToMove) noexcept { pages_[sideToMove].Release(); }

    [[nodiscard]] bool Has(Colour sideToMove) const noexcept {
        return pages_[sideToMove].Data() != nullptr;
    }

    [[nodiscard]] const Ending& Of() const noexcept { return ending_; }

    [[nodiscard]] const CEndingIndex& Index() const noexcept { return index_; }

    /// Places of one side to move.
    [[nodiscard]] std::size_t Places() const noexcept {
        return index_.SliceSize() * index_.Slices();
    }

    [[nodiscard]] std::size_t BytesOfSide() const noexcept { return Places() * sizeof(Code); }

    /// The values of a slice.
    [[nodiscard]] Code* Slice(Colour sideToMove, std::size_t slice) noexcept {
        return pages_[sideToMove].As<Code>() + slice * index_.SliceSize();
    }

    [[nodiscard]] const Code* Slice(Colour sideToMove, std::size_t slice) const noexcept {
        return pages_[sideToMove].As<const Code>() + slice * index_.SliceSize();
    }

    [[nodiscard]] Code At(CEndingIndex::Place place, Colour sideToMove) const noexcept {
        return Slice(sideToMove, place.slice)[place.index];
    }

    [[nodiscard]] Code At(const EndingSquares& squares, Colour sideToMove) const noexcept {
        return At(index_.PlaceOf(squares), sideToMove);
    }

private:
    const Ending& ending_;
    CEndingIndex index_;
    std::array<CPages, 2> pages_;  // by side to move
};

/// The values of the endings that an ending can turn into: one byte each.
using SolvedValues = CEndingValues<std::int8_t>;

/// The solved endings at hand, by number; nothing for the others.
using SolvedEndings = std::array<std::shared_ptr<SolvedValues>, EndingCount + 1>;

/// The value of what an ending has turned into, from the view of the side to move there. Bare kings
/// are a draw.
[[nodiscard]] inline std::int8_t ValueOfExit(const SolvedEndings& solved, const EndingExit& exit,
                                             const EndingSquares& squares,
                                             Colour sideToMove) noexcept {
    if (exit.ending == 0) {
        return 0;
    }
    const SolvedValues& values = *solved[exit.ending];
    return values.At(exit.Map(squares), exit.flipped ? ~sideToMove : sideToMove);
}

}  // namespace brenquil
