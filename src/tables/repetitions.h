// Which places of a block repeat what stands at some distance before them. The compression of
// `emd_writer.h` finds its distances by it: it asks for all of them, thousands for each block, so
// the places are bits of a set and a word of them is worked on at once.
#pragma once

#include "tables/emd_writer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace brenquil {

/// Places of a block, 0 to `EmdBlockSize` - 1: bit p of word w is the place 64 w + p.
using PlaceSet = std::array<std::uint64_t, EmdBlockSize / 64>;

/// The places from which three bytes and more equal those `distance` before, which is at least 1.
/// A block has at most `EmdBlockSize` bytes; one that ends before `distance` has none.
[[nodiscard]] PlaceSet StartsOfRuns(std::span<const std::uint8_t> block,
                                    std::size_t distance) noexcept;

/// All places of the runs that start so.
[[nodiscard]] PlaceSet PlacesOfRuns(const PlaceSet& starts) noexcept;

/// From 0 to `EmdBlockSize`.
[[nodiscard]] std::uint32_t CountPlaces(const PlaceSet& places) noexcept;

/// How many places of `places` are not among `others`.
[[nodiscard]] std::uint32_t CountPlacesWithout(const PlaceSet& places,
                                               const PlaceSet& others) noexcept;

}  // namespace brenquil
