// The bytes of a file that is being put together.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace brenquil {

using ByteList = std::vector<std::uint8_t>;

inline void Append(ByteList& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Appends the lowest `count` bytes of a number, the least significant first.
inline void AppendLittle(ByteList& bytes, std::uint64_t number, unsigned count) {
    for (unsigned byte = 0; byte < count; ++byte) {
        bytes.push_back(number >> (8 * byte) & 0xFFU);
    }
}

/// The same, the most significant first.
inline void AppendBig(ByteList& bytes, std::uint64_t number, unsigned count) {
    for (unsigned byte = count; byte-- > 0;) {
        bytes.push_back(number >> (8 * byte) & 0xFFU);
    }
}

}  // namespace brenquil
