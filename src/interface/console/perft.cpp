#include "interface/console/perft.h"

#include "board/move_generator.h"
#include "interface/uci/uci_text.h"
#include "platform/clock.h"

#include <cassert>
#include <string>

namespace brenquil {

namespace {

/// Plies that are counted within a fraction of a second.
constexpr int ShortDepth = 4;

[[nodiscard]] bool IsInRange(int depth) noexcept {
    return depth >= 0 && depth <= CPerft::MaxDepth;
}

}  // namespace

CPerft::CPerft(ILineSink& sink, CastlingNotation notation)
    : output_(sink), notation_(notation), lists_(MaxDepth + 1) {}

const MoveList& CPerft::MoveListFor(int depth) {
    assert(IsInRange(depth));
    MoveList& list = lists_[depth];
    list.count = 0;
    const CMoveGenerator generator(position);
    if (position.inCheck) {
        generator.GenerateEvasions(list);
    } else {
        generator.GenerateMoves(list, MoveKinds::All);
    }
    return list;
}

std::uint64_t CPerft::CountNodes(int depth) {
    if (!IsInRange(depth)) {
        return 0;
    }
    return depth == 0 ? 1 : Count(depth);
}

/// The work of CountNodes, for a depth from 1 to MaxDepth. Leaves are made and taken back like any
/// other node, without the parts of a made move that only a further move would read.
std::uint64_t CPerft::Count(int depth) {
    assert(depth >= 1 && depth <= MaxDepth);
    std::uint64_t count = 0;
    if (depth == 1) {
        for (const Move move : MoveListFor(depth)) {
            if (position.MakeLeaf(move)) {
                ++count;
                position.UndoLeaf(move);
            }
        }
        return count;
    }
    for (const Move move : MoveListFor(depth)) {
        if (position.MakeMove(move)) {
            count += Count(depth - 1);
            position.UndoMove(move);
        }
    }
    return count;
}

/// CountNodes, with calls of `onLongWork` between its parts.
std::uint64_t CPerft::CountWatched(int depth) {
    if (depth <= ShortDepth) {
        if (onLongWork) {
            onLongWork();
        }
        return CountNodes(depth);
    }
    std::uint64_t count = 0;
    for (const Move move : MoveListFor(depth)) {
        if (position.MakeMove(move)) {
            count += CountWatched(depth - 1);
            position.UndoMove(move);
        }
    }
    return count;
}

std::uint64_t CPerft::Perft(int depth) {
    if (!IsInRange(depth)) {
        return 0;
    }
    std::uint64_t count = 0;
    for (int d = 1; d <= depth; ++d) {
        const std::uint32_t start = TickCount();
        count = CountNodes(d);
        const std::uint64_t rate = NodesPerSecond(count, TickCount() - start);
        output_.PrintLine("depth " + std::to_string(d) + " nodes " + std::to_string(count) +
                          " nps " + std::to_string(rate) + " ");
    }
    return count;
}

void CPerft::PerftDivide(int depth) {
    if (!IsInRange(depth) || depth == 0) {
        return;
    }
    const std::uint32_t start = TickCount();
    output_.PrintLine("");

    std::uint64_t total = 0;
    int number = 0;
    for (const Move move : MoveListFor(depth)) {
        const std::string text = CPositionText::MoveToText(move, position, notation_);
        if (!position.MakeMove(move)) {
            continue;
        }
        const std::uint64_t count = CountNodes(depth - 1);
        position.UndoMove(move);
        total += count;
        ++number;
        std::string row(number < 10 ? 1 : 0, ' ');
        row += std::to_string(number) + "  " + text + " - " + std::to_string(count);
        output_.PrintLine(row);
    }

    const std::uint32_t elapsed = TickCount() - start;
    output_.PrintLine("");
    output_.PrintLine("nodes: " + std::to_string(total));
    output_.PrintLine("time:  " + SecondsText(elapsed));
    output_.PrintLine("nps:   " + std::to_string(NodesPerSecond(total, elapsed)));
}

void CPerft::PerftSplit(int depth) {
    std::uint64_t total = depth == 0 ? 1 : 0;
    if (IsInRange(depth) && depth > 0) {
        for (const Move move : MoveListFor(depth)) {
            const std::string text = CPositionText::MoveToText(move, position, notation_);
            if (!position.MakeMove(move)) {
                continue;
            }
            const std::uint64_t count = CountWatched(depth - 1);
            position.UndoMove(move);
            total += count;
            output_.PrintLine(text + ": " + std::to_string(count));
        }
    }
    output_.PrintLine("");
    output_.PrintLine("Nodes searched: " + std::to_string(total));
}

}  // namespace brenquil
