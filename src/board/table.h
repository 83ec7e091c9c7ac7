// A fixed array whose index is a square or another small signed number of the board: a file, a
// rank, a ply.
//
// `std::array` takes an unsigned index, and squares are plain integers because arithmetic on them
// is the point. Colours and pieces are unsigned enumerations and index a `std::array` as they are.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace brenquil {

/// An aggregate like `std::array`, without a constructor and without a test of the index in release
/// builds. The index is never negative, which spares the extension of its sign.
template <class T, std::size_t Size>
struct Table {
    T values[Size];

    [[nodiscard]] constexpr const T& operator[](int index) const noexcept {
        assert(index >= 0 && static_cast<unsigned>(index) < Size);
        return values[static_cast<unsigned>(index)];
    }

    [[nodiscard]] constexpr T& operator[](int index) noexcept {
        assert(index >= 0 && static_cast<unsigned>(index) < Size);
        return values[static_cast<unsigned>(index)];
    }

    [[nodiscard]] constexpr const T* begin() const noexcept { return values; }

    [[nodiscard]] constexpr const T* end() const noexcept { return values + Size; }

    friend constexpr bool operator==(const Table&, const Table&) = default;

    constexpr void Fill(const T& value) noexcept { std::fill_n(values, Size, value); }
};

/// One element for each square.
template <class T>
using SquareTable = Table<T, 64>;

/// One element for each file, or for each rank.
template <class T>
using LineTable = Table<T, 8>;

}  // namespace brenquil
