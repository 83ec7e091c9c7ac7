#include "plain_game.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace brenquil::test {

namespace {

constexpr std::string_view Results[] = {"1-0", "0-1", "1/2-1/2", "*"};

std::string SquareName(int square) {
    return {static_cast<char>('a' + square % 8), static_cast<char>('1' + square / 8)};
}

/// A move of the slow rules, taken apart.
struct PlainMove {
    int from;
    int to;
    bool isCastling;
    char promotion;  ///< 'Q', 'R', 'B' or 'N'; 0 for none

    explicit PlainMove(std::uint32_t word)
        : from(static_cast<int>(word & 63U)),
          to(static_cast<int>(word >> 6U & 63U)),
          isCastling((word >> 12U & 3U) == 1),
          promotion((word >> 12U & 3U) == 3 ? "RBNQ"[word >> 14U & 3U] : '\0') {}
};

/// What a move in standard algebraic notation says.
struct SanMove {
    char man = 'P';
    char promotion = 0;
    std::string origin;  ///< what it says of the square that is left
    std::string target;  ///< empty for castling
    bool isKingSide = false;

    explicit SanMove(std::string text) {
        while (!text.empty() &&
               std::string_view("+#!?").find(text.back()) != std::string_view::npos) {
            text.pop_back();
        }
        if (text == "O-O" || text == "O-O-O" || text == "0-0" || text == "0-0-0") {
            man = 'K';
            isKingSide = text.size() == 3;
            return;
        }
        if (text.size() > 2 &&
            std::string_view("QRBN").find(text.back()) != std::string_view::npos) {
            promotion = text.back();
            text.pop_back();
            if (text.back() == '=') {
                text.pop_back();
            }
        }
        std::erase(text, 'x');
        std::erase(text, '-');
        if (!text.empty() &&
            std::string_view("KQRBN").find(text.front()) != std::string_view::npos) {
            man = text.front();
            text.erase(0, 1);
        }
        const std::size_t behind = text.size() - std::min<std::size_t>(2, text.size());
        origin = text.substr(0, behind);
        target = text.substr(behind);
        if (target.empty()) {
            target = "?";
        }
    }

    [[nodiscard]] bool Fits(const PlainMove& move, char mover) const {
        if (target.empty()) {
            return move.isCastling && (move.to % 8 == 6) == isKingSide;
        }
        const std::string from = SquareName(move.from);
        return !move.isCastling && mover == man && SquareName(move.to) == target &&
               move.promotion == promotion &&
               std::all_of(origin.begin(), origin.end(),
                           [&from](char c) { return from.find(c) != std::string::npos; });
    }
};

}  // namespace

bool CPlainGame::IsLegal(std::uint32_t move) const {
    SlowPosition next = position_;
    return next.Make(move);
}

std::string CPlainGame::Play(std::string_view san) {
    const SanMove wanted{std::string(san)};
    std::vector<std::uint32_t> found;
    for (const std::uint32_t word : position_.Moves(true, true)) {
        const PlainMove move(word);
        const int man = position_.board[static_cast<std::size_t>(move.from)] / 2;
        if (wanted.Fits(move, "PNBRQK"[man]) && IsLegal(word)) {
            found.push_back(word);
        }
    }
    if (found.size() != 1) {
        return {};
    }
    const PlainMove move(found.front());
    (void)position_.Make(found.front());
    std::string text = SquareName(move.from) + SquareName(move.to);
    if (move.promotion != 0) {
        text += static_cast<char>(std::tolower(move.promotion));
    }
    return text;
}

std::uint64_t CPlainGame::Key(const BookNumbers& numbers) const {
    std::uint64_t key = 0;
    for (std::size_t square = 0; square < 64; ++square) {
        const int man = position_.board[square];
        if (man != PieceNone) {
            // The format has pawns, knights, bishops, rooks, queens and kings, Black's first.
            const std::size_t kind =
                static_cast<std::size_t>(man / 2) * 2 + (man % 2 == White ? 1 : 0);
            key ^= numbers[64 * kind + square];
        }
    }
    for (std::size_t right = 0; right < 4; ++right) {
        if (position_.rights[right].held) {
            key ^= numbers[768 + right];
        }
    }
    if (position_.enPassant != SquareNone) {
        key ^= numbers[772 + static_cast<std::size_t>(position_.enPassant % 8)];
    }
    return position_.side == White ? key ^ numbers[780] : key;
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
            // "12." and "12...", also with the move right after.
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
