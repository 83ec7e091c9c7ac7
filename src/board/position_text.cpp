#include "board/position_text.h"

#include "board/move_generator.h"
#include "platform/bits.h"
#include "text/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace brenquil {

namespace {

constexpr std::string_view PieceLetters = "pPnNbBrRqQkK";
constexpr std::string_view CastlingLetters = "KQkq";
constexpr std::string_view PromotionLetters = "rbnq";
constexpr std::string_view ShortCastlingName = "O-O";
constexpr std::string_view LongCastlingName = "O-O-O";

constexpr bool IsFileLetter(char c) noexcept {
    return c >= 'a' && c <= 'h';
}

constexpr bool IsRankDigit(char c) noexcept {
    return c >= '1' && c <= '8';
}

/// `SquareNone` unless the text is a file letter and a rank digit.
Square TextToSquare(std::string_view text) noexcept {
    if (text.size() != 2 || !IsFileLetter(text[0]) || !IsRankDigit(text[1])) {
        return SquareNone;
    }
    return MakeSquare(text[0] - 'a', text[1] - '1');
}

/// Rook squares by file: upper case on White's home rank, lower case on Black's.
Square CastlingFileToSquare(char letter) noexcept {
    if (letter >= 'A' && letter <= 'H') {
        return MakeSquare(letter - 'A', 0);
    }
    return IsFileLetter(letter) ? MakeSquare(letter - 'a', 7) : SquareNone;
}

std::int32_t NumberOrZero(std::string_view text) {
    return IsNumeric(text) ? ToInteger(text) : 0;
}

/// The undo stack's index before the first move of full move `number`, as if White were to move:
/// the side to move does not enter into it.
std::int32_t PlyOfFullMove(std::int32_t number) noexcept {
    const std::int64_t ply = 2 * std::int64_t{number} - 2;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(ply, 1, std::numeric_limits<std::int32_t>::max()));
}

std::string WriteFenRank(const CPosition& position, int rank) {
    std::string text;
    int empties = 0;
    for (int file = 0; file < 8; ++file) {
        const Piece piece = position.board[MakeSquare(file, rank)];
        if (piece == PieceNone) {
            ++empties;
            continue;
        }
        if (empties != 0) {
            text += std::to_string(empties);
            empties = 0;
        }
        text += PieceToText(piece);
    }
    if (empties != 0) {
        text += std::to_string(empties);
    }
    return text;
}

std::string WriteFenBoard(const CPosition& position) {
    std::string text;
    for (int rank = 7; rank >= 0; --rank) {
        text += WriteFenRank(position, rank);
        if (rank != 0) {
            text += '/';
        }
    }
    return text;
}

char SwapCase(char c) noexcept {
    if (c >= 'a' && c <= 'z') {
        return static_cast<char>(c - 'a' + 'A');
    }
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string SwapCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return SwapCase(c); });
    return text;
}

std::string FlipFenBoard(std::string_view text) {
    std::vector<std::string> rows = Split(text, '/');
    std::reverse(rows.begin(), rows.end());
    return SwapCase(Join(rows, "/"));
}

std::string FlipEnPassant(std::string text) {
    for (char& c : text) {
        if (c == '3') {
            c = '6';
        } else if (c == '6') {
            c = '3';
        }
    }
    return text;
}

}  // namespace

std::string SquareToText(Square square) {
    if (square == SquareNone) {
        return "-";
    }
    return {static_cast<char>('a' + FileOf(square)), static_cast<char>('1' + RankOf(square))};
}

std::string PieceToText(Piece piece) {
    return piece == PieceNone ? std::string() : std::string(1, PieceLetters[piece]);
}

void CPositionText::SetFen(std::string_view text) {
    CPosition& position = *position_;
    position.Clear();
    const std::vector<std::string> fields = Split(text.empty() ? StartFen : text, ' ');
    if (!fields.empty()) {
        SetBoard(fields[0]);
    }
    if (fields.size() > 1) {
        position.sideToMove = fields[1] == "b" ? Black : White;
    }
    if (fields.size() > 2) {
        SetCastling(fields[2]);
    }
    if (fields.size() > 3) {
        position.enPassant = ToByte(TextToSquare(fields[3]));
    }
    if (fields.size() > 4) {
        position.halfmoveClock = NumberOrZero(fields[4]);
    }
    if (fields.size() > 5) {
        position.ply = PlyOfFullMove(NumberOrZero(fields[5]));
    }
    position.SetupDerived();
}

void CPositionText::SetBoard(std::string_view text) {
    int rank = 8;
    for (const std::string& row : Split(text, '/')) {
        rank = std::max(rank - 1, 0);  // rows after the eighth overwrite rank 1
        Square square = MakeSquare(0, rank);
        for (const char c : row) {
            if (IsRankDigit(c)) {
                square = std::min<Square>(square + (c - '0'), SquareNone);
            } else if (const auto piece = PieceLetters.find(c); piece != std::string_view::npos) {
                // A row may run on into the next rank; past h8 there is nothing to write on.
                if (square < SquareNone) {
                    position_->board[square] = static_cast<Piece>(piece);
                    ++square;
                }
            }
        }
    }
}

void CPositionText::SetCastling(std::string_view text) {
    if (text == "-") {
        return;
    }
    for (const char c : text) {
        if (const auto index = CastlingLetters.find(c); index != std::string_view::npos) {
            position_->AddCastlingByLetter(static_cast<CastlingIndex>(index), c);
        } else {
            position_->AddCastlingRook(CastlingFileToSquare(c), c);
        }
    }
}

std::string CPositionText::GetFen() const {
    const CPosition& position = *position_;
    std::string castling;
    for (unsigned index = 0; index < CastlingRightsCount; ++index) {
        if (position.HasRight(index)) {
            castling += position.castling[index].letter;
        }
    }
    return Join({WriteFenBoard(position), position.sideToMove == White ? "w" : "b",
                 castling.empty() ? "-" : castling, SquareToText(position.enPassant),
                 std::to_string(position.halfmoveClock), std::to_string(position.ply / 2 + 1)},
                " ");
}

std::string CPositionText::FlipFen(std::string_view text) {
    std::vector<std::string> fields = Split(text, ' ');
    fields.resize(std::min<std::size_t>(fields.size(), 6));
    if (!fields.empty()) {
        fields[0] = FlipFenBoard(fields[0]);
    }
    if (fields.size() > 1) {
        fields[1].assign(1, fields[1] == "b" ? 'w' : 'b');
    }
    if (fields.size() > 2) {
        fields[2] = SwapCase(fields[2]);
    }
    if (fields.size() > 3) {
        fields[3] = FlipEnPassant(fields[3]);
    }
    return Join(fields, " ");
}

std::string CPositionText::MoveToText(Move move, const CPosition& position,
                                      CastlingNotation castling) {
    const std::string from = SquareToText(move.From());
    if (move.Kind() == MoveKind::Castling && castling != CastlingNotation::KingTarget &&
        position.HasRight(move.Index())) {
        if (castling == CastlingNotation::KingTakesRook) {
            return from + SquareToText(position.castling[move.Index()].rookFrom);
        }
        const bool kingSide = move.Index() == WhiteKingSide || move.Index() == BlackKingSide;
        return std::string(kingSide ? ShortCastlingName : LongCastlingName);
    }
    std::string text = from + SquareToText(move.To());
    if (move.Kind() == MoveKind::Promotion) {
        text += PromotionLetters[move.Index()];
    }
    return text;
}

bool CPositionText::IsMoveTextForm(std::string_view text) noexcept {
    if (text == ShortCastlingName || text == LongCastlingName) {
        return true;
    }
    if (text.size() != 4 && text.size() != 5) {
        return false;
    }
    if (TextToSquare(text.substr(0, 2)) == SquareNone ||
        TextToSquare(text.substr(2, 2)) == SquareNone) {
        return false;
    }
    return text.size() == 4 || PromotionLetters.find(text[4]) != std::string_view::npos;
}

Move CPositionText::TextToMove(std::string_view text, const CPosition& position, bool chess960) {
    if (!IsMoveTextForm(text)) {
        return NoMove;
    }
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    for (const Move move : list) {
        if (chess960) {
            if (text == MoveToText(move, position, CastlingNotation::KingTakesRook) ||
                text == MoveToText(move, position, CastlingNotation::Name)) {
                return move;
            }
        } else if (text == MoveToText(move, position, CastlingNotation::KingTarget)) {
            return move;
        }
    }
    return NoMove;
}

}  // namespace brenquil
