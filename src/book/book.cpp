#include "book/book.h"

#include "board/move_generator.h"
#include "platform/clock.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <iomanip>
#include <memory>
#include <numeric>
#include <sstream>
#include <utility>

namespace brenquil {

namespace {

/// How much of the sorted list a mode may choose from; by mode, without BestMove.
constexpr std::array<int, 3> RangePercent = {100, 50, 20};

/// Heaviest first, by exchange. The order among moves of equal weight follows from the method: the
/// one that stands first in the file need not stay before the others.
void SortByWeight(MoveList& list) noexcept {
    for (int place = 0; place < list.count; ++place) {
        for (int later = place + 1; later < list.count; ++later) {
            if (list[later].Order() > std::as_const(list)[place].Order()) {
                std::swap(list[later], list[place]);
            }
        }
    }
}

/// The number of moves at the head of a sorted list from which the mode chooses.
int RangeOf(CBookOptions::Mode mode, int count) noexcept {
    if (mode == CBookOptions::BestMove) {
        return 1;
    }
    assert(count > 0);
    const double percent = RangePercent[mode];
    return static_cast<int>(std::ceil(percent / 100.0 * count));
}

/// "(1234 = 61.70%)". With a sum of 0 the share is whatever the stream makes of no number.
std::string ShareText(int weight, int sum) {
    const double whole = sum;
    const double share = weight / whole * 100.0;
    std::ostringstream text;
    text << '(' << weight << " = " << std::fixed << std::setprecision(2) << share << "%)";
    return text.str();
}

}  // namespace

CBook::CBook(IHost& host) : host_(host) {
    options.bookPath.onChange = [this](const std::string& path) { Load(path); };
}

void CBook::LookUp(MoveList& list, const CPosition& position) noexcept {
    if (file_.IsOpen() && options.ownBook.enabled) {
        file_.LookUp(list, position);
    }
}

bool CBook::PickMove(Move& result, const CPosition& position) {
    return Pick(result, position, static_cast<Mode>(options.bookMode.choice.Load()));
}

bool CBook::ProbeRoot(Move& move, const CPosition& position) {
    if (!PickMove(move, position)) {
        return false;
    }
    move.SetOrder(0);
    return true;
}

bool CBook::ProbeMoveInfo(BaseMoveInfo& info, Move move, const CPosition& position) {
    MoveList list;
    LookUp(list, position);
    const Move* const found = std::find_if(list.begin(), list.end(),
                                           [move](Move entry) { return SameMove(entry, move); });
    if (found == list.end()) {
        return false;
    }
    const int sum = std::accumulate(list.begin(), list.end(), 0,
                                    [](int total, Move entry) { return total + entry.Order(); });
    info.move = *found;
    info.text = ShareText(found->Order(), sum);
    FollowLine(info.line, move, position);
    return true;
}

void CBook::Load(const std::string& path) {
    if (path == path_) {
        return;
    }
    host_.EndSearch();
    path_ = path;
    if (file_.Open(path)) {
        host_.Print("book \"" + path + "\" loaded! (" + std::to_string(RecordCount()) + " moves)");
    }
}

bool CBook::Pick(Move& result, const CPosition& position, Mode mode) {
    MoveList list;
    LookUp(list, position);
    if (list.count == 0) {
        return false;
    }
    SortByWeight(list);
    const int range = RangeOf(mode, list.count);
    result = list[mode == Mode::BestMove ? 0 : RandomBelow(range)];
    return true;
}

/// Seeded at the first choice of the process, so that two games after a start differ.
int CBook::RandomBelow(int limit) {
    assert(limit > 0);
    if (!isSeeded_) {
        random_.seed(TickCount());
        isSeeded_ = true;
    }
    const std::uint32_t choices = limit;
    return static_cast<int>(random_() % choices);
}

/// The book's best moves after `move`, as far as they can be played. A line that goes in a circle
/// fills the list; a move that leaves the king in check is the last one.
void CBook::FollowLine(PvLine& line, Move move, const CPosition& position) {
    const auto reached = std::make_unique<CPosition>();
    reached->CopyFrom(position);
    line.count = 0;
    // The copy may let another rook castle than the position does.
    bool isPlayed = CMoveGenerator(*reached).IsPseudoLegal(move) && reached->MakeMove(move);
    Move next = NoMove;
    while (isPlayed && line.count < PvLine::Capacity && Pick(next, *reached, Mode::BestMove)) {
        line.Append(next);
        isPlayed = reached->MakeMove(next);
    }
}

}  // namespace brenquil
