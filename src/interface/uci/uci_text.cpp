#include "interface/uci/uci_text.h"

#include "board/score.h"

#include <algorithm>
#include <sstream>

namespace brenquil {

std::string ScoreText(Score score) {
    const int distance = MateDistance(score);
    if (distance == 0) {
        return " score cp " + std::to_string(score);
    }
    // Plies to moves: the side that mates makes the last of an odd number of plies.
    const int moves = distance / 2 + (distance > 0 ? 1 : 0);
    return " score mate " + std::to_string(moves);
}

std::string BoundText(Score score, Score alpha, Score beta) {
    if (score > beta) {
        return " lowerbound";
    }
    if (score < alpha) {
        return " upperbound";
    }
    return {};
}

std::uint64_t NodesPerSecond(std::uint64_t nodes, std::uint32_t milliseconds) {
    if (milliseconds == 0) {
        return nodes;
    }
    const double seconds = milliseconds / 1000.0;
    return static_cast<std::uint64_t>(static_cast<double>(nodes) / seconds);
}

std::string SecondsText(std::uint32_t milliseconds) {
    std::ostringstream text;
    text << milliseconds / 1000.0;
    return text.str();
}

std::int32_t CpuLoad(std::int32_t ticks, std::int32_t clock) {
    if (ticks <= 0 || clock <= 0) {
        return 0;
    }
    const double elapsed = ticks;
    const double load = std::min(clock / elapsed, 1.0);
    return static_cast<std::int32_t>(load * 1000.0);
}

}  // namespace brenquil
