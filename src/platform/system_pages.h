// The two calls on which CPages rests, one pair for each system. Nobody else uses them.
#pragma once

#include <cstddef>

namespace brenquil {

/// Zero-filled pages for `bytes` bytes, nullptr when the system refuses. `bytes` is above 0.
[[nodiscard]] void* ReservePages(std::size_t bytes) noexcept;

/// Gives back what ReservePages returned for the same number of bytes.
void ReleasePages(void* data, std::size_t bytes) noexcept;

}  // namespace brenquil
