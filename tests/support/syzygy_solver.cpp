#include "syzygy_solver.h"

#include "board/attacks.h"
#include "platform/bits.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace brenquil::testing_support {

namespace {

constexpr std::string_view Letters = "KQRBNP";  // order of men in a name
constexpr int MostDistance = 100;

PieceType TypeOfLetter(char letter) {
    constexpr PieceType Types[] = {King, Queen, Rook, Bishop, Knight, Pawn};
    return Types[Letters.find(letter)];
}

std::size_t PlaceInName(PieceType type) {
    return static_cast<std::size_t>(King - type);
}

Bitboard AttacksOf(EndingMan man, Square square, Bitboard occupied) {
    switch (man.type) {
    case Pawn: return PawnAttacks[man.colour][square];
    case Knight: return KnightAttacks[square];
    case Bishop: return BishopAttacksFrom(square, occupied);
    case Rook: return RookAttacksFrom(square, occupied);
    case Queen: return QueenAttacksFrom(square, occupied);
    default: return KingAttacks[square];
    }
}

/// A few men on a board, moved about by hand.
struct Placement {
    std::vector<EndingMan> men;
    std::vector<Square> squares;

    [[nodiscard]] Bitboard Occupied() const {
        Bitboard all = 0;
        for (const Square square : squares) {
            all |= BitOf(square);
        }
        return all;
    }

    [[nodiscard]] bool IsAttacked(Square square, Colour by) const {
        const Bitboard occupied = Occupied();
        for (std::size_t i = 0; i < men.size(); ++i) {
            if (men[i].colour == by &&
                (AttacksOf(men[i], squares[i], occupied) & BitOf(square)) != 0) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] bool IsKingAttacked(Colour colour) const {
        for (std::size_t i = 0; i < men.size(); ++i) {
            if (men[i].type == King && men[i].colour == colour) {
                return IsAttacked(squares[i], ~colour);
            }
        }
        return false;
    }

    [[nodiscard]] std::size_t ManOn(Square square) const {
        const auto found = std::find(squares.begin(), squares.end(), square);
        return static_cast<std::size_t>(found - squares.begin());
    }

    void Remove(std::size_t man) {
        men.erase(men.begin() + static_cast<std::ptrdiff_t>(man));
        squares.erase(squares.begin() + static_cast<std::ptrdiff_t>(man));
    }

    /// Carries a man to a square; what stands there goes.
    void Carry(std::size_t man, Square to) {
        const std::size_t victim = ManOn(to);
        squares[man] = to;
        if (victim != squares.size() && victim != man) {
            Remove(victim);
        }
    }
};

bool IsOnEdge(Square square) {
    return RankOf(square) == 0 || RankOf(square) == 7;
}

/// One ending on its way to a solution, a set of pawn squares at a time.
class CEndingSolver {
public:
    CEndingSolver(CSyzygySolver& solver, SolvedEnding& ending)
        : solver_(solver), ending_(ending), quietMoves_(ending.Size()) {}

    void Solve() {
        ending_.classes.assign(ending_.Size(), SolvedEnding::Illegal);
        ending_.distances.assign(ending_.Size(), 0);
        for (const std::vector<Square>& pawns : PawnSquares()) {
            SolveSlice(pawns);
        }
    }

private:
    using Squares = std::array<Square, 4>;

    /// Marks a position whose zeroing moves keep it from being lost.
    static constexpr std::uint8_t HasWayOut = 0x80;

    /// All placements of the pawns, those further ahead first: a pawn move leads to what is solved.
    [[nodiscard]] std::vector<std::vector<Square>> PawnSquares() const {
        std::vector<Colour> pawns;
        for (const EndingMan& man : ending_.men) {
            if (man.type == Pawn) {
                pawns.push_back(man.colour);
            }
        }
        std::vector<std::vector<Square>> all = {{}};
        for (std::size_t i = 0; i < pawns.size(); ++i) {
            std::vector<std::vector<Square>> longer;
            for (const auto& some : all) {
                for (Square square = A2; square <= H7; ++square) {
                    if (std::find(some.begin(), some.end(), square) == some.end()) {
                        longer.push_back(some);
                        longer.back().push_back(square);
                    }
                }
            }
            all = std::move(longer);
        }
        const auto advance = [&](const std::vector<Square>& squares) {
            int sum = 0;
            for (std::size_t i = 0; i < pawns.size(); ++i) {
                sum += pawns[i] == White ? RankOf(squares[i]) : 7 - RankOf(squares[i]);
            }
            return sum;
        };
        std::stable_sort(all.begin(), all.end(),
                         [&](const auto& a, const auto& b) { return advance(a) > advance(b); });
        return all;
    }

    void SolveSlice(const std::vector<Square>& pawns) {
        wins_.assign(MostDistance + 3, {});
        losses_.assign(MostDistance + 3, {});
        mates_.clear();
        Squares squares{};
        PlaceMen(pawns, 0, 0, 0, squares);
        for (const std::size_t index : mates_) {
            ForPredecessors(index, [&](std::size_t before) { SetWin(before, 1); });
        }
        for (int distance = 1; distance <= MostDistance + 1; ++distance) {
            for (const std::size_t index : losses_[static_cast<std::size_t>(distance)]) {
                ForPredecessors(index, [&](std::size_t before) { SetWin(before, distance + 1); });
            }
            for (const std::size_t index : wins_[static_cast<std::size_t>(distance)]) {
                ForPredecessors(index, [&](std::size_t before) { Worsen(before, distance + 1); });
            }
        }
    }

    /// Puts the men on all squares, one after the other, and looks at each position.
    void PlaceMen(const std::vector<Square>& pawns, std::size_t man, std::size_t pawn,
                  Bitboard occupied, Squares& squares) {
        if (man == ending_.men.size()) {
            Examine(squares, White);
            Examine(squares, Black);
            return;
        }
        if (ending_.men[man].type == Pawn) {
            squares[man] = pawns[pawn];
            if ((occupied & BitOf(squares[man])) == 0) {
                PlaceMen(pawns, man + 1, pawn + 1, occupied | BitOf(squares[man]), squares);
            }
            return;
        }
        for (Square square = A1; square <= H8; ++square) {
            if ((occupied & BitOf(square)) == 0) {
                squares[man] = square;
                PlaceMen(pawns, man + 1, pawn, occupied | BitOf(square), squares);
            }
        }
    }

    [[nodiscard]] bool IsKingAttacked(const Squares& squares, Colour colour, Bitboard occupied,
                                      std::size_t withoutMan) const {
        const Square king = squares[kingOf_[colour]];
        for (std::size_t i = 0; i < ending_.men.size(); ++i) {
            if (i != withoutMan && ending_.men[i].colour != colour &&
                (AttacksOf(ending_.men[i], squares[i], occupied) & BitOf(king)) != 0) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] Bitboard OccupiedBy(const Squares& squares) const {
        Bitboard all = 0;
        for (std::size_t i = 0; i < ending_.men.size(); ++i) {
            all |= BitOf(squares[i]);
        }
        return all;
    }

    static constexpr std::size_t NoMan = 99;

    /// Works out what is plain about a position: its zeroing moves, and how many others it has.
    void Examine(const Squares& squares, Colour us) {
        const Bitboard occupied = OccupiedBy(squares);
        if (IsKingAttacked(squares, ~us, occupied, NoMan)) {
            return;
        }
        const std::size_t index = ending_.IndexOf(squares, us);
        Bitboard enemies = 0;
        for (std::size_t i = 0; i < ending_.men.size(); ++i) {
            enemies |= ending_.men[i].colour != us ? BitOf(squares[i]) : 0;
        }
        int quiet = 0;
        int zeroing = 0;
        int best = -3;
        for (std::size_t i = 0; i < ending_.men.size(); ++i) {
            const EndingMan man = ending_.men[i];
            if (man.colour != us) {
                continue;
            }
            if (man.type == Pawn) {
                TryPawnMoves(squares, us, i, occupied, enemies, zeroing, best);
                continue;
            }
            Bitboard targets = AttacksOf(man, squares[i], occupied) & ~(occupied & ~enemies);
            while (targets != 0) {
                const Square to = PopLowestBit(targets);
                Squares next = squares;
                next[i] = to;
                const bool captures = (enemies & BitOf(to)) != 0;
                const std::size_t victim = captures ? ManOn(squares, to) : NoMan;
                const Bitboard nextOccupied = (occupied & ~BitOf(squares[i])) | BitOf(to);
                if (IsKingAttacked(next, us, nextOccupied, victim)) {
                    continue;
                }
                if (captures) {
                    ++zeroing;
                    best = std::max(best, -Captured(squares, us, i, to));
                } else {
                    ++quiet;
                }
            }
        }
        Settle(index, quiet, zeroing, best, IsKingAttacked(squares, us, occupied, NoMan));
    }

    void Settle(std::size_t index, int quiet, int zeroing, int best, bool inCheck) {
        ending_.classes[index] = 0;
        quietMoves_[index] =
            static_cast<std::uint8_t>(quiet | (zeroing != 0 && best > -2 ? HasWayOut : 0));
        if (best == 2) {
            SetWin(index, 1);
        } else if (quiet == 0 && zeroing == 0) {
            if (inCheck) {
                SetLoss(index, 1, mates_);
            }
        } else if (quiet == 0 && best == -2) {
            SetLoss(index, 1, losses_[1]);
        }
    }

    [[nodiscard]] std::size_t ManOn(const Squares& squares, Square square) const {
        return static_cast<std::size_t>(
            std::find(squares.begin(), squares.begin() + std::ssize(ending_.men), square) -
            squares.begin());
    }

    [[nodiscard]] Placement PlacementOf(const Squares& squares) const {
        return {ending_.men, {squares.begin(), squares.begin() + std::ssize(ending_.men)}};
    }

    [[nodiscard]] int Captured(const Squares& squares, Colour us, std::size_t man, Square to) {
        Placement next = PlacementOf(squares);
        next.Carry(man, to);
        return solver_.ClassOf(next.men, next.squares, ~us);
    }

    void TryPawnMoves(const Squares& squares, Colour us, std::size_t man, Bitboard occupied,
                      Bitboard enemies, int& zeroing, int& best) {
        const Square from = squares[man];
        const int ahead = us == White ? 8 : -8;
        Bitboard targets = PawnAttacks[us][from] & enemies;
        if ((occupied & BitOf(from + ahead)) == 0) {
            targets |= BitOf(from + ahead);
            const bool isHome = RankOf(from) == (us == White ? 1 : 6);
            if (isHome && (occupied & BitOf(from + 2 * ahead)) == 0) {
                targets |= BitOf(from + 2 * ahead);
            }
        }
        while (targets != 0) {
            const Square to = PopLowestBit(targets);
            Placement next = PlacementOf(squares);
            next.Carry(man, to);
            if (next.IsKingAttacked(us)) {
                continue;
            }
            ++zeroing;
            const Square passed = to == from + 2 * ahead ? from + ahead : SquareNone;
            if (!IsOnEdge(to)) {
                best = std::max(best, -ClassAfterPawnMove(next, us, passed));
                continue;
            }
            const std::size_t promoted = next.ManOn(to);
            for (const PieceType type : {Queen, Rook, Bishop, Knight}) {
                next.men[promoted].type = type;
                best = std::max(best, -solver_.ClassOf(next.men, next.squares, ~us));
            }
        }
    }

    /// Without a capture the position is one of this ending, solved before.
    [[nodiscard]] int ClassAfterPawnMove(const Placement& next, Colour us, Square passed) {
        if (next.men.size() != ending_.men.size()) {
            return solver_.ClassOf(next.men, next.squares, ~us);
        }
        Squares squares{};
        std::copy(next.squares.begin(), next.squares.end(), squares.begin());
        const int plain = ending_.Class(ending_.IndexOf(squares, ~us));
        return passed == SquareNone ? plain : WithEnPassant(solver_, next, ~us, passed, plain);
    }

public:
    /// The class with the right to take en passant beside the class without.
    [[nodiscard]] static int WithEnPassant(CSyzygySolver& solver, const Placement& placement,
                                           Colour us, Square passed, int plain) {
        int best = -3;
        for (std::size_t i = 0; i < placement.men.size(); ++i) {
            if (placement.men[i] != EndingMan{Pawn, us} ||
                (PawnAttacks[us][placement.squares[i]] & BitOf(passed)) == 0) {
                continue;
            }
            Placement next = placement;
            next.squares[i] = passed;
            next.Remove(next.ManOn(us == White ? passed - 8 : passed + 8));
            if (!next.IsKingAttacked(us)) {
                best = std::max(best, -solver.ClassOf(next.men, next.squares, ~us));
            }
        }
        if (best == -3) {
            return plain;
        }
        return HasMove(placement, us) ? std::max(plain, best) : best;
    }

private:
    /// Is there a legal move besides en passant captures.
    [[nodiscard]] static bool HasMove(const Placement& placement, Colour us) {
        const Bitboard occupied = placement.Occupied();
        for (std::size_t i = 0; i < placement.men.size(); ++i) {
            const EndingMan man = placement.men[i];
            if (man.colour != us) {
                continue;
            }
            Bitboard targets = AttacksOf(man, placement.squares[i], occupied);
            for (std::size_t k = 0; k < placement.men.size(); ++k) {
                if (placement.men[k].colour == us) {
                    targets &= ~BitOf(placement.squares[k]);
                }
            }
            if (man.type == Pawn) {
                const Square ahead = placement.squares[i] + (us == White ? 8 : -8);
                targets = (targets & occupied) | (BitOf(ahead) & ~occupied);
            }
            while (targets != 0) {
                Placement next = placement;
                next.Carry(i, PopLowestBit(targets));
                if (!next.IsKingAttacked(us)) {
                    return true;
                }
            }
        }
        return false;
    }

    /// Calls `visit` for the positions from which a move that zeroes nothing leads here.
    template <class Visit>
    void ForPredecessors(std::size_t index, Visit visit) {
        const Squares squares = ending_.SquaresOf(index);
        const Colour mover = ~SolvedEnding::ToMove(index);
        const Bitboard occupied = OccupiedBy(squares);
        for (std::size_t i = 0; i < ending_.men.size(); ++i) {
            const EndingMan man = ending_.men[i];
            if (man.colour != mover || man.type == Pawn) {
                continue;
            }
            Bitboard origins = AttacksOf(man, squares[i], occupied) & ~occupied;
            while (origins != 0) {
                Squares before = squares;
                before[i] = PopLowestBit(origins);
                const std::size_t place = ending_.IndexOf(before, mover);
                if (ending_.classes[place] != SolvedEnding::Illegal) {
                    visit(place);
                }
            }
        }
    }

    void SetWin(std::size_t index, int distance) {
        if (ending_.classes[index] != 0) {
            return;
        }
        CheckDistance(distance);
        ending_.classes[index] = 2;
        ending_.distances[index] = static_cast<std::uint8_t>(distance);
        wins_[static_cast<std::size_t>(distance)].push_back(index);
    }

    void SetLoss(std::size_t index, int distance, std::vector<std::size_t>& list) {
        CheckDistance(distance);
        ending_.classes[index] = -2;
        ending_.distances[index] = static_cast<std::uint8_t>(distance);
        list.push_back(index);
    }

    /// One more move of this position loses.
    void Worsen(std::size_t index, int distance) {
        if (ending_.classes[index] == 0 && --quietMoves_[index] == 0) {
            SetLoss(index, distance, losses_[static_cast<std::size_t>(distance)]);
        }
    }

    void CheckDistance(int distance) const {
        if (distance > MostDistance) {
            throw std::logic_error("the fifty-move rule matters in " + ending_.name);
        }
    }

    CSyzygySolver& solver_;
    SolvedEnding& ending_;
    std::vector<std::uint8_t> quietMoves_;
    std::vector<std::vector<std::size_t>> wins_;    ///< by distance
    std::vector<std::vector<std::size_t>> losses_;  ///< by distance, mates left out
    std::vector<std::size_t> mates_;
    const std::array<std::size_t, 2> kingOf_ = {
        static_cast<std::size_t>(
            std::find(ending_.men.begin(), ending_.men.end(), EndingMan{King, Black}) -
            ending_.men.begin()),
        0};
};

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

std::string EndingName(const std::vector<EndingMan>& men, bool& exchanged) {
    std::array<std::string, 2> sides;
    for (const EndingMan& man : men) {
        sides[man.colour] += Letters[PlaceInName(man.type)];
    }
    const auto byLetter = [](char a, char b) { return Letters.find(a) < Letters.find(b); };
    for (std::string& side : sides) {
        std::sort(side.begin(), side.end(), byLetter);
    }
    const std::string& white = sides[White];
    const std::string& black = sides[Black];
    exchanged = white.size() != black.size()
                  ? white.size() < black.size()
                  : std::lexicographical_compare(black.begin(), black.end(), white.begin(),
                                                 white.end(), byLetter);
    return exchanged ? black + "v" + white : white + "v" + black;
}

const SolvedEnding& CSyzygySolver::Solve(const std::string& name) {
    std::unique_ptr<SolvedEnding>& ending = solved_[name];
    if (ending == nullptr) {
        auto made = std::make_unique<SolvedEnding>(name);
        CEndingSolver(*this, *made).Solve();
        solved_[name] = std::move(made);
        return *solved_[name];
    }
    return *ending;
}

int CSyzygySolver::ClassOf(const std::vector<EndingMan>& men, const std::vector<Square>& squares,
                           Colour toMove, Square enPassant) {
    if (men.size() == 2) {
        return 0;
    }
    bool exchanged = false;
    const SolvedEnding& ending = Solve(EndingName(men, exchanged));
    std::array<Square, 4> ordered{};
    std::array<bool, 4> used{};
    for (std::size_t i = 0; i < ending.men.size(); ++i) {
        EndingMan wanted = ending.men[i];
        wanted.colour = exchanged ? ~wanted.colour : wanted.colour;
        for (std::size_t k = 0; k < men.size(); ++k) {
            if (!used[k] && men[k] == wanted) {
                used[k] = true;
                ordered[i] = exchanged ? squares[k] ^ A8 : squares[k];
                break;
            }
        }
    }
    const int plain = ending.Class(ending.IndexOf(ordered, exchanged ? ~toMove : toMove));
    if (enPassant == SquareNone) {
        return plain;
    }
    return CEndingSolver::WithEnPassant(*this, {men, squares}, toMove, enPassant, plain);
}

}  // namespace brenquil::testing_support
