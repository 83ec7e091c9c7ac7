#include "interface/uci/strict_go.h"

#include "text/text.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace brenquil {

namespace {

enum class Token : std::uint8_t {
    Clock,   ///< a time, which is not below 0
    Number,  ///< a count, which is not below 1
};

struct StrictNumber {
    std::string_view word;
    Token kind;
    bool isLimit;
    SearchNumber field;
};

constexpr std::array StrictNumbers{
    StrictNumber{"wtime", Token::Clock, true, &SearchLimits::wtime},
    StrictNumber{"btime", Token::Clock, true, &SearchLimits::btime},
    StrictNumber{"winc", Token::Clock, false, &SearchLimits::winc},
    StrictNumber{"binc", Token::Clock, false, &SearchLimits::binc},
    StrictNumber{"movestogo", Token::Number, false, &SearchLimits::movestogo},
    StrictNumber{"depth", Token::Number, true, &SearchLimits::depth},
    StrictNumber{"nodes", Token::Number, true, &SearchLimits::nodes},
    StrictNumber{"mate", Token::Number, true, &SearchLimits::mate},
    StrictNumber{"movetime", Token::Clock, true, &SearchLimits::movetime},
};

/// Deeper than any search goes, while twice as many plies still fit the type.
constexpr int MostMovesToMate = 1000;

bool IsWholeNumber(std::string_view text) noexcept {
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

const StrictNumber* FindStrictNumber(std::string_view word) noexcept {
    const auto* const found = std::find_if(StrictNumbers.begin(), StrictNumbers.end(),
                                           [word](const auto& each) { return each.word == word; });
    return found == StrictNumbers.end() ? nullptr : found;
}

bool IsKnown(std::string_view word) noexcept {
    constexpr std::array<std::string_view, 4> Others = {"perft", "ponder", "infinite",
                                                        "searchmoves"};
    return FindStrictNumber(word) != nullptr ||
           std::find(Others.begin(), Others.end(), word) != Others.end();
}

/// One pass over the words of a line.
class CReader {
public:
    CReader(std::string_view line, const std::function<Move(std::string_view)>& textToMove)
        : words_(Split(line, ' ')), textToMove_(textToMove) {}

    StrictGo Read() {
        for (next_ = 1; next_ < words_.size();) {
            ReadToken(words_[next_++]);
        }
        SearchLimits& limits = result_.limits;
        if (!hasLimit_ && words_.size() > 1 && !limits.ponder && limits.searchmoves.count == 0 &&
            !result_.perftDepth) {
            limits.depth = 1;
        }
        return std::move(result_);
    }

private:
    void ReadToken(const std::string& text) {
        const std::string word = ToLower(text);
        if (const StrictNumber* const token = FindStrictNumber(word)) {
            if (const auto number = TakeNumber(word)) {
                result_.limits.*token->field =
                    std::max(*number, token->kind == Token::Clock ? 0 : 1);
                hasLimit_ = hasLimit_ || token->isLimit;
            }
        } else if (word == "perft") {
            if (const auto number = TakeNumber(word)) {
                result_.perftDepth = std::max(*number, 0);
            }
        } else if (word == "ponder") {
            result_.limits.ponder = true;
        } else if (word == "infinite") {
            result_.limits.infinite = true;
            hasLimit_ = true;
        } else if (word == "searchmoves") {
            ReadMoves();
        } else {
            result_.remarks.push_back("unknown word in go: " + text);
        }
    }

    std::optional<int> TakeNumber(const std::string& word) {
        if (next_ < words_.size() && IsWholeNumber(words_[next_])) {
            return ToInteger(words_[next_++]);
        }
        result_.remarks.push_back("no number in go after: " + word);
        return std::nullopt;
    }

    /// Up to the next word that `go` knows.
    void ReadMoves() {
        for (; next_ < words_.size() && !IsKnown(ToLower(words_[next_])); ++next_) {
            const Move move = textToMove_(words_[next_]);
            if (move.IsNone()) {
                result_.remarks.push_back("no legal move in go: " + words_[next_]);
            } else {
                result_.limits.searchmoves.Append(move);
            }
        }
    }

    const std::vector<std::string> words_;
    const std::function<Move(std::string_view)>& textToMove_;
    std::size_t next_ = 0;
    bool hasLimit_ = false;
    StrictGo result_;
};

void TakeOff(std::int32_t overhead, std::int32_t& clock) noexcept {
    if (clock != ClockNotGiven) {
        clock = std::max(clock - overhead, 0);
    }
}

}  // namespace

StrictGo ParseStrictGo(std::string_view line,
                       const std::function<Move(std::string_view)>& textToMove, int moveOverhead) {
    assert(moveOverhead >= 0);
    StrictGo go = CReader(line, textToMove).Read();
    SearchLimits& limits = go.limits;
    // Whoever gives one clock means it for both sides.
    if (limits.wtime == ClockNotGiven) {
        limits.wtime = limits.btime;
    } else if (limits.btime == ClockNotGiven) {
        limits.btime = limits.wtime;
    }
    // The mating side makes one move more than the other, and a ply is left to see the mate.
    limits.mate = 2 * std::min(limits.mate, MostMovesToMate);
    for (std::int32_t* clock : {&limits.wtime, &limits.btime, &limits.movetime}) {
        TakeOff(moveOverhead, *clock);
    }
    return go;
}

}  // namespace brenquil
