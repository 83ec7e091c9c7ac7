#include "platform/exact_modulo.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace brenquil {
namespace {

constexpr std::uint64_t Largest = ~std::uint64_t{0};

constexpr std::array<std::uint64_t, 16> Divisors = {1,
                                                    2,
                                                    3,
                                                    3276,
                                                    39321,
                                                    1U << 20U,
                                                    0xFFFFFFFE,
                                                    0xFFFFFFFF,
                                                    std::uint64_t{1} << 32U,
                                                    (std::uint64_t{1} << 32U) + 1,
                                                    std::uint64_t{1} << 63U,
                                                    (std::uint64_t{1} << 63U) - 1,
                                                    (std::uint64_t{1} << 63U) + 1,
                                                    Largest - 1,
                                                    Largest,
                                                    53687091};

TEST(ExactModulo, EqualsTheDivisionForRandomValues) {
    std::mt19937_64 generator(7);
    for (const std::uint64_t divisor : Divisors) {
        const CExactModulo modulo(divisor);
        for (int i = 0; i < 20000; ++i) {
            const std::uint64_t value = generator() >> (generator() % 64);
            ASSERT_EQ(modulo(value), value % divisor) << value << " % " << divisor;
        }
    }
}

TEST(ExactModulo, EqualsTheDivisionAroundMultiplesOfTheDivisor) {
    std::mt19937_64 generator(11);
    for (const std::uint64_t divisor : Divisors) {
        const CExactModulo modulo(divisor);
        const std::uint64_t highest = Largest / divisor;
        for (int i = 0; i < 2000; ++i) {
            const std::uint64_t multiple = (i == 0 ? highest : generator() % highest) * divisor;
            for (const std::uint64_t value : {multiple - 1, multiple, multiple + 1}) {
                ASSERT_EQ(modulo(value), value % divisor) << value << " % " << divisor;
            }
        }
    }
}

TEST(ExactModulo, EqualsTheDivisionAtBothEndsForRandomDivisors) {
    std::mt19937_64 generator(13);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t divisor = (generator() >> (generator() % 64)) | 1U;
        const CExactModulo modulo(divisor);
        for (const std::uint64_t value : {std::uint64_t{0}, std::uint64_t{1}, divisor - 1, divisor,
                                          divisor + 1, Largest - 1, Largest, generator()}) {
            ASSERT_EQ(modulo(value), value % divisor) << value << " % " << divisor;
        }
    }
}

TEST(ExactModulo, KeepsItsDivisor) {
    EXPECT_EQ(CExactModulo(3276).Divisor(), 3276U);
}

TEST(ExactModulo, DefaultLeavesNothing) {
    const CExactModulo modulo;
    EXPECT_EQ(modulo.Divisor(), 1U);
    EXPECT_EQ(modulo(0), 0U);
    EXPECT_EQ(modulo(12345), 0U);
    EXPECT_EQ(modulo(Largest), 0U);
}

}  // namespace
}  // namespace brenquil
