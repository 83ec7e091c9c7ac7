// A middlegame and an endgame value side by side in one 64-bit word, so that both are summed by one
// addition.
//
// The upper half holds the middlegame value and the lower half the endgame value as signed 32-bit
// numbers; a negative endgame value borrows from the upper half, and `Middlegame` gives it back.
// Exact as long as both sums stay within 32 bits: 64 men with terms below 400 are far from it.
#pragma once

#include <cstdint>
#include <type_traits>

namespace brenquil {

class TermPair {
public:
    /// Two zeros.
    constexpr TermPair() noexcept = default;

    constexpr TermPair(std::int32_t middlegame, std::int32_t endgame) noexcept
        : word_((static_cast<std::uint64_t>(middlegame) << 32U) +
                static_cast<std::uint64_t>(std::int64_t{endgame})) {}

    [[nodiscard]] constexpr std::int32_t Middlegame() const noexcept {
        return static_cast<std::int32_t>((word_ + 0x80000000U) >> 32U);
    }

    [[nodiscard]] constexpr std::int32_t Endgame() const noexcept {
        return static_cast<std::int32_t>(word_);
    }

    constexpr TermPair& operator+=(TermPair other) noexcept {
        word_ += other.word_;
        return *this;
    }

    constexpr TermPair& operator-=(TermPair other) noexcept {
        word_ -= other.word_;
        return *this;
    }

    [[nodiscard]] friend constexpr TermPair operator+(TermPair a, TermPair b) noexcept {
        return a += b;
    }

    [[nodiscard]] friend constexpr TermPair operator-(TermPair a, TermPair b) noexcept {
        return a -= b;
    }

    [[nodiscard]] friend constexpr bool operator==(TermPair a, TermPair b) noexcept = default;

private:
    std::uint64_t word_ = 0;
};

static_assert(sizeof(TermPair) == 8 && std::is_trivially_copyable_v<TermPair>);

}  // namespace brenquil
