#include "tables/shown_position.h"

#include "board/position_text.h"
#include "platform/bits.h"
#include "tables/ending_node.h"
#include "tables/table_error.h"

#include <algorithm>

namespace brenquil {

namespace {

constexpr std::string_view LettersOfTypes = "pnbrqk";

[[noreturn]] void Refuse(const std::string& why) {
    throw CTableError("this is no position that tables know: " + why);
}

std::vector<std::string> Words(const std::string& text) {
    std::vector<std::string> words(1);
    for (const char letter : text) {
        if (std::string_view(" \t\r\n").find(letter) != std::string_view::npos) {
            words.emplace_back();
        } else {
            words.back() += letter;
        }
    }
    std::erase(words, "");
    return words;
}

struct ReadMen {
    std::vector<EndingMan> men;
    std::vector<Square> squares;
};

ReadMen ReadBoard(const std::string& text) {
    ReadMen board;
    int file = 0;
    int rank = 7;
    for (const char letter : text) {
        const std::optional<PieceType> type = PieceTypeOf(letter);
        if (letter == '/') {
            if (file != 8 || rank == 0) {
                Refuse("a rank of the board has not eight squares");
            }
            file = 0;
            --rank;
        } else if (letter >= '1' && letter <= '8') {
            file += letter - '0';
        } else if (type) {
            if (file < 8) {
                board.men.push_back({*type, letter >= 'A' && letter <= 'Z' ? White : Black});
                board.squares.push_back(MakeSquare(file, rank));
            }
            ++file;
        } else {
            Refuse("the board holds something that is no man and no number");
        }
        if (file > 8) {
            Refuse("a rank of the board has more than eight squares");
        }
    }
    if (file != 8 || rank != 0) {
        Refuse("the board has not eight ranks of eight squares");
    }
    return board;
}

/// Refuses men that no ending of the tables has; finds theirs.
EndingExit EndingOfBoard(const ReadMen& board) {
    if (board.men.size() > EndingMostMen) {
        Refuse("there are " + std::to_string(board.men.size()) +
               " men on the board, and tables are made for five at most");
    }
    for (std::size_t man = 0; man < board.men.size(); ++man) {
        const int rank = RankOf(board.squares[man]);
        if (board.men[man].type == Pawn && (rank == 0 || rank == 7)) {
            Refuse("a pawn stands on the first or the last rank");
        }
    }
    const std::optional<EndingExit> found = FindEnding(board.men);
    if (!found) {
        Refuse("there is not one king of each colour");
    }
    return *found;
}

/// Refuses what is wrong after the board, but for the en passant square, which is read later.
void CheckFields(const std::vector<std::string>& words) {
    if (words[1] != "w" && words[1] != "b") {
        Refuse("the side to move is w or b");
    }
    if (words.size() > 2 && words[2] != "-") {
        Refuse("tables know no castling");
    }
    for (std::size_t counter = 4; counter < words.size(); ++counter) {
        if (!std::all_of(words[counter].begin(), words[counter].end(),
                         [](char digit) { return digit >= '0' && digit <= '9'; })) {
            Refuse("a counter after the en passant square is no number");
        }
    }
}

/// The pawn that may be taken on the en passant square of that name. `mask` turns the board as the
/// position is turned.
std::size_t VictimOf(const std::string& name, const ShownPosition& position, Square mask) {
    if (name.size() != 2 || name[0] < 'a' || name[0] > 'h' || (name[1] != '3' && name[1] != '6')) {
        Refuse("the en passant square is - or a square of the third or sixth rank");
    }
    const Ending& ending = EndingOf(position.ending);
    const Square passed = MakeSquare(name[0] - 'a', name[1] - '1') ^ mask;
    const Square behind = position.sideToMove == White ? -8 : 8;
    for (std::size_t man = ending.pieces; man < ending.men; ++man) {
        if (ending.man[man].colour != position.sideToMove &&
            position.squares[man] == passed + behind &&
            RankOf(passed) == (position.sideToMove == White ? 5 : 2)) {
            return man;
        }
    }
    Refuse("no pawn has just passed the en passant square");
}

}  // namespace

ShownPosition ShownPosition::FromFen(const std::string& fen) {
    const std::vector<std::string> words = Words(fen);
    if (words.size() < 2 || words.size() > 6) {
        Refuse("a FEN has two to six fields");
    }
    const ReadMen board = ReadBoard(words[0]);
    const EndingExit found = EndingOfBoard(board);
    CheckFields(words);
    ShownPosition position;
    position.ending = found.ending;
    position.flipped = found.flipped;
    position.sideToMove = (words[1] == "w") != found.flipped ? White : Black;
    const Square mask = found.flipped ? A8 : A1;
    if (position.ending == 0) {
        for (std::size_t man = 0; man < 2; ++man) {
            position.squares[board.men[man].colour == White ? 0 : 1] = board.squares[man];
        }
        if (Distance[position.squares[0]][position.squares[1]] < 2) {
            Refuse("the kings stand side by side");
        }
        return position;
    }
    const Ending& ending = EndingOf(position.ending);
    for (std::size_t man = 0; man < ending.men; ++man) {
        position.squares[man] = board.squares[found.from[man]] ^ mask;
    }
    if (!CEndingNode(ending, position.squares, position.sideToMove).IsLegal()) {
        Refuse("the side that is not to move is in check");
    }
    if (words.size() > 3 && words[3] != "-") {
        position.victim = VictimOf(words[3], position, mask);
    }
    return position;
}

std::string ShownPosition::Fen() const {
    Ending kings;
    kings.men = 2;
    kings.man[0] = {King, White};
    kings.man[1] = {King, Black};
    Ending shown = ending == 0 ? kings : EndingOf(ending);
    EndingSquares men = squares;
    if (flipped) {
        for (std::size_t man = 0; man < shown.men; ++man) {
            shown.man[man].colour = ~shown.man[man].colour;
            men[man] ^= A8;
        }
    }
    std::string fen = FenOfEnding(shown, men, flipped ? ~sideToMove : sideToMove);
    if (victim != Ending::NoMan) {
        const Square passed = squares[victim] + (sideToMove == White ? 8 : -8);
        fen.replace(fen.find(" - - ") + 3, 1, SquareToText(flipped ? passed ^ A8 : passed));
    }
    return fen;
}

std::string ShownPosition::Board() const {
    const std::string fen = Fen();
    std::string text = "  +---+---+---+---+---+---+---+---+\n";
    std::size_t at = 0;
    for (int rank = 8; rank >= 1; --rank, ++at) {
        text += std::to_string(rank) + " |";
        for (int file = 0; file < 8; ++at) {
            if (fen[at] >= '1' && fen[at] <= '8') {
                for (int empty = fen[at] - '0'; empty > 0; --empty, ++file) {
                    text += "   |";
                }
            } else {
                text += std::string(" ") + fen[at] + " |";
                ++file;
            }
        }
        text += "\n  +---+---+---+---+---+---+---+---+\n";
    }
    return text + "    a   b   c   d   e   f   g   h\n";
}

std::string ShownPosition::SideName() const {
    return (sideToMove == White) != flipped ? "white" : "black";
}

bool ShownPosition::IsInCheck() const {
    if (ending == 0) {
        return false;
    }
    CEndingNode node(EndingOf(ending), squares, sideToMove);
    node.PrepareMoves();
    return node.IsInCheck();
}

ShownPosition ShownPosition::After(const EndingSquares& moved, std::size_t captured,
                                   std::size_t promoted, PieceType type) const {
    ShownPosition after = *this;
    after.sideToMove = ~sideToMove;
    after.squares = moved;
    after.victim = Ending::NoMan;
    if (captured != Ending::NoMan || promoted != Ending::NoMan) {
        const EndingExit& exit = EndingOf(ending).Exit(captured, promoted, type);
        after.ending = exit.ending;
        after.squares = exit.Map(moved);
        if (exit.flipped) {
            after.flipped = !flipped;
            after.sideToMove = sideToMove;
        }
    }
    return after;
}

std::vector<ShownMove> ShownPosition::Moves() const {
    std::vector<ShownMove> moves;
    if (ending == 0) {
        return moves;
    }
    const Ending& men = EndingOf(ending);
    CEndingNode node(men, squares, sideToMove);
    node.PrepareMoves();
    const Square mask = flipped ? A8 : A1;
    const auto add = [&](std::size_t man, Square to, std::size_t captured, PieceType type) {
        EndingSquares moved = squares;
        moved[man] = to;
        const bool isPromotion = type != Pawn;
        ShownMove move;
        move.text = SquareToText(squares[man] ^ mask) + SquareToText(to ^ mask);
        if (isPromotion) {
            move.text += LettersOfTypes[type];
        }
        move.isZeroing = captured != Ending::NoMan || men.man[man].type == Pawn;
        move.after = After(moved, captured, isPromotion ? man : Ending::NoMan, type);
        if (men.man[man].type == Pawn && to == squares[man] + 2 * node.Forward() &&
            men.HasPawnsOfBoth()) {
            for (std::size_t other = men.pieces; other < men.men; ++other) {
                if (men.man[other].colour != sideToMove &&
                    (PawnAttacks[~sideToMove][squares[other]] & BitOf(to - node.Forward())) != 0) {
                    move.after.victim = man;
                }
            }
        }
        moves.push_back(move);
    };
    for (std::size_t man = 0; man < men.men; ++man) {
        if (men.man[man].colour != sideToMove) {
            continue;
        }
        const bool isPawn = men.man[man].type == Pawn;
        for (Bitboard targets = isPawn ? node.PawnTargets(man) : node.Targets(man); targets != 0;) {
            const Square to = PopLowestBit(targets);
            const std::size_t captured =
                (node.Occupied() & BitOf(to)) != 0 ? node.ManOn(to) : Ending::NoMan;
            if (isPawn && (RankOf(to) == 0 || RankOf(to) == 7)) {
                for (const PieceType type : {Queen, Rook, Bishop, Knight}) {
                    add(man, to, captured, type);
                }
            } else {
                add(man, to, captured, Pawn);
            }
        }
        if (isPawn && victim != Ending::NoMan) {
            const Square passed = squares[victim] + node.Forward();
            if (node.MayTakeInPassing(man, victim, passed)) {
                add(man, passed, victim, Pawn);
            }
        }
    }
    return moves;
}

}  // namespace brenquil
