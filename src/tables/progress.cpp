#include "tables/progress.h"

#include "platform/standard_streams.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace brenquil {

namespace {

constexpr double SecondsBetweenUpdates = 0.2;
constexpr double SecondsBetweenLines = 30;
constexpr double LeastSecondsForPace = 0.5;
constexpr double LeastShareForPace = 0.01;

std::string Formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

CProgress::~CProgress() {
    Erase();
}

CProgress::Output CProgress::OutputOfSystem() noexcept {
    return StandardOutputIsTerminal() ? Output::Terminal : Output::Lines;
}

void CProgress::BeginTable(const std::string& name, std::size_t number, std::size_t count) {
    table_ = "[" + std::to_string(number) + "/" + std::to_string(count) + "] " + name;
    tableStart_ = Clock::now();
    lastShown_ = tableStart_;
}

void CProgress::BeginPhase(const std::string& phase, std::uint64_t positions) {
    phase_ = phase;
    positions_ = positions;
    phaseStart_ = Clock::now();
    Report(0);
}

std::string CProgress::Describe(double share) const {
    const double seconds = std::chrono::duration<double>(Clock::now() - phaseStart_).count();
    return table_ + "  " + phase_ + Formatted(" %3.0f %%", std::floor(100 * share)) +
           PaceText(share, seconds, positions_);
}

void CProgress::Report(double share) {
    if (output_ == Output::Silent) {
        return;
    }
    const Clock::time_point now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - lastShown_).count();
    const bool isTerminal = output_ == Output::Terminal;
    if (seconds < (isTerminal ? SecondsBetweenUpdates : SecondsBetweenLines)) {
        return;
    }
    lastShown_ = now;
    std::string text = Describe(share);
    if (isTerminal) {
        const std::size_t length = text.size();
        // Blanks cover the end of a longer text before it.
        text.resize(std::max(shownLength_, text.size()), ' ');
        std::printf("\r%s", text.c_str());
        shownLength_ = length;
    } else {
        std::printf("%s\n", text.c_str());
    }
    std::fflush(stdout);
}

void CProgress::EndTable(const std::string& text) {
    Say(table_ + "  " + text + "  " + DurationText(SecondsOfTable()));
}

void CProgress::Say(const std::string& line) {
    if (output_ == Output::Silent) {
        return;
    }
    Erase();
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void CProgress::Erase() {
    if (shownLength_ != 0) {
        std::printf("\r%s\r", std::string(shownLength_, ' ').c_str());
        std::fflush(stdout);
        shownLength_ = 0;
    }
}

double CProgress::SecondsOfTable() const noexcept {
    return std::chrono::duration<double>(Clock::now() - tableStart_).count();
}

std::string PaceText(double share, double seconds, std::uint64_t positions) {
    if (seconds < LeastSecondsForPace || share < LeastShareForPace) {
        return {};
    }
    const auto rate = static_cast<std::uint64_t>(static_cast<double>(positions) * share / seconds);
    return "  " + CountText(rate) + " positions/s  " + DurationText(seconds * (1 - share) / share) +
           " left";
}

double Share(std::uint64_t part, std::uint64_t whole) noexcept {
    return static_cast<double>(part) / static_cast<double>(whole);
}

std::string DurationText(double seconds) {
    if (seconds < 60) {
        return Formatted("%.1f s", seconds);
    }
    const auto whole = std::lround(std::min(seconds, 1e9));
    char text[64];
    if (whole < 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    }
    return text;
}

std::string SizeText(std::uint64_t bytes) {
    if (bytes < 1024) {
        return std::to_string(bytes) + " bytes";
    }
    const auto size = static_cast<double>(bytes);
    if (size < 1024 * 1024) {
        return Formatted("%.1f KiB", size / 1024);
    }
    return size < 1024.0 * 1024 * 1024 ? Formatted("%.1f MiB", size / (1024 * 1024))
                                       : Formatted("%.2f GiB", size / (1024.0 * 1024 * 1024));
}

std::string CountText(std::uint64_t count) {
    std::string text = std::to_string(count);
    for (std::size_t place = text.size(); place > 3; place -= 3) {
        text.insert(place - 3, 1, ',');
    }
    return text;
}

}  // namespace brenquil
