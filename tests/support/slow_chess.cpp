#include "slow_chess.h"

#include <algorithm>
#include <cstdlib>

namespace brenquil {

namespace {

struct Step {
    int file;
    int rank;
};

constexpr std::array<Step, 8> KnightSteps = {
    {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}}};
/// The first four are a rook's, the others a bishop's; together a king's and a queen's.
constexpr std::array<Step, 8> LineSteps = {
    {{0, 1}, {1, 0}, {0, -1}, {-1, 0}, {1, 1}, {1, -1}, {-1, -1}, {-1, 1}}};

bool IsOnBoard(int file, int rank) {
    return file >= 0 && file < 8 && rank >= 0 && rank < 8;
}

bool Holds(std::uint64_t mask, int square) {
    return (mask >> square & 1U) != 0;
}

std::uint32_t Word(int from, int to, unsigned kind = 0, unsigned index = 0) {
    return static_cast<std::uint32_t>(from) | static_cast<std::uint32_t>(to) << 6U | kind << 12U |
           index << 14U;
}

void AddPromotions(std::vector<std::uint32_t>& moves, int from, int to) {
    for (const unsigned index : {3U, 2U, 1U, 0U}) {  // queen, knight, bishop, rook
        moves.push_back(Word(from, to, 3, index));
    }
}

int HomeOf(int index) {
    return index < 2 ? 0 : 56;
}

int KingTarget(int index) {
    return HomeOf(index) + (index % 2 == 0 ? 6 : 2);
}

int RookTarget(int index) {
    return HomeOf(index) + (index % 2 == 0 ? 5 : 3);
}

}  // namespace

SlowPosition::SlowPosition() : side(White), enPassant(SquareNone), clock(0) {
    board.fill(PieceNone);
    for (std::size_t index = 0; index < rights.size(); ++index) {
        const int home = HomeOf(static_cast<int>(index));
        rights[index] = {false, home + 4, home + (index % 2 == 0 ? 7 : 0)};
    }
}

SlowPosition SlowPosition::AtStart() {
    constexpr std::array<int, 8> Home = {Rook, Knight, Bishop, Queen, King, Bishop, Knight, Rook};
    SlowPosition start;
    for (std::size_t file = 0; file < 8; ++file) {
        start.board[file] = Home[file] * 2 + White;
        start.board[8 + file] = Pawn * 2 + White;
        start.board[48 + file] = Pawn * 2 + Black;
        start.board[56 + file] = Home[file] * 2 + Black;
    }
    for (Right& right : start.rights) {
        right.held = true;
    }
    return start;
}

SlowPosition::SlowPosition(const CPosition& position)
    : side(position.sideToMove), enPassant(position.enPassant), clock(position.halfmoveClock) {
    for (int square = 0; square < 64; ++square) {
        board[static_cast<std::size_t>(square)] = position.board[square];
    }
    for (std::size_t index = 0; index < 4; ++index) {
        const CastlingRecord& record = position.castling[index];
        rights[index] = {(position.castlingRights >> index & 1U) != 0, record.kingFrom,
                         record.rookFrom};
    }
}

bool SlowPosition::IsMan(int square, int type, int colour) const {
    return board[static_cast<std::size_t>(square)] == type * 2 + colour;
}

/// The squares a knight, slider or king attacks from a square, occupied ones included.
std::array<bool, 64> SlowPosition::Reach(int type, int from) const {
    std::array<bool, 64> reach{};
    const bool isSlider = type == Bishop || type == Rook || type == Queen;
    const std::size_t first = type == Bishop ? 4 : 0;
    const std::size_t last = type == Rook ? 4 : 8;
    const auto& steps = type == Knight ? KnightSteps : LineSteps;
    for (std::size_t i = first; i < last; ++i) {
        int file = from % 8 + steps[i].file;
        int rank = from / 8 + steps[i].rank;
        while (IsOnBoard(file, rank)) {
            const auto square = static_cast<std::size_t>(rank * 8 + file);
            reach[square] = true;
            if (!isSlider || board[square] != PieceNone) {
                break;
            }
            file += steps[i].file;
            rank += steps[i].rank;
        }
    }
    return reach;
}

std::vector<int> SlowPosition::Attackers(int square, int by) const {
    std::vector<int> attackers;
    const int file = square % 8;
    const int rank = square / 8;
    for (const int fileStep : {-1, 1}) {
        const int behind = rank + (by == White ? -1 : 1);
        if (IsOnBoard(file + fileStep, behind) && IsMan(behind * 8 + file + fileStep, Pawn, by)) {
            attackers.push_back(behind * 8 + file + fileStep);
        }
    }
    for (const Step& step : KnightSteps) {
        const int other = (rank + step.rank) * 8 + file + step.file;
        if (IsOnBoard(file + step.file, rank + step.rank) && IsMan(other, Knight, by)) {
            attackers.push_back(other);
        }
    }
    for (std::size_t i = 0; i < LineSteps.size(); ++i) {
        const Step step = LineSteps[i];
        for (int distance = 1;; ++distance) {
            const int f = file + distance * step.file;
            const int r = rank + distance * step.rank;
            if (!IsOnBoard(f, r)) {
                break;
            }
            const int other = r * 8 + f;
            if (IsMan(other, Queen, by) || IsMan(other, i < 4 ? Rook : Bishop, by) ||
                (distance == 1 && IsMan(other, King, by))) {
                attackers.push_back(other);
            }
            if (board[static_cast<std::size_t>(other)] != PieceNone) {
                break;
            }
        }
    }
    return attackers;
}

bool SlowPosition::IsSquareAttacked(int square, int by) const {
    return !Attackers(square, by).empty();
}

bool SlowPosition::IsAnyKingAttacked(int colour) const {
    for (int square = 0; square < 64; ++square) {
        if (IsMan(square, King, colour) && IsSquareAttacked(square, 1 - colour)) {
            return true;
        }
    }
    return false;
}

void SlowPosition::AddPawnCaptures(std::vector<std::uint32_t>& moves, std::uint64_t fromMask,
                                   std::uint64_t toMask) const {
    const int up = side == White ? 1 : -1;
    const int seventh = side == White ? 6 : 1;
    // Each group walks over all pawns, towards a file `fileStep` away.
    const auto forEach = [&](bool promoting, int fileStep, bool captures) {
        for (int from = 0; from < 64; ++from) {
            const int file = from % 8 + fileStep;
            const int rank = from / 8 + up;
            if (!IsMan(from, Pawn, side) || !Holds(fromMask, from) ||
                (from / 8 == seventh) != promoting || !IsOnBoard(file, rank)) {
                continue;
            }
            const int to = rank * 8 + file;
            const int target = board[static_cast<std::size_t>(to)];
            const bool fits =
                captures ? target != PieceNone && target % 2 != side : target == PieceNone;
            if (!fits || !Holds(toMask, to)) {
                continue;
            }
            if (promoting) {
                AddPromotions(moves, from, to);
            } else {
                moves.push_back(Word(from, to));
            }
        }
    };
    forEach(false, -1, true);
    forEach(false, 1, true);
    forEach(true, -1, true);
    forEach(true, 1, true);
    forEach(true, 0, false);
    if (enPassant == SquareNone) {
        return;
    }
    for (const int fileStep : {-1, 1}) {
        const int file = enPassant % 8 - fileStep;
        const int rank = enPassant / 8 - up;
        if (IsOnBoard(file, rank) && IsMan(rank * 8 + file, Pawn, side) &&
            Holds(fromMask, rank * 8 + file)) {
            moves.push_back(Word(rank * 8 + file, enPassant, 2));
        }
    }
}

void SlowPosition::AddPawnSteps(std::vector<std::uint32_t>& moves, std::uint64_t fromMask,
                                std::uint64_t toMask) const {
    const int up = side == White ? 8 : -8;
    const int seventh = side == White ? 6 : 1;
    const int second = side == White ? 1 : 6;
    const auto isEmpty = [&](int square) {
        return square >= 0 && square < 64 && board[static_cast<std::size_t>(square)] == PieceNone;
    };
    for (int from = 0; from < 64; ++from) {
        if (IsMan(from, Pawn, side) && Holds(fromMask, from) && from / 8 != seventh &&
            isEmpty(from + up) && Holds(toMask, from + up)) {
            moves.push_back(Word(from, from + up));
        }
    }
    for (int from = 0; from < 64; ++from) {
        if (IsMan(from, Pawn, side) && Holds(fromMask, from) && from / 8 == second &&
            isEmpty(from + up) && isEmpty(from + 2 * up) && Holds(toMask, from + 2 * up)) {
            moves.push_back(Word(from, from + 2 * up));
        }
    }
}

void SlowPosition::AddPieceMoves(std::vector<std::uint32_t>& moves, int type, int from,
                                 bool captures, bool quiets, std::uint64_t toMask) const {
    const std::array<bool, 64> reach = Reach(type, from);
    for (int to = 0; to < 64; ++to) {
        const int target = board[static_cast<std::size_t>(to)];
        const bool fits = target == PieceNone ? quiets : captures && target % 2 != side;
        if (reach[static_cast<std::size_t>(to)] && fits && Holds(toMask, to)) {
            moves.push_back(Word(from, to));
        }
    }
}

void SlowPosition::AddCastling(std::vector<std::uint32_t>& moves, int king, int index) const {
    const Right& right = rights[static_cast<std::size_t>(index)];
    if (!right.held || right.kingFrom != king) {
        return;
    }
    const int kingTo = KingTarget(index);
    const auto isFree = [&](int a, int b) {
        for (int square = std::min(a, b); square <= std::max(a, b); ++square) {
            if (board[static_cast<std::size_t>(square)] != PieceNone && square != king &&
                square != right.rookFrom) {
                return false;
            }
        }
        return true;
    };
    if (!isFree(king, kingTo) || !isFree(right.rookFrom, RookTarget(index))) {
        return;
    }
    for (int square = std::min(king, kingTo); square <= std::max(king, kingTo); ++square) {
        if ((square != king || square == kingTo) && IsSquareAttacked(square, 1 - side)) {
            return;
        }
    }
    moves.push_back(Word(king, kingTo, 1, static_cast<unsigned>(index)));
}

std::vector<std::uint32_t> SlowPosition::Moves(bool captures, bool quiets, std::uint64_t fromMask,
                                               std::uint64_t toMask) const {
    std::vector<std::uint32_t> moves;
    if (captures) {
        AddPawnCaptures(moves, fromMask, toMask);
    }
    if (quiets) {
        AddPawnSteps(moves, fromMask, toMask);
    }
    for (const int type : {Knight, Bishop, Rook, Queen}) {
        for (int from = 0; from < 64; ++from) {
            if (IsMan(from, type, side) && Holds(fromMask, from)) {
                AddPieceMoves(moves, type, from, captures, quiets, toMask);
            }
        }
    }
    const bool inCheck = IsAnyKingAttacked(side);
    for (int from = 0; from < 64; ++from) {
        if (!IsMan(from, King, side) || !Holds(fromMask, from)) {
            continue;
        }
        AddPieceMoves(moves, King, from, captures, quiets, ~std::uint64_t{0});
        if (quiets && !inCheck) {
            AddCastling(moves, from, side == White ? 0 : 2);
            AddCastling(moves, from, side == White ? 1 : 3);
        }
    }
    return moves;
}

std::vector<std::uint32_t> SlowPosition::Evasions() const {
    std::array<bool, 64> helps{};
    for (int king = 0; king < 64; ++king) {
        if (!IsMan(king, King, side)) {
            continue;
        }
        for (const int attacker : Attackers(king, 1 - side)) {
            // Walking from the attacker to the king passes the squares between; a knight's walk
            // has no line, and a neighbour's no squares.
            helps[static_cast<std::size_t>(attacker)] = true;
            const int files = king % 8 - attacker % 8;
            const int ranks = king / 8 - attacker / 8;
            if (files != 0 && ranks != 0 && std::abs(files) != std::abs(ranks)) {
                continue;
            }
            const int steps = std::max(std::abs(files), std::abs(ranks));
            for (int i = 1; i < steps; ++i) {
                helps[static_cast<std::size_t>(attacker +
                                               i * (files / steps + 8 * (ranks / steps)))] = true;
            }
        }
    }
    std::vector<std::uint32_t> moves = Moves(true, true);
    std::erase_if(moves, [&](std::uint32_t word) {
        const bool isKing = IsMan(static_cast<int>(word & 63U), King, side);
        const bool isEnPassant = (word >> 12U & 3U) == 2;
        return !isKing && !isEnPassant && !helps[word >> 6U & 63U];
    });
    return moves;
}

bool SlowPosition::Make(std::uint32_t word) {
    const auto from = static_cast<std::size_t>(word & 63U);
    const auto to = static_cast<std::size_t>(word >> 6U & 63U);
    const unsigned kind = word >> 12U & 3U;
    const unsigned index = word >> 14U & 3U;
    const int mover = board[from];
    const bool isPawn = mover / 2 == Pawn;
    const int up = side == White ? 8 : -8;
    ++clock;
    if (isPawn || (kind != 1 && board[to] != PieceNone)) {
        clock = 0;
    }
    if (kind == 1) {
        const Right right = rights[index];
        board[static_cast<std::size_t>(right.kingFrom)] = PieceNone;
        board[static_cast<std::size_t>(right.rookFrom)] = PieceNone;
        board[static_cast<std::size_t>(KingTarget(static_cast<int>(index)))] = King * 2 + side;
        board[static_cast<std::size_t>(RookTarget(static_cast<int>(index)))] = Rook * 2 + side;
    } else {
        if (kind == 2) {
            const std::size_t victim = to - static_cast<std::size_t>(up);
            if (IsMan(static_cast<int>(victim), Pawn, 1 - side)) {
                board[victim] = PieceNone;
            }
        }
        board[from] = PieceNone;
        board[to] = mover;
        if (kind == 3) {
            constexpr std::array<int, 4> Promoted = {Rook, Bishop, Knight, Queen};
            board[to] = Promoted[index] * 2 + side;
        }
    }
    for (Right& right : rights) {
        for (const int square : {right.kingFrom, right.rookFrom}) {
            if (square == static_cast<int>(from) || square == static_cast<int>(to)) {
                right.held = false;
            }
        }
    }
    enPassant = SquareNone;
    if (isPawn && static_cast<int>(to) - static_cast<int>(from) == 2 * up) {
        for (const int fileStep : {-1, 1}) {
            const int file = static_cast<int>(to % 8) + fileStep;
            if (IsOnBoard(file, 0) && IsMan(static_cast<int>(to) + fileStep, Pawn, 1 - side)) {
                enPassant = static_cast<int>(from) + up;
            }
        }
    }
    const int moverSide = side;
    side = 1 - side;
    return !IsAnyKingAttacked(moverSide);
}

unsigned SlowPosition::RightsBits() const {
    unsigned bits = 0;
    for (std::size_t index = 0; index < rights.size(); ++index) {
        bits |= rights[index].held ? 1U << index : 0U;
    }
    return bits;
}

}  // namespace brenquil
