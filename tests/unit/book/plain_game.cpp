#include "plain_game.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>

namespace brenquil::test {

namespace {

constexpr std::string_view Results[] = {"1-0", "0-1", "1/2-1/2", "*"};

bool IsWhiteMan(char man) {
    return man >= 'A' && man <= 'Z';
}

int File(int square) {
    return square % 8;
}

int Rank(int square) {
    return square / 8;
}

std::string SquareName(int square) {
    return {static_cast<char>('a' + File(square)), static_cast<char>('1' + Rank(square))};
}

bool IsFileLetter(char c) {
    return c >= 'a' && c <= 'h';
}

bool IsRankDigit(char c) {
    return c >= '1' && c <= '8';
}

}  // namespace

std::array<char, 64> CPlainGame::StartBoard() {
    constexpr std::string_view Home = "RNBQKBNR";
    std::array<char, 64> board;
    board.fill('.');
    for (std::size_t file = 0; file < 8; ++file) {
        board[file] = Home[file];
        board[8 + file] = 'P';
        board[48 + file] = 'p';
        board[56 + file] = static_cast<char>(std::tolower(Home[file]));
    }
    return board;
}

bool CPlainGame::IsOwn(int square) const {
    const char man = board_[static_cast<std::size_t>(square)];
    return man != '.' && IsWhiteMan(man) == whiteToMove_;
}

/// Can the man go from one square to the other, the own king's safety left aside.
bool CPlainGame::Reaches(int from, int to) const {
    const char man = board_[static_cast<std::size_t>(from)];
    const char target = board_[static_cast<std::size_t>(to)];
    const int files = File(to) - File(from);
    const int ranks = Rank(to) - Rank(from);
    const int wide = std::abs(files);
    const int high = std::abs(ranks);
    if (from == to || man == '.') {
        return false;
    }
    const bool isRook = files == 0 || ranks == 0;
    const bool isBishop = wide == high;
    switch (std::tolower(man)) {
    case 'p': {
        const int up = IsWhiteMan(man) ? 1 : -1;
        if (files == 0) {
            const auto middle = static_cast<std::size_t>(from + 8 * up);
            const bool isHome = Rank(from) == (up == 1 ? 1 : 6);
            return target == '.' &&
                   (ranks == up || (isHome && ranks == 2 * up && board_[middle] == '.'));
        }
        const bool isEnPassant = target == '.' && doubleStep_ >= 0 && to == doubleStep_ + 8 * up;
        return wide == 1 && ranks == up && (target != '.' || isEnPassant);
    }
    case 'n': return wide * high == 2;
    case 'k': return wide <= 1 && high <= 1;
    case 'r':
        if (!isRook) {
            return false;
        }
        break;
    case 'b':
        if (!isBishop) {
            return false;
        }
        break;
    default:
        if (!isRook && !isBishop) {
            return false;
        }
    }
    const int step = (ranks > 0) * 8 - (ranks < 0) * 8 + (files > 0) - (files < 0);
    for (int square = from + step; square != to; square += step) {
        if (board_[static_cast<std::size_t>(square)] != '.') {
            return false;
        }
    }
    return true;
}

bool CPlainGame::IsAttacked(int square, bool byWhite) const {
    CPlainGame copy = *this;
    // Something to take, so that pawns attack the square.
    copy.board_[static_cast<std::size_t>(square)] = byWhite ? 'q' : 'Q';
    for (int from = 0; from < 64; ++from) {
        const char man = board_[static_cast<std::size_t>(from)];
        if (man != '.' && IsWhiteMan(man) == byWhite && copy.Reaches(from, square)) {
            return true;
        }
    }
    return false;
}

bool CPlainGame::LeavesKingSafe(const Step& step) const {
    CPlainGame copy = *this;
    copy.Make(step);
    const auto king = std::find(copy.board_.begin(), copy.board_.end(), whiteToMove_ ? 'K' : 'k');
    return !copy.IsAttacked(static_cast<int>(king - copy.board_.begin()), !whiteToMove_);
}

void CPlainGame::Make(const Step& step) {
    const auto from = static_cast<std::size_t>(step.from);
    const auto to = static_cast<std::size_t>(step.to);
    const char man = board_[from];
    const bool isPawn = std::tolower(man) == 'p';
    if (isPawn && File(step.from) != File(step.to) && board_[to] == '.') {
        board_[static_cast<std::size_t>(doubleStep_)] = '.';
    }
    board_[to] = step.promotion != 0 ? step.promotion : man;
    board_[from] = '.';
    doubleStep_ = isPawn && std::abs(step.to - step.from) == 16 ? step.to : -1;
    constexpr int Corners[] = {7, 0, 63, 56};
    for (std::size_t right = 0; right < 4; ++right) {
        const int king = right < 2 ? 4 : 60;
        for (const int square : {step.from, step.to}) {
            rights_[right] = rights_[right] && square != king && square != Corners[right];
        }
    }
    whiteToMove_ = !whiteToMove_;
}

std::string CPlainGame::PlayCastling(bool kingSide) {
    const int king = whiteToMove_ ? 4 : 60;
    const std::size_t right = (whiteToMove_ ? 0U : 2U) + (kingSide ? 0U : 1U);
    const int way = kingSide ? 1 : -1;
    const int corner = kingSide ? king + 3 : king - 4;
    if (!rights_[right]) {
        return {};
    }
    for (int square = king + way; square != corner; square += way) {
        if (board_[static_cast<std::size_t>(square)] != '.') {
            return {};
        }
    }
    for (int i = 0; i < 3; ++i) {
        if (IsAttacked(king + i * way, !whiteToMove_)) {
            return {};
        }
    }
    const bool isWhite = whiteToMove_;
    Make({king, king + 2 * way, 0});
    board_[static_cast<std::size_t>(corner)] = '.';
    board_[static_cast<std::size_t>(king + way)] = isWhite ? 'R' : 'r';
    return SquareName(king) + SquareName(king + 2 * way);
}

std::string CPlainGame::Play(std::string_view san) {
    std::string text(san);
    while (!text.empty() && std::string_view("+#!?").find(text.back()) != std::string_view::npos) {
        text.pop_back();
    }
    if (text == "O-O" || text == "O-O-O" || text == "0-0" || text == "0-0-0") {
        return PlayCastling(text.size() == 3);
    }

    char promotion = 0;
    if (text.size() > 2 && std::string_view("QRBN").find(text.back()) != std::string_view::npos) {
        promotion = text.back();
        text.pop_back();
        if (text.back() == '=') {
            text.pop_back();
        }
    }
    std::erase(text, 'x');
    std::erase(text, '-');
    char man = 'P';
    if (!text.empty() && std::string_view("KQRBN").find(text.front()) != std::string_view::npos) {
        man = text.front();
        text.erase(0, 1);
    }
    if (text.size() < 2 || !IsFileLetter(text[text.size() - 2]) || !IsRankDigit(text.back())) {
        return {};
    }
    const int to = (text.back() - '1') * 8 + text[text.size() - 2] - 'a';
    const std::string origin = text.substr(0, text.size() - 2);
    const auto cased = [this](char letter) {
        return static_cast<char>(whiteToMove_ ? letter : std::tolower(letter));
    };
    const char newMan = promotion == 0 ? promotion : cased(promotion);

    std::vector<int> found;
    for (int from = 0; from < 64; ++from) {
        const std::string name = SquareName(from);
        const bool fits = std::all_of(origin.begin(), origin.end(), [&name](char c) {
            return name.find(c) != std::string::npos;
        });
        if (fits && board_[static_cast<std::size_t>(from)] == cased(man) && !IsOwn(to) &&
            Reaches(from, to) && LeavesKingSafe({from, to, newMan})) {
            found.push_back(from);
        }
    }
    const bool isLast = Rank(to) == (whiteToMove_ ? 7 : 0);
    if (found.size() != 1 || (promotion != 0) != (man == 'P' && isLast)) {
        return {};
    }
    Make({found[0], to, newMan});
    std::string move = SquareName(found[0]) + SquareName(to);
    if (promotion != 0) {
        move += static_cast<char>(std::tolower(promotion));
    }
    return move;
}

std::uint64_t CPlainGame::Key(const BookNumbers& numbers) const {
    constexpr std::string_view Kinds = "pPnNbBrRqQkK";
    std::uint64_t key = 0;
    for (std::size_t square = 0; square < 64; ++square) {
        if (board_[square] != '.') {
            key ^= numbers[64 * Kinds.find(board_[square]) + square];
        }
    }
    for (std::size_t right = 0; right < 4; ++right) {
        if (rights_[right]) {
            key ^= numbers[768 + right];
        }
    }
    if (doubleStep_ >= 0) {
        const char taker = whiteToMove_ ? 'P' : 'p';
        const int file = File(doubleStep_);
        const auto square = static_cast<std::size_t>(doubleStep_);
        if ((file > 0 && board_[square - 1] == taker) ||
            (file < 7 && board_[square + 1] == taker)) {
            key ^= numbers[772 + static_cast<std::size_t>(file)];
        }
    }
    return whiteToMove_ ? key ^ numbers[780] : key;
}

std::vector<std::vector<std::string>> ReadPgn(std::string_view text) {
    std::vector<std::vector<std::string>> games;
    std::vector<std::string> moves;
    bool isFromStart = true;
    int braces = 0;
    int variations = 0;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        if (braces == 0 && line.starts_with('[')) {
            isFromStart = isFromStart && !line.starts_with("[FEN") && !line.starts_with("[SetUp");
            continue;
        }
        std::string plain;
        for (const char c : line) {
            if (c == '}') {
                braces = 0;
            } else if (c == '{' || braces != 0) {
                braces = 1;
            } else if (c == ';') {
                break;
            } else if (c == '(' || c == ')') {
                variations += c == '(' ? 1 : -1;
            } else if (variations == 0) {
                plain += c == '\r' ? ' ' : c;
                continue;
            }
            plain += ' ';
        }
        std::istringstream words(plain);
        for (std::string word; words >> word;) {
            if (std::find(std::begin(Results), std::end(Results), word) != std::end(Results)) {
                if (isFromStart) {
                    games.push_back(moves);
                }
                moves.clear();
                isFromStart = true;
                continue;
            }
            // "12." and "12...", also with the move right behind.
            const bool isCastling = word.starts_with("0-0");
            const std::size_t start = isCastling ? 0 : word.find_first_not_of("0123456789.");
            if (start != std::string::npos && word[start] != '$') {
                moves.push_back(word.substr(start));
            }
        }
    }
    return games;
}

}  // namespace brenquil::test
