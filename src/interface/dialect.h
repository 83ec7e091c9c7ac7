// Which way of talking a session has: the settled one, or strict UCI, which match tools, bots and
// scripts expect.
//
// Whatever depends on the dialect asks here, by a question that names what it wants to know. The
// search tree is the same in both.
#pragma once

#include "search/search_manners.h"

#include <string_view>

namespace brenquil {

/// One of the two dialects. A value; as cheap to copy as a flag.
class CDialect {
public:
    /// The one that the program has without a switch.
    constexpr CDialect() noexcept = default;

    [[nodiscard]] static constexpr CDialect Strict() noexcept { return CDialect(true); }

    /// Under a name that ends in "-strict", before any ".exe", a program talks strictly: many front
    /// ends have no field for arguments.
    /// @param path  of the program, as it was called
    [[nodiscard]] static CDialect OfProgram(std::string_view path);

    // The command loop asks:

    /// Does the end of the input end the session.
    [[nodiscard]] constexpr bool EndsWithItsInput() const noexcept { return isStrict_; }

    // The commands ask:

    /// Are values fitted to what an option advertises, names found in any letter case, and misses
    /// reported.
    [[nodiscard]] constexpr bool ChecksOptions() const noexcept { return isStrict_; }

    /// Are there the options that the settled list lacks.
    [[nodiscard]] constexpr bool HasMoreOptions() const noexcept { return isStrict_; }

    /// Is a `go` line read word by word, is `perft` known in it, and is what is not understood
    /// reported.
    [[nodiscard]] constexpr bool ReadsGoWordByWord() const noexcept { return isStrict_; }

    /// Is a castling move understood in the notation of either kind of chess.
    [[nodiscard]] constexpr bool ReadsEitherCastling() const noexcept { return isStrict_; }

    /// Does a game go on beyond the end of the undo stack, whose oldest moves are forgotten.
    [[nodiscard]] constexpr bool ForgetsOldMoves() const noexcept { return isStrict_; }

    // The output asks:

    /// May castling be written by name.
    [[nodiscard]] constexpr bool NamesCastling() const noexcept { return !isStrict_; }

    /// Is a position without moves answered by `bestmove (none)`.
    [[nodiscard]] constexpr bool SaysThatThereIsNoMove() const noexcept { return isStrict_; }

    /// What the search promises.
    [[nodiscard]] constexpr SearchManners Manners() const noexcept {
        return {isStrict_, isStrict_, isStrict_, isStrict_};
    }

private:
    explicit constexpr CDialect(bool isStrict) noexcept : isStrict_(isStrict) {}

    bool isStrict_ = false;
};

}  // namespace brenquil
