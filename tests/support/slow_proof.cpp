#include "slow_proof.h"

#include "slow_chess.h"

#include <algorithm>
#include <array>
#include <span>

namespace brenquil::test {

namespace {

/// What is known of a position.
struct Answer {
    int sign = 0;   ///< 1 for a win of the side to move, -1 for a loss
    int plies = 0;  ///< to the end of the counting

    friend bool operator==(const Answer&, const Answer&) = default;
};

/// Each move counts until the mate.
int PliesBefore(const DistanceToMate& /*rules*/, const Answer& after, bool /*isZeroing*/) {
    return after.plies + 1;
}

/// A capture or a pawn move ends the counting.
int PliesBefore(const DistanceToZeroing& /*rules*/, const Answer& after, bool isZeroing) {
    return isZeroing ? 1 : after.plies + 1;
}

template <class Rules>
class CSlowProof {
public:
    CSlowProof(CSolvedInMemory<Rules>& solved, const std::string& name)
        : solved_(solved), codes_(solved.Solve(name)) {}

    [[nodiscard]] SlowProof Prove(std::size_t oneOf) {
        const CEndingIndex& index = codes_->Index();
        for (std::size_t slice = 0; slice < index.Slices(); ++slice) {
            for (std::size_t at = slice % oneOf; at < index.SliceSize(); at += oneOf) {
                const CEndingIndex::Place place = {slice, at};
                const EndingSquares squares = index.SquaresOf(place);
                if (index.IsCanonical(place, squares)) {
                    Look(squares, White);
                    Look(squares, Black);
                }
            }
        }
        return proof_;
    }

private:
    void Look(const EndingSquares& squares, Colour sideToMove) {
        const Ending& ending = codes_->Of();
        SlowPosition position;
        for (std::size_t man = 0; man < ending.men; ++man) {
            position.board[static_cast<std::size_t>(squares[man])] =
                ending.man[man].type * 2 + ending.man[man].colour;
        }
        position.side = sideToMove;
        const auto men = ending.men + static_cast<std::size_t>(std::count(
                                          position.board.begin(), position.board.end(), PieceNone));
        const bool isPosition =
            men == position.board.size() && !position.IsAnyKingAttacked(1 - position.side);
        bool isRight = isPosition == CEndingNode(ending, squares, sideToMove).IsLegal();
        if (isPosition) {
            ++proof_.positions;
            isRight = isRight && Known(position) == OfMoves(position);
        }
        if (!isRight && proof_.wrong++ == 0) {
            proof_.first = FenOfEnding(ending, squares, sideToMove);
        }
    }

    /// The solver's answer.
    [[nodiscard]] Answer Known(const SlowPosition& position) {
        std::array<EndingMan, EndingMostMen> men{};
        EndingSquares squares{};
        std::size_t count = 0;
        for (std::size_t square = 0; square < position.board.size(); ++square) {
            const int man = position.board[square];
            if (man != PieceNone) {
                men[count] = {static_cast<PieceType>(man / 2), static_cast<Colour>(man % 2)};
                squares[count++] = static_cast<Square>(square);
            }
        }
        const EndingExit found = FindEnding(std::span(men).first(count)).value();
        if (found.ending == 0) {
            return {};
        }
        const EndingSquares placed = found.Map(squares);
        const auto mover = static_cast<Colour>(found.flipped ? 1 - position.side : position.side);
        if (found.ending == codes_->Of().number) {
            const auto code = codes_->At(placed, mover);
            return {SignOf(code), code == 0 ? 0 : Rules::PliesOf(code)};
        }
        const int value = solved_.solved[static_cast<std::size_t>(found.ending)]->At(placed, mover);
        // Of other endings the classes are kept, which is all that a capture is judged by; where a
        // code is a value there is a distance as well.
        return {SignOf(value), value == 0 ? 0 : Rules::PliesOf(value)};
    }

    [[nodiscard]] Answer Judge(const SlowPosition& position) {
        if (position.enPassant == SquareNone) {
            return Known(position);
        }
        ++proof_.inPassing;
        return OfMoves(position);
    }

    /// What the moves of a position come to.
    [[nodiscard]] Answer OfMoves(const SlowPosition& position) {
        bool hasMove = false;
        bool canDraw = false;
        int win = NoDistance;
        int loss = 0;
        for (const std::uint32_t move : position.Moves(true, true)) {
            SlowPosition next = position;
            if (!next.Make(move)) {
                continue;
            }
            hasMove = true;
            const Answer after = Judge(next);
            const int plies = PliesBefore(Rules(), after, next.clock == 0);
            canDraw = canDraw || after.sign == 0;
            if (after.sign < 0) {
                win = std::min(win, plies);
            } else if (after.sign > 0) {
                loss = std::max(loss, plies);
            }
        }
        if (win != NoDistance) {
            return {1, win};
        }
        const bool isLost = hasMove ? !canDraw : position.IsAnyKingAttacked(position.side);
        return isLost ? Answer{-1, loss} : Answer{};
    }

    static constexpr int SignOf(int value) noexcept { return value == 0 ? 0 : value > 0 ? 1 : -1; }

    CSolvedInMemory<Rules>& solved_;
    std::unique_ptr<CEndingValues<typename Rules::Code>> codes_;
    SlowProof proof_;
};

}  // namespace

SlowProof ProveMates(CSolvedInMemory<DistanceToMate>& solved, const std::string& name,
                     std::size_t oneOf) {
    return CSlowProof<DistanceToMate>(solved, name).Prove(oneOf);
}

SlowProof ProveZeroing(CSolvedInMemory<DistanceToZeroing>& solved, const std::string& name,
                       std::size_t oneOf) {
    return CSlowProof<DistanceToZeroing>(solved, name).Prove(oneOf);
}

}  // namespace brenquil::test
