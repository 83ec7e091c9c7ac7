#include "bases/syzygy/syzygy_probe.h"

#include "bases/syzygy/tb_board.h"
#include "bases/syzygy/tb_probe.h"
#include "platform/bits.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace brenquil {

namespace {

/// The largest fifty-move counter that `TbPosition` takes over. It has one byte for it, and the
/// moves of a probe add to it; beyond 100 its value makes no difference.
constexpr int MostRule50 = 200;

[[nodiscard]] TbPosition FromPosition(const CPosition& position, int rule50) noexcept {
    const auto both = [&](PieceType type) {
        return position.PiecesOf(type, Black) | position.PiecesOf(type, White);
    };
    TbPosition result;
    result.white = position.colours[White];
    result.black = position.colours[Black];
    result.kings = both(King);
    result.queens = both(Queen);
    result.rooks = both(Rook);
    result.bishops = both(Bishop);
    result.knights = both(Knight);
    result.pawns = both(Pawn);
    result.rule50 = ToByte(std::clamp(rule50, 0, MostRule50));
    result.turn = position.sideToMove == White;
    return result;
}

/// The class of a distance when `rule50` half-moves of the fifty-move rule have been used up.
[[nodiscard]] int ClassOfDistance(int dtz, int rule50) noexcept {
    if (dtz > 0) {
        return dtz + rule50 < 101 ? 2 : 1;
    }
    if (dtz < 0) {
        return rule50 - dtz < 101 ? -2 : -1;
    }
    return 0;
}

}  // namespace

int CSyzygyProbe::SyzygyProbeWDL(const CPosition& position) const {
    if (!Covers(position.MenCount())) {
        return TbNoClass;
    }
    const TbPosition board = FromPosition(position, 0);
    if (!TbFitsTables(board)) {
        return TbNoClass;
    }
    TbSuccess success = TbSuccess::Found;
    const int wdl = TbProbeWdl(*tables_, board, success);
    return success == TbSuccess::Failed ? TbNoClass : wdl + 2;
}

TbResult CSyzygyProbe::SyzygyProbeRoot(const CPosition& position) const {
    if (!Covers(position.MenCount())) {
        return TbResultFailed;
    }
    const TbPosition board = FromPosition(position, position.halfmoveClock);
    if (!TbIsValid(board)) {
        return TbResultFailed;
    }
    int dtz = 0;
    const TbMove move = TbProbeRoot(*tables_, board, dtz);
    if (move == TbMoveNone) {
        return TbResultFailed;
    }
    if (move == TbMoveCheckmate) {
        return TbResultCheckmate;
    }
    if (move == TbMoveStalemate) {
        return TbResultStalemate;
    }
    const std::uint32_t wdl = ClassOfDistance(dtz, board.rule50) + 2;
    const std::uint32_t enPassant = TbIsEnPassant(board, move) ? 1 : 0;
    const std::uint32_t distance = std::abs(dtz);
    const std::uint32_t to = move.To();
    const std::uint32_t from = move.From();
    const std::uint32_t promotion = move.Promotion();
    return {wdl | to << 4U | from << 10U | promotion << 16U | enPassant << 19U | distance << 20U};
}

bool CSyzygyProbe::TbResultToMove(TbResult result, Move& move) const noexcept {
    if (result == TbResultFailed || result == TbResultCheckmate || result == TbResultStalemate) {
        return false;
    }
    constexpr std::array<PromotionIndex, 8> Promotions = {PromoteRook, PromoteQueen, PromoteRook,
                                                          PromoteBishop, PromoteKnight};
    if (result.Promotion() == TbPromoteNone) {
        move = Move::Make(result.From(), result.To());
    } else {
        move = Move::Make(result.From(), result.To(), MoveKind::Promotion,
                          Promotions[result.Promotion()]);
    }
    move.SetOrder(SignOf(result.Class()) * result.Distance());
    return true;
}

int CSyzygyProbe::SignOf(int tbClass) const noexcept {
    // [fifty-move rule in force][class]
    constexpr int Signs[2][5] = {{-1, -1, 0, 1, 1}, {-1, 0, 0, 0, 1}};
    return Signs[SyzygyRule50() ? 1 : 0][tbClass];
}

}  // namespace brenquil
