#include "interface/console/move_listing.h"

#include "board/move_generator.h"
#include "board/move_list.h"

#include <algorithm>
#include <cstddef>
#include <memory>

namespace brenquil {

namespace {

constexpr std::size_t NumberWidth = 3;
constexpr int ShownLineMoves = 5;

/// Lets the first base that knows the move fill in the record.
bool AskBases(const CBaseList& bases, BaseMoveInfo& info, Move move, const CPosition& position) {
    return std::any_of(bases.Bases().begin(), bases.Bases().end(),
                       [&](IBase* base) { return base->ProbeMoveInfo(info, move, position); });
}

std::string LineText(const BaseMoveInfo& info, const CPosition& position,
                     CastlingNotation notation) {
    std::string text;
    const int shown = std::min(info.line.count, ShownLineMoves);
    for (int i = 0; i < shown; ++i) {
        text += ' ';
        text += CPositionText::MoveToText(info.line[i], position, notation);
    }
    if (info.line.count > shown) {
        text += " ... (" + std::to_string(info.line.count - shown) + ")";
    }
    return text;
}

std::string RowText(std::size_t number, const BaseMoveInfo& info, const CPosition& position,
                    bool all, CastlingNotation notation) {
    const std::string digits = std::to_string(number);
    std::string row(NumberWidth - std::min(NumberWidth, digits.size()), ' ');
    row += digits + ". ";
    row += CPositionText::MoveToText(info.move, position, notation);
    if (!info.text.empty()) {
        row += " " + info.text;
    }
    if (all) {
        row += LineText(info, position, notation);
    }
    return row;
}

}  // namespace

std::vector<std::string> ListMoves(const CBaseList& bases, const CPosition& position, bool all,
                                   CastlingNotation notation) {
    const auto copy = std::make_unique<CPosition>(position);
    MoveList moves;
    CMoveGenerator(*copy).GenerateMoves(moves, MoveKinds::All);

    std::vector<BaseMoveInfo> infos;
    for (const Move move : moves) {
        BaseMoveInfo info;
        info.move = move;
        if (AskBases(bases, info, move, *copy) || all) {
            infos.push_back(std::move(info));
        }
    }
    std::stable_sort(infos.begin(), infos.end(), [](const BaseMoveInfo& a, const BaseMoveInfo& b) {
        return a.move.Order() > b.move.Order();
    });

    std::vector<std::string> rows;
    for (std::size_t i = 0; i < infos.size(); ++i) {
        rows.push_back(RowText(i + 1, infos[i], position, all, notation));
    }
    return rows;
}

}  // namespace brenquil
