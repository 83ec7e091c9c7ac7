// Solves endings of up to four men from the rules of chess, for the tests of the table reader.
//
//     CEndgameSolver solver;
//     solver.Value("kqkr", squares, White, false)      distance to mate, in plies
//
// Works backwards from the mates. Every position of an ending is a node; a pass over all of them
// counts each node's moves that stay in the ending and notes what captures and promotions lead to
// in smaller endings, which are solved first. Then the nodes are settled in order of distance: a
// position before a lost one is won, a position all of whose moves lead to won ones is lost.
//
// The white king is kept on files a to d by mirroring the board, and on ranks 1 to 4 where there is
// no pawn. That saves work and has no position that is its own image. Memory: three bytes a node,
// 25 MB for four men, 50 with a pawn, 100 where a pawn can be taken in passing.
#pragma once

#include "board/attacks.h"
#include "board/types.h"
#include "platform/bits.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace brenquil::test {

/// Both kings and up to two other men, the first side's before the second side's, each side's in
/// the order of the ending's name. The first side is White.
using EndgameSquares = std::array<Square, 4>;

/// One man of an ending.
struct EndgameMan {
    PieceType type;
    Colour colour;
};

/// The men behind the kings: squares 0 and 1 are White's and Black's king.
inline std::vector<EndgameMan> MenOfEnding(std::string_view name) {
    constexpr std::string_view Letters = "pnbrq";
    std::vector<EndgameMan> men;
    const std::size_t secondKing = name.find('k', 1);
    for (std::size_t index = 1; index < name.size(); ++index) {
        const std::size_t type = Letters.find(name[index]);
        if (type != std::string_view::npos) {
            men.push_back({static_cast<PieceType>(type), index < secondKing ? White : Black});
        }
    }
    return men;
}

/// The solution of one ending.
class CSolvedEnding {
public:
    static constexpr std::uint8_t Draw = 255;
    static constexpr std::uint8_t Impossible = 254;

    CSolvedEnding(std::string_view name, class CEndgameSolver& solver);

    /// Plies to mate, even when the side to move loses; `Draw` or `Impossible`.
    [[nodiscard]] std::uint8_t Value(EndgameSquares squares, Colour sideToMove,
                                     bool enPassant) const {
        return values_[IndexOf(squares, sideToMove, enPassant)];
    }

    /// The largest number of plies of any position.
    [[nodiscard]] int Longest() const noexcept { return longest_; }

    [[nodiscard]] const std::vector<EndgameMan>& Men() const noexcept { return men_; }

    /// Are there positions in which a pawn can be taken in passing.
    [[nodiscard]] bool HasEnPassant() const noexcept { return hasEnPassant_; }

private:
    struct Node {
        EndgameSquares squares{};
        Colour sideToMove = White;
        bool enPassant = false;
    };

    /// What a node's moves that leave the ending come to.
    struct Exits {
        int stays = 0;      // moves that stay in the ending
        int bestWin = -1;   // plies of the quickest win by a move that leaves it
        int worstLoss = 0;  // plies of the slowest win that such a move gives the other side
        bool canDraw = false;
        bool hasMove = false;
    };

    static constexpr std::uint8_t Unknown = 253;
    static constexpr std::uint8_t NeverLost = 255;

    [[nodiscard]] std::size_t IndexOf(EndgameSquares squares, Colour sideToMove,
                                      bool enPassant) const {
        const Square mask =
            (FileOf(squares[0]) > 3 ? 7 : 0) ^ (!hasPawns_ && RankOf(squares[0]) > 3 ? 56 : 0);
        for (std::size_t man = 0; man < men_.size() + 2; ++man) {
            squares[man] ^= mask;
        }
        std::size_t index = (enPassant ? 2U : 0U) + (sideToMove == White ? 1U : 0U);
        index = index * KingSquares() +
                static_cast<std::size_t>(RankOf(squares[0]) * 4 + FileOf(squares[0]));
        for (std::size_t man = 1; man < men_.size() + 2; ++man) {
            index = index * 64 + static_cast<std::size_t>(squares[man]);
        }
        return index;
    }

    [[nodiscard]] Node NodeAt(std::size_t index) const {
        Node node;
        for (std::size_t man = men_.size() + 1; man >= 1; --man) {
            node.squares[man] = static_cast<Square>(index % 64);
            index /= 64;
        }
        const auto king = static_cast<int>(index % KingSquares());
        node.squares[0] = MakeSquare(king % 4, king / 4);
        index /= KingSquares();
        node.sideToMove = index % 2 == 1 ? White : Black;
        node.enPassant = index >= 2;
        return node;
    }

    [[nodiscard]] Colour ColourOfMan(std::size_t man) const {
        return man == 0 ? White : man == 1 ? Black : men_[man - 2].colour;
    }

    [[nodiscard]] PieceType TypeOfMan(std::size_t man) const {
        return man < 2 ? King : men_[man - 2].type;
    }

    [[nodiscard]] std::size_t Count() const { return men_.size() + 2; }

    /// To how many squares the symmetries bring the white king.
    [[nodiscard]] std::size_t KingSquares() const { return hasPawns_ ? 32 : 16; }

    [[nodiscard]] Bitboard Occupied(const EndgameSquares& squares) const {
        Bitboard bits = 0;
        for (std::size_t man = 0; man < Count(); ++man) {
            bits |= BitOf(squares[man]);
        }
        return bits;
    }

    [[nodiscard]] static Bitboard Attacks(PieceType type, Colour colour, Square square,
                                          Bitboard occupied) {
        switch (type) {
        case Pawn: return PawnAttacks[colour][square];
        case Knight: return KnightAttacks[square];
        case Bishop: return BishopAttacksFrom(square, occupied);
        case Rook: return RookAttacksFrom(square, occupied);
        case Queen: return QueenAttacksFrom(square, occupied);
        case King: return KingAttacks[square];
        }
        return 0;
    }

    /// Is the king of that colour attacked when one man, `gone`, is off the board.
    [[nodiscard]] bool IsAttacked(const EndgameSquares& squares, Colour king,
                                  std::size_t gone) const {
        Bitboard occupied = Occupied(squares);
        if (gone < Count() && ManAlone(squares, gone)) {
            occupied &= ~BitOf(squares[gone]);
        }
        const Bitboard target = BitOf(squares[king == White ? 0 : 1]);
        for (std::size_t man = 0; man < Count(); ++man) {
            if (man != gone && ColourOfMan(man) != king &&
                (Attacks(TypeOfMan(man), ColourOfMan(man), squares[man], occupied) & target) != 0) {
                return true;
            }
        }
        return false;
    }

    /// Does no other man stand where this one does (its taker does, after a capture).
    [[nodiscard]] bool ManAlone(const EndgameSquares& squares, std::size_t gone) const {
        for (std::size_t man = 0; man < Count(); ++man) {
            if (man != gone && squares[man] == squares[gone]) {
                return false;
            }
        }
        return true;
    }

    /// The square passed by the pawn of the side that is not to move, if it may be taken there.
    [[nodiscard]] bool MayTakeInPassing(const EndgameSquares& squares, Colour sideToMove) const {
        if (!hasEnPassant_) {
            return false;
        }
        const std::size_t taker = sideToMove == White ? 2 : 3;  // the two pawns of kpkp
        const std::size_t victim = 5 - taker;
        const int forward = sideToMove == White ? 8 : -8;
        const Square passed = squares[victim] + forward;
        const Bitboard empty = ~Occupied(squares);
        return RankOf(squares[victim]) == (sideToMove == White ? 4 : 3) &&
               (empty & BitOf(passed)) != 0 && (empty & BitOf(passed + forward)) != 0 &&
               (PawnAttacks[sideToMove][squares[taker]] & BitOf(passed)) != 0;
    }

    [[nodiscard]] bool IsPossible(const Node& node) const {
        for (std::size_t man = 0; man < Count(); ++man) {
            if (!ManAlone(node.squares, man)) {
                return false;
            }
            const int rank = RankOf(node.squares[man]);
            if (TypeOfMan(man) == Pawn && (rank == 0 || rank == 7)) {
                return false;
            }
        }
        return !IsAttacked(node.squares, ~node.sideToMove, Count()) &&
               (!node.enPassant || MayTakeInPassing(node.squares, node.sideToMove));
    }

    void Survey(std::size_t index);
    [[nodiscard]] Exits FindExits(const Node& node) const;
    void TryMove(const Node& node, std::size_t man, Square to, Exits& exits) const;
    void TryCaptureInPassing(const Node& node, Exits& exits) const;
    void AddExit(const EndgameSquares& squares, std::size_t gone, std::size_t promoted,
                 PieceType type, Colour next, Exits& exits) const;
    void Settle();
    void VisitBefore(const Node& node, int plies);
    void Touch(const EndgameSquares& before, Colour mover, int plies);
    void TouchNode(std::size_t index, int plies);
    void Schedule(std::size_t index, int plies);

    std::string name_;
    std::vector<EndgameMan> men_;
    bool hasPawns_ = false;
    bool hasEnPassant_ = false;
    CEndgameSolver& solver_;
    int longest_ = 0;
    std::vector<std::uint8_t> values_;
    std::vector<std::uint8_t> stays_;
    std::vector<std::uint8_t> worstLoss_;
    std::vector<std::vector<std::uint32_t>> due_;  // by plies
};

/// Solves endings on demand and keeps them.
class CEndgameSolver {
public:
    const CSolvedEnding& Ending(const std::string& name) {
        std::unique_ptr<CSolvedEnding>& ending = endings_[name];
        if (ending == nullptr) {
            ending = std::make_unique<CSolvedEnding>(name, *this);
        }
        return *ending;
    }

    /// Gives the memory of an ending back.
    void Forget(const std::string& name) { endings_.erase(name); }

    /// The value of any men on the board, the kings first.
    [[nodiscard]] std::uint8_t Value(std::span<const EndgameMan> men,
                                     std::span<const Square> squares, Colour sideToMove,
                                     bool enPassant = false) const {
        if (men.size() == 2) {
            return CSolvedEnding::Draw;
        }
        const auto& [solved, flipped] = solved_.at(KeyOf(men));
        const CSolvedEnding& ending = *solved;
        EndgameSquares placed{};
        placed[0] = flipped ? squares[1] ^ 56 : squares[0];
        placed[1] = flipped ? squares[0] ^ 56 : squares[1];
        std::array<bool, 4> used{};
        for (std::size_t slot = 0; slot < ending.Men().size(); ++slot) {
            const EndgameMan wanted = ending.Men()[slot];
            for (std::size_t man = 2; man < men.size(); ++man) {
                const Colour colour = flipped ? ~men[man].colour : men[man].colour;
                if (!used[man] && men[man].type == wanted.type && colour == wanted.colour) {
                    used[man] = true;
                    placed[slot + 2] = flipped ? squares[man] ^ 56 : squares[man];
                    break;
                }
            }
        }
        return ending.Value(placed, flipped ? ~sideToMove : sideToMove, enPassant);
    }

    /// Solves the ending that these men are, whichever colour is the stronger one.
    void Prepare(std::span<const EndgameMan> men) {
        if (men.size() == 2 || solved_.count(KeyOf(men)) != 0) {
            return;
        }
        const std::string straight = NameOf(men, White);
        const std::string reversed = NameOf(men, Black);
        const bool flipped = Strength(men, Black) > Strength(men, White);
        const CSolvedEnding& ending = Ending(flipped ? reversed : straight);
        solved_[KeyOf(men)] = {&ending, flipped};
    }

private:
    /// Two bits for each type of each colour: the order of the men plays no part.
    static std::uint32_t KeyOf(std::span<const EndgameMan> men) {
        std::uint32_t key = 0;
        for (std::size_t man = 2; man < men.size(); ++man) {
            key += 1U << (2 * (men[man].type + (men[man].colour == White ? 0 : 5)));
        }
        return key;
    }

    /// First the number of men decides, then the strongest one.
    static int Strength(std::span<const EndgameMan> men, Colour colour) {
        int strength = 0;
        for (std::size_t man = 2; man < men.size(); ++man) {
            strength += men[man].colour == colour ? 100 + (1 << men[man].type) : 0;
        }
        return strength;
    }

    static std::string NameOf(std::span<const EndgameMan> men, Colour first) {
        std::string name;
        for (const Colour colour : {first, ~first}) {
            name += 'k';
            for (int type = Queen; type >= Pawn; --type) {
                for (std::size_t man = 2; man < men.size(); ++man) {
                    if (men[man].colour == colour && men[man].type == type) {
                        name += "pnbrq"[type];
                    }
                }
            }
        }
        return name;
    }

    std::map<std::string, std::unique_ptr<CSolvedEnding>> endings_;
    std::unordered_map<std::uint32_t, std::pair<const CSolvedEnding*, bool>> solved_;
};

// What an ending can turn into has to be solved before it is surveyed.
inline CSolvedEnding::CSolvedEnding(std::string_view name, CEndgameSolver& solver)
    : name_(name), men_(MenOfEnding(name)), solver_(solver) {
    hasPawns_ = name.find('p') != std::string_view::npos;
    hasEnPassant_ = men_.size() == 2 && men_[0].type == Pawn && men_[1].type == Pawn &&
                    men_[0].colour != men_[1].colour;
    const std::vector<EndgameMan> kings{{King, White}, {King, Black}};
    for (std::size_t gone = 0; gone <= men_.size(); ++gone) {
        std::vector<EndgameMan> left = kings;
        for (std::size_t man = 0; man < men_.size(); ++man) {
            if (man != gone) {
                left.push_back(men_[man]);
            }
        }
        if (gone < men_.size()) {
            solver_.Prepare(left);
        }
        for (std::size_t man = 2; man < left.size(); ++man) {
            for (const PieceType type : {Queen, Rook, Bishop, Knight}) {
                std::vector<EndgameMan> promoted = left;
                promoted[man].type = type;
                if (left[man].type == Pawn) {
                    solver_.Prepare(promoted);
                }
            }
        }
    }

    std::size_t nodes = 2 * KingSquares() * (hasEnPassant_ ? 2 : 1);
    for (std::size_t man = 1; man < Count(); ++man) {
        nodes *= 64;
    }
    values_.assign(nodes, Impossible);
    stays_.assign(nodes, 0);
    worstLoss_.assign(nodes, 0);
    due_.resize(256);
    for (std::size_t index = 0; index < nodes; ++index) {
        Survey(index);
    }
    Settle();
    stays_ = {};
    worstLoss_ = {};
    due_ = {};
}

inline void CSolvedEnding::Survey(std::size_t index) {
    const Node node = NodeAt(index);
    if (!IsPossible(node)) {
        return;
    }
    values_[index] = Unknown;
    const Exits exits = FindExits(node);
    worstLoss_[index] = static_cast<std::uint8_t>(exits.worstLoss);
    if (!exits.hasMove) {
        if (IsAttacked(node.squares, node.sideToMove, Count())) {
            Schedule(index, 0);
        } else {
            stays_[index] = NeverLost;
        }
        return;
    }
    if (exits.bestWin >= 0) {
        Schedule(index, exits.bestWin);
    }
    if (exits.canDraw || exits.bestWin >= 0) {
        stays_[index] = NeverLost;
    } else if (exits.stays == 0) {
        Schedule(index, exits.worstLoss + 1);
    } else {
        stays_[index] = static_cast<std::uint8_t>(exits.stays);
    }
}

inline CSolvedEnding::Exits CSolvedEnding::FindExits(const Node& node) const {
    Exits exits;
    const Bitboard occupied = Occupied(node.squares);
    for (std::size_t man = 0; man < Count(); ++man) {
        if (ColourOfMan(man) != node.sideToMove) {
            continue;
        }
        const Square from = node.squares[man];
        Bitboard targets = Attacks(TypeOfMan(man), node.sideToMove, from, occupied);
        if (TypeOfMan(man) == Pawn) {
            const int forward = node.sideToMove == White ? 8 : -8;
            targets &= occupied;
            if ((occupied & BitOf(from + forward)) == 0) {
                targets |= BitOf(from + forward);
                if (RankOf(from) == (node.sideToMove == White ? 1 : 6) &&
                    (occupied & BitOf(from + 2 * forward)) == 0) {
                    targets |= BitOf(from + 2 * forward);
                }
            }
        }
        while (targets != 0) {
            TryMove(node, man, PopLowestBit(targets), exits);
        }
    }
    if (node.enPassant) {
        TryCaptureInPassing(node, exits);
    }
    return exits;
}

inline void CSolvedEnding::TryMove(const Node& node, std::size_t man, Square to,
                                   Exits& exits) const {
    std::size_t captured = Count();
    for (std::size_t other = 0; other < Count(); ++other) {
        if (node.squares[other] == to) {
            if (ColourOfMan(other) == node.sideToMove) {
                return;
            }
            captured = other;
        }
    }
    EndgameSquares after = node.squares;
    after[man] = to;
    if (IsAttacked(after, node.sideToMove, captured)) {
        return;
    }
    exits.hasMove = true;
    if (TypeOfMan(man) == Pawn && (RankOf(to) == 0 || RankOf(to) == 7)) {
        for (const PieceType type : {Queen, Rook, Bishop, Knight}) {
            AddExit(after, captured, man, type, ~node.sideToMove, exits);
        }
    } else if (captured < Count()) {
        AddExit(after, captured, Count(), Pawn, ~node.sideToMove, exits);
    } else {
        ++exits.stays;
    }
}

inline void CSolvedEnding::TryCaptureInPassing(const Node& node, Exits& exits) const {
    const std::size_t taker = node.sideToMove == White ? 2 : 3;
    const std::size_t victim = 5 - taker;
    EndgameSquares after = node.squares;
    after[taker] = node.squares[victim] + (node.sideToMove == White ? 8 : -8);
    if (!IsAttacked(after, node.sideToMove, victim)) {
        exits.hasMove = true;
        AddExit(after, victim, Count(), Pawn, ~node.sideToMove, exits);
    }
}

inline void CSolvedEnding::AddExit(const EndgameSquares& squares, std::size_t gone,
                                   std::size_t promoted, PieceType type, Colour next,
                                   Exits& exits) const {
    std::array<EndgameMan, 4> men{};
    std::array<Square, 4> placed{};
    std::size_t count = 0;
    for (std::size_t man = 0; man < Count(); ++man) {
        if (man != gone) {
            men[count] = {man == promoted ? type : TypeOfMan(man), ColourOfMan(man)};
            placed[count++] = squares[man];
        }
    }
    const std::uint8_t value =
        solver_.Value(std::span(men).first(count), std::span(placed).first(count), next);
    if (value == Draw) {
        exits.canDraw = true;
    } else if (value % 2 == 0) {
        if (exits.bestWin < 0 || value + 1 < exits.bestWin) {
            exits.bestWin = value + 1;
        }
    } else {
        exits.worstLoss = std::max<int>(exits.worstLoss, value);
    }
}

inline void CSolvedEnding::Schedule(std::size_t index, int plies) {
    due_[static_cast<std::size_t>(plies)].push_back(static_cast<std::uint32_t>(index));
}

inline void CSolvedEnding::Settle() {
    for (int plies = 0; plies < static_cast<int>(due_.size()); ++plies) {
        // Settling can add to later lists only.
        const std::vector<std::uint32_t> list = std::move(due_[static_cast<std::size_t>(plies)]);
        for (const std::uint32_t index : list) {
            if (values_[index] == Unknown) {
                values_[index] = static_cast<std::uint8_t>(plies);
                longest_ = plies;
                VisitBefore(NodeAt(index), plies);
            }
        }
    }
    std::replace(values_.begin(), values_.end(), Unknown, Draw);
}

/// Takes back each move that could have led to the node without a capture or promotion.
inline void CSolvedEnding::VisitBefore(const Node& node, int plies) {
    const Colour mover = ~node.sideToMove;
    const Bitboard occupied = Occupied(node.squares);
    const bool mayBeTaken = MayTakeInPassing(node.squares, node.sideToMove);
    for (std::size_t man = 0; man < Count(); ++man) {
        if (ColourOfMan(man) != mover) {
            continue;
        }
        const Square to = node.squares[man];
        EndgameSquares before = node.squares;
        if (TypeOfMan(man) != Pawn) {
            Bitboard origins = Attacks(TypeOfMan(man), mover, to, occupied) & ~occupied;
            while (origins != 0 && !node.enPassant) {
                before[man] = PopLowestBit(origins);
                Touch(before, mover, plies);
            }
            continue;
        }
        const int forward = mover == White ? 8 : -8;
        const Square single = to - forward;
        if (RankOf(single) == (mover == White ? 0 : 7) || (occupied & BitOf(single)) != 0) {
            continue;
        }
        if (!node.enPassant) {
            before[man] = single;
            Touch(before, mover, plies);
        }
        // After a double step a pawn that can be taken in passing always is such a node.
        const Square twice = single - forward;
        if (RankOf(to) == (mover == White ? 3 : 4) && (occupied & BitOf(twice)) == 0 &&
            node.enPassant == mayBeTaken) {
            before[man] = twice;
            Touch(before, mover, plies);
        }
    }
}

inline void CSolvedEnding::Touch(const EndgameSquares& before, Colour mover, int plies) {
    TouchNode(IndexOf(before, mover, false), plies);
    if (hasEnPassant_) {
        TouchNode(IndexOf(before, mover, true), plies);
    }
}

inline void CSolvedEnding::TouchNode(std::size_t index, int plies) {
    if (values_[index] != Unknown) {
        return;
    }
    if (plies % 2 == 0) {
        Schedule(index, plies + 1);
    } else if (stays_[index] != NeverLost && --stays_[index] == 0) {
        Schedule(index, std::max<int>(plies, worstLoss_[index]) + 1);
    }
}

}  // namespace brenquil::test
