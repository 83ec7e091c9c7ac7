// Tells how far a long command has come.
//
// On a terminal one line is kept up to date: table, phase, percent, positions a second, time left.
// Elsewhere (a file, a pipe) there are whole lines: one for each table that is done, and one every
// half minute while a table takes longer.
//
// Belongs to the thread that runs the command; nothing else may print to standard output while a
// line is shown, except through `Say`.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace brenquil {

class CProgress {
public:
    enum class Output { Silent, Lines, Terminal };

    explicit CProgress(Output output) noexcept : output_(output) {}

    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;
    ~CProgress();

    /// `Terminal` or `Lines`, by what standard output is.
    [[nodiscard]] static Output OutputOfSystem() noexcept;

    /// Begins table `number` of `count`.
    void BeginTable(const std::string& name, std::size_t number, std::size_t count);

    /// Begins a part of the work on the table, over that many positions.
    void BeginPhase(const std::string& phase, std::uint64_t positions);

    /// The share of the phase that is done, 0 to 1. Costs a look at the clock at most.
    void Report(double share);

    /// Ends the table with a line: its name, what is said and how long it took.
    void EndTable(const std::string& text);

    /// Prints a line of its own.
    void Say(const std::string& line);

    /// Seconds since the table was begun.
    [[nodiscard]] double SecondsOfTable() const noexcept;

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] std::string Describe(double share) const;
    void Erase();

    Output output_;
    std::string table_;
    std::string phase_;
    std::uint64_t positions_ = 0;
    Clock::time_point tableStart_ = Clock::now();
    Clock::time_point phaseStart_ = Clock::now();
    Clock::time_point lastShown_ = Clock::now();
    std::size_t shownLength_ = 0;
};

/// "  9,870 positions/s  2:05 left", for a phase over that many positions that has run for some
/// seconds and has this share, 0 to 1, behind it. Empty while either is too little to go by.
[[nodiscard]] std::string PaceText(double share, double seconds, std::uint64_t positions);

/// What a part is of a whole, which is not 0.
[[nodiscard]] double Share(std::uint64_t part, std::uint64_t whole) noexcept;

/// "1.3 s", "2:05", "1:02:05".
[[nodiscard]] std::string DurationText(double seconds);

/// "512 bytes", "62.1 KiB", "1.4 MiB".
[[nodiscard]] std::string SizeText(std::uint64_t bytes);

/// "25,629".
[[nodiscard]] std::string CountText(std::uint64_t count);

}  // namespace brenquil
