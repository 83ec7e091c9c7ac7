// Compresses a table into a file of the kind that ends in ".emd".
//
// The contents are cut into blocks of 8192 bytes that are coded independently: literal bytes and
// matches at one of 24 distances, all in one prefix code for the file. What there is to choose is
// chosen for size: the distances are those at which samples of the contents repeat themselves most,
// each block is cut into the cheapest sequence of literals and matches under the code, and the code
// is fitted to that. A block that does not get smaller stays as it is.
//
// The result depends on the contents alone. docs/nalimov.md and data_comp.cpp have the layout; the
// two check values of a block, which no reader needs, are the sums of its contents and of its
// stored bytes, as the header's own sum is made.
#pragma once

#include "tables/progress.h"
#include "tables/workers.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace brenquil {

/// The size of every block but the last one, in bytes.
inline constexpr std::size_t EmdBlockSize = 8192;

/// @param contents  not empty
[[nodiscard]] std::vector<std::uint8_t> CompressEmd(std::span<const std::uint8_t> contents,
                                                    CWorkers& workers, CProgress& progress);

/// The contents of a compressed file, or an empty vector if it is damaged.
[[nodiscard]] std::vector<std::uint8_t> DecompressEmd(std::span<const std::uint8_t> file,
                                                      CWorkers& workers);

}  // namespace brenquil
