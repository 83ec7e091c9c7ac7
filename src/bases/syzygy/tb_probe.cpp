#include "bases/syzygy/tb_probe.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace brenquil {

namespace {

constexpr int Loss = -2;
constexpr int Win = 2;
constexpr int NoEpValue = -3;  // below every class

/// By class + 2.
constexpr std::array<int, 5> WdlDtzValues = {-1, -101, 0, 101, 1};

[[nodiscard]] constexpr unsigned ByClass(int wdl) noexcept {
    return wdl + 2;
}

/// The class that the table stores.
[[nodiscard]] int TbProbeWdlTable(CSyzygyTables& tables, const TbPosition& position,
                                  TbSuccess& success) {
    const std::uint64_t key = MaterialKey(position, false);
    if (key == 0) {
        return 0;  // two bare kings
    }
    const TbEntry* const entry = tables.TbFindWdl(position, key);
    int wdl = 0;
    if (entry == nullptr || !LookUpWdl(*entry, position, key, wdl)) {
        success = TbSuccess::Failed;
    }
    return wdl;
}

/// The class with captures and promotions looked through; en passant captures are left out.
[[nodiscard]] int TbProbeAB(CSyzygyTables& tables, const TbPosition& position, int alpha, int beta,
                            TbSuccess& success) {
    TbMoveList list;
    TbGenCaptures(position, list);
    TbPosition next;
    for (const TbMove move : list) {
        if (TbIsEnPassant(position, move) || !TbDoMove(next, position, move)) {
            continue;
        }
        const int v = -TbProbeAB(tables, next, -beta, -alpha, success);
        if (success == TbSuccess::Failed) {
            return 0;
        }
        if (v > alpha) {
            if (v >= beta) {
                success = TbSuccess::ByCapture;
                return v;
            }
            alpha = v;
        }
    }
    const int v = TbProbeWdlTable(tables, position, success);
    if (success == TbSuccess::Failed) {
        return 0;
    }
    if (alpha >= v) {
        success = alpha <= 0 ? TbSuccess::Found : TbSuccess::ByCapture;
        return alpha;
    }
    success = TbSuccess::Found;
    return v;
}

/// The best class that an en passant capture reaches; `NoEpValue` if none is legal.
[[nodiscard]] int BestEpClass(CSyzygyTables& tables, const TbPosition& position,
                              TbSuccess& success) {
    int best = NoEpValue;
    TbMoveList list;
    TbGenEp(position, list);
    TbPosition next;
    for (const TbMove move : list) {
        if (!TbDoMove(next, position, move)) {
            continue;
        }
        const int v = -TbProbeAB(tables, next, Loss, Win, success);
        if (success == TbSuccess::Failed) {
            return 0;
        }
        best = std::max(best, v);
    }
    return best;
}

/// The value that the table stores for a position of the class `wdl`, without its sign.
[[nodiscard]] int TbProbeDtzTable(CSyzygyTables& tables, const TbPosition& position, int wdl,
                                  TbSuccess& success) {
    const DtzEntry* const entry = tables.TbFindDtz(position);
    int value = 0;
    success = entry == nullptr ? TbSuccess::Failed : LookUpDtz(*entry, position, wdl, value);
    return value;
}

/// Does a pawn move without a capture keep the class, which is a win?
[[nodiscard]] bool PawnMoveKeepsWin(CSyzygyTables& tables, const TbPosition& position, int wdl,
                                    TbSuccess& success) {
    TbMoveList list;
    TbGenPawnQuiets(position, list);
    TbPosition next;
    for (const TbMove move : list) {
        if (!TbDoMove(next, position, move)) {
            continue;
        }
        const int v = next.ep != 0 ? -TbProbeWdl(tables, next, success)
                                   : -TbProbeAB(tables, next, Loss, 1 - wdl, success);
        if (success == TbSuccess::Failed) {
            return false;
        }
        if (v == wdl) {
            return true;
        }
    }
    return false;
}

/// The distance of a win by a search of one ply, where the table stores the other side.
[[nodiscard]] int WinByOnePly(CSyzygyTables& tables, const TbPosition& position,
                              TbSuccess& success) {
    int best = TbBestNone;
    TbMoveList list;
    TbGenMoves(position, list);
    TbPosition next;
    for (const TbMove move : list) {
        if (!TbDoMove(next, position, move) || next.rule50 == 0) {
            continue;
        }
        const int v = -TbProbeDtz(tables, next, success);
        if (success == TbSuccess::Failed) {
            return 0;
        }
        if (v > 0 && v + 1 < best) {
            best = v + 1;
        }
    }
    return best;
}

/// The distance of a loss by a search of one ply.
[[nodiscard]] int LossByOnePly(CSyzygyTables& tables, const TbPosition& position, int wdl,
                               TbSuccess& success) {
    int best = -1;
    TbMoveList list;
    TbGenMoves(position, list);
    TbPosition next;
    for (const TbMove move : list) {
        if (!TbDoMove(next, position, move)) {
            continue;
        }
        int v = 0;
        if (next.rule50 != 0) {
            v = -TbProbeDtz(tables, next, success) - 1;
        } else if (wdl == Loss) {
            v = -1;
        } else {
            v = TbProbeAB(tables, next, 1, Win, success) == Win ? 0 : -101;
        }
        if (success == TbSuccess::Failed) {
            return 0;
        }
        best = std::min(best, v);
    }
    return best;
}

/// The distance without regard to en passant.
[[nodiscard]] int TbProbeDtzNoEp(CSyzygyTables& tables, const TbPosition& position,
                                 TbSuccess& success) {
    const int wdl = TbProbeAB(tables, position, Loss, Win, success);
    if (wdl == 0) {
        return 0;  // a draw, or a failure
    }
    const int zeroing = wdl == Win ? 1 : 101;
    if (success == TbSuccess::ByCapture) {
        return zeroing;
    }
    if (wdl > 0) {
        const bool keeps = PawnMoveKeepsWin(tables, position, wdl, success);
        if (success == TbSuccess::Failed) {
            return 0;
        }
        if (keeps) {
            return zeroing;
        }
    }
    int distance = 1 + TbProbeDtzTable(tables, position, wdl, success);
    if (success == TbSuccess::Failed) {
        return 0;
    }
    if (success == TbSuccess::OtherSide) {
        success = TbSuccess::Found;
        return wdl > 0 ? WinByOnePly(tables, position, success)
                       : LossByOnePly(tables, position, wdl, success);
    }
    distance += wdl % 2 != 0 ? 100 : 0;
    return wdl > 0 ? distance : -distance;
}

/// What a move at the root is worth: plies as the mover sees them, 0 for a draw.
[[nodiscard]] int RootMoveValue(CSyzygyTables& tables, const TbPosition& next, int dtz,
                                TbSuccess& success) {
    if (dtz > 0 && TbIsCheckmate(next)) {
        return 1;
    }
    if (next.rule50 == 0) {
        const int wdl = -TbProbeWdl(tables, next, success);
        return success == TbSuccess::Failed ? 0 : WdlDtzValues[ByClass(wdl)];
    }
    const int v = -TbProbeDtz(tables, next, success);
    return v > 0 ? v + 1 : v - (v < 0 ? 1 : 0);
}

}  // namespace

int TbProbeWdl(CSyzygyTables& tables, const TbPosition& position, TbSuccess& success) {
    success = TbSuccess::Found;
    const int v = TbProbeAB(tables, position, Loss, Win, success);
    if (success == TbSuccess::Failed || position.ep == 0) {
        return v;
    }
    const int ep = BestEpClass(tables, position, success);
    if (success == TbSuccess::Failed || ep == NoEpValue) {
        return v;
    }
    if (ep >= v) {
        return ep;
    }
    // A draw that the capture spoils stays one only if there is another move.
    return v != 0 || TbHasLegalMove(position, true) ? v : ep;
}

int TbProbeDtz(CSyzygyTables& tables, const TbPosition& position, TbSuccess& success) {
    success = TbSuccess::Found;
    const int v = TbProbeDtzNoEp(tables, position, success);
    if (success == TbSuccess::Failed) {
        return 0;
    }
    if (position.ep == 0) {
        return v;
    }
    const int ep = BestEpClass(tables, position, success);
    if (success == TbSuccess::Failed) {
        return 0;
    }
    if (ep == NoEpValue) {
        return v;
    }
    const int d = WdlDtzValues[ByClass(ep)];
    if (v < -100) {
        return d >= 0 ? d : v;
    }
    if (v < 0) {
        return d >= 0 || d < -100 ? d : v;
    }
    if (v > 100) {
        return d > 0 ? d : v;
    }
    if (v > 0) {
        return d == 1 ? d : v;
    }
    return d >= 0 || !TbHasLegalMove(position, true) ? d : v;
}

TbMove TbProbeRoot(CSyzygyTables& tables, const TbPosition& position, int& dtz) {
    TbSuccess success = TbSuccess::Found;
    dtz = TbProbeDtz(tables, position, success);
    if (success == TbSuccess::Failed) {
        return TbMoveNone;
    }
    TbMoveList list;
    TbGenMoves(position, list);
    std::array<int, TbMoveList::Capacity> values{};
    std::size_t draws = 0;
    TbPosition next;
    for (std::size_t i = 0; i < list.size(); ++i) {
        values[i] = TbScoreIllegal;
        if (TbDoMove(next, position, list.begin()[i])) {
            values[i] = RootMoveValue(tables, next, dtz, success);
            if (success == TbSuccess::Failed) {
                return TbMoveNone;
            }
            draws += values[i] == 0 ? 1 : 0;
        }
    }

    TbMove best = dtz < 0 ? TbMoveCheckmate : TbMoveNone;
    int bestValue = dtz < 0 ? 0 : TbScoreIllegal;
    if (dtz != 0) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (values[i] < bestValue && (dtz < 0 || values[i] > 0)) {
                best = list.begin()[i];
                bestValue = values[i];
            }
        }
        return best;
    }
    if (draws == 0) {
        return TbMoveStalemate;
    }
    // Which of the drawing moves is played depends on material and side to move alone.
    std::size_t skipped = MaterialKey(position, !position.turn) % draws;
    std::size_t i = 0;
    while (values[i] != 0 || skipped-- != 0) {
        ++i;
    }
    return list.begin()[i];
}

}  // namespace brenquil
