#include "syzygy_solver.h"

#include <algorithm>
#include <string_view>

namespace brenquil::testing_support {

namespace {

PieceType TypeOfLetter(char letter) {
    constexpr std::string_view Letters = "PNBRQK";
    return static_cast<PieceType>(Letters.find(letter));
}

bool IsPawnOnEdge(const SolvedEnding& ending, const std::array<Square, 4>& squares) {
    for (std::size_t man = 0; man < ending.men.size(); ++man) {
        const int rank = RankOf(squares[man]);
        if (ending.men[man].type == Pawn && (rank == 0 || rank == 7)) {
            return true;
        }
    }
    return false;
}

}  // namespace

SolvedEnding::SolvedEnding(const std::string& materialName) : name(materialName) {
    Colour colour = White;
    for (const char letter : name) {
        if (letter == 'v') {
            colour = Black;
        } else {
            men.push_back({TypeOfLetter(letter), colour});
        }
    }
}

std::size_t SolvedEnding::IndexOf(const std::array<Square, 4>& squares, Colour toMove) const {
    std::size_t index = 0;
    for (std::size_t i = men.size(); i-- > 0;) {
        index = index << 6U | static_cast<std::size_t>(squares[i]);
    }
    return index << 1U | toMove;
}

std::array<Square, 4> SolvedEnding::SquaresOf(std::size_t index) const {
    std::array<Square, 4> squares{};
    index >>= 1U;
    for (std::size_t i = 0; i < men.size(); ++i) {
        squares[i] = static_cast<Square>(index & 63U);
        index >>= 6U;
    }
    return squares;
}

const SolvedEnding& CSyzygySolver::Solve(const std::string& name) {
    std::unique_ptr<SolvedEnding>& kept = solved_[name];
    if (kept != nullptr) {
        return *kept;
    }
    auto answers = std::make_unique<SolvedEnding>(name);
    answers->classes.assign(answers->Size(), SolvedEnding::Illegal);
    answers->distances.assign(answers->Size(), 0);
    const auto codes = solver_.Solve(name);
    const Ending& ending = codes->Of();
    const EndingExit order = FindEnding(answers->men).value();
    for (std::size_t index = 0; index < answers->Size(); ++index) {
        const std::array<Square, 4> squares = answers->SquaresOf(index);
        EndingSquares placed{};
        std::copy(squares.begin(), squares.end(), placed.begin());
        placed = order.Map(placed);
        const Colour toMove = SolvedEnding::ToMove(index);
        const Colour mover = order.flipped ? ~toMove : toMove;
        if (IsPawnOnEdge(*answers, squares) || !CEndingNode(ending, placed, mover).IsLegal()) {
            continue;
        }
        const auto code = codes->At(placed, mover);
        answers->classes[index] = static_cast<std::int8_t>(DistanceToZeroing::ValueOf(code));
        if (code != 0) {
            answers->distances[index] =
                static_cast<std::uint8_t>(std::max(1, DistanceToZeroing::PliesOf(code)));
        }
    }
    kept = std::move(answers);
    return *kept;
}

}  // namespace brenquil::testing_support
