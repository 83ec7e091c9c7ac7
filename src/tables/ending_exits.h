// What the moves that leave a slice come to: captures, promotions and other pawn moves.
//
// They lead to endings that are solved already or to other slices of the same ending, so a position
// can be judged by them before its quiet moves are known.
#pragma once

#include "platform/bits.h"
#include "tables/ending_node.h"
#include "tables/ending_values.h"
#include "tables/rules.h"

#include <cstddef>

namespace brenquil {

/// A number by which codes are compared: the higher, the better for the side to move.
template <class Rules>
[[nodiscard]] constexpr int RankOfCode(int code) noexcept {
    constexpr int Far = 2 * NoDistance;
    const int plies = Rules::PliesOf(code);
    return code == 0 ? 0 : code > 0 ? Far - plies : plies - Far;
}

/// The code of a side that has these moves and no others.
template <class Rules>
[[nodiscard]] constexpr int CodeOfExits(const ExitSum& sum) noexcept {
    if (sum.bestWin != NoDistance) {
        return Rules::WinCode(sum.bestWin);
    }
    return sum.canDraw ? 0 : Rules::LossCode(sum.worstLoss);
}

/// Finds exits and values with the right to take in passing. `own` are the values of the ending,
/// as far as they are solved: all slices whose pawns have advanced further.
template <class Rules>
class CEndingExits {
public:
    using Values = CEndingValues<typename Rules::Code>;

    CEndingExits(const SolvedEndings& solved, const Values& own) noexcept
        : solved_(solved), own_(own) {}

    /// All moves of a prepared node that leave its slice; captures in passing are not among them.
    [[nodiscard]] ExitSum Find(const CEndingNode& node) const noexcept { return Sum(node, true); }

    /// Captures and promotions only.
    [[nodiscard]] ExitSum FindCaptures(const CEndingNode& node) const noexcept {
        return Sum(node, false);
    }

    /// The code of a position in which the pawn `victim` has just made a double step.
    /// @param isTaken  set when it can really be taken in passing; otherwise the code is that of
    ///                 the position without that right
    [[nodiscard]] typename Rules::Code CodeInPassing(const EndingSquares& squares,
                                                     Colour sideToMove, std::size_t victim,
                                                     bool& isTaken) const noexcept {
        const auto plain = own_.At(squares, sideToMove);
        const Ending& ending = own_.Of();
        CEndingNode node(ending, squares, sideToMove);
        const Square passed = squares[victim] + node.Forward();
        ExitSum sum;
        for (std::size_t man = ending.pieces; man < ending.men; ++man) {
            if (ending.man[man].colour == sideToMove &&
                node.MayTakeInPassing(man, victim, passed)) {
                EndingSquares after = squares;
                after[man] = passed;
                AddExit(node, victim, Ending::NoMan, Pawn, after, sum);
            }
        }
        isTaken = sum.hasMove;
        if (!isTaken) {
            return plain;
        }
        const auto taken = static_cast<typename Rules::Code>(CodeOfExits<Rules>(sum));
        if (RankOfCode<Rules>(taken) >= RankOfCode<Rules>(plain)) {
            return taken;
        }
        node.PrepareMoves();
        return node.HasMove() ? plain : taken;
    }

private:
    [[nodiscard]] ExitSum Sum(const CEndingNode& node, bool withSteps) const noexcept {
        ExitSum sum;
        const Ending& ending = node.Of();
        for (std::size_t man = 0; man < ending.men; ++man) {
            if (ending.man[man].colour != node.SideToMove()) {
                continue;
            }
            if (ending.man[man].type == Pawn) {
                AddPawnMoves(node, man, withSteps, sum);
                continue;
            }
            for (Bitboard targets = node.CaptureTargets(man); targets != 0;) {
                const Square to = PopLowestBit(targets);
                EndingSquares after = node.Squares();
                after[man] = to;
                AddExit(node, node.ManOn(to), Ending::NoMan, Pawn, after, sum);
            }
        }
        return sum;
    }

    void AddExit(const CEndingNode& node, std::size_t captured, std::size_t promoted,
                 PieceType type, const EndingSquares& after, ExitSum& sum) const noexcept {
        const EndingExit& exit = node.Of().Exit(captured, promoted, type);
        Rules::Add(sum, ValueOfExit(solved_, exit, after, ~node.SideToMove()));
    }

    void AddPawnMoves(const CEndingNode& node, std::size_t man, bool withSteps,
                      ExitSum& sum) const noexcept {
        const Square from = node.Squares()[man];
        for (Bitboard targets = node.PawnTargets(man); targets != 0;) {
            const Square to = PopLowestBit(targets);
            EndingSquares after = node.Squares();
            after[man] = to;
            const std::size_t captured =
                (node.Occupied() & BitOf(to)) != 0 ? node.ManOn(to) : Ending::NoMan;
            if (RankOf(to) == 0 || RankOf(to) == 7) {
                for (const PieceType type : {Queen, Rook, Bishop, Knight}) {
                    AddExit(node, captured, man, type, after, sum);
                }
            } else if (captured != Ending::NoMan) {
                AddExit(node, captured, Ending::NoMan, Pawn, after, sum);
            } else if (withSteps) {
                bool isTaken = false;
                const bool isDouble = to == from + 2 * node.Forward();
                const auto code = isDouble && own_.Of().HasPawnsOfBoth()
                                    ? CodeInPassing(after, ~node.SideToMove(), man, isTaken)
                                    : own_.At(after, ~node.SideToMove());
                Rules::Add(sum, Rules::ValueOf(code));
            }
        }
    }

    const SolvedEndings& solved_;
    const Values& own_;
};

}  // namespace brenquil
