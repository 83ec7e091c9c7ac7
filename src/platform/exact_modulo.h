// The remainder by a divisor that stays fixed for long, without a division.
//
//     const CExactModulo slotOf(count);      // divides once
//     table[slotOf(key)]                     // two multiplications and a correction
//
// The result is exactly `value % divisor`, for every value and every divisor from 1. With
// r = floor((2^64 - 1) / divisor) the estimate q = floor(value * r / 2^64) of the quotient is never
// too large. With s < divisor the remainder that r leaves, value / divisor exceeds value * r / 2^64
// by value * (1 + s) / (divisor * 2^64), which is below 1, so q is too small by 1 at most: one
// correction is enough.
//
// Cost: about 8 cycles, where a division takes 25 to 90.
#pragma once

#include "platform/bits.h"

#include <cassert>
#include <cstdint>

namespace brenquil {

class CExactModulo {
public:
    /// The remainder by 1, which is always 0.
    constexpr CExactModulo() noexcept = default;

    /// `divisor` is not 0.
    constexpr explicit CExactModulo(std::uint64_t divisor) noexcept
        : divisor_(divisor), reciprocal_(~std::uint64_t{0} / divisor) {
        assert(divisor != 0);
    }

    /// The remainder of `value`, 0 to divisor - 1.
    [[nodiscard]] constexpr std::uint64_t operator()(std::uint64_t value) const noexcept {
        const std::uint64_t quotient = MultiplyHigh(value, reciprocal_);
        const std::uint64_t remainder = value - quotient * divisor_;
        return remainder >= divisor_ ? remainder - divisor_ : remainder;
    }

    [[nodiscard]] constexpr std::uint64_t Divisor() const noexcept { return divisor_; }

private:
    std::uint64_t divisor_ = 1;
    std::uint64_t reciprocal_ = ~std::uint64_t{0};
};

}  // namespace brenquil
