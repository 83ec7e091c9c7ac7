// The material signatures for which tables exist, in the order of their numbers.
//
// A signature names the men of the first side and then those of the second, each from its king on:
// "kqpkr" is king, queen and pawn against king and rook. The first side is the stronger one. Tables
// are numbered from 1; number 0 stands for the two bare kings, which need no table.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace brenquil {

/// How a table is stored; bits of `NalimovSignature::flags`.
enum NalimovFlags : std::uint32_t {
    NalimovSymmetric = 1,  ///< both sides have the same men: only the file of side 0 exists
    NalimovTwoByte = 2,    ///< a position takes two bytes: mates too distant for one
    NalimovSplit = 4       ///< the file of a side is cut into extents of 2 GiB
};

struct NalimovSignature {
    std::string_view name;
    std::uint32_t flags = 0;

    /// By side to move: how many of the last places no legal position has. The file ends before
    /// them. They arise where two men of the mover share their last square in the enumeration, or
    /// where a distant check is not excluded from it. Found by a search over all placements.
    std::array<std::uint32_t, 2> unreached{};
};

inline constexpr int NalimovTableCount = 440;
inline constexpr int NalimovFirstFourMen = 6;  ///< smallest table number with four men
inline constexpr int NalimovFirstFiveMen = 36;
inline constexpr int NalimovFirstSixMen = 146;

/// Indexed by table number; entry 0 is the pair of bare kings.
extern const std::array<NalimovSignature, NalimovTableCount + 1> NalimovSignatures;

}  // namespace brenquil
