#include "interface/uci/go_parser.h"

#include "board/position_text.h"
#include "text/text.h"

#include <array>
#include <string>
#include <vector>

namespace brenquil {

namespace {

struct NumericToken {
    std::string_view token;
    SearchNumber field;
};

constexpr std::array NumericTokens{
    NumericToken{"wtime", &SearchLimits::wtime},
    NumericToken{"btime", &SearchLimits::btime},
    NumericToken{"winc", &SearchLimits::winc},
    NumericToken{"binc", &SearchLimits::binc},
    NumericToken{"movestogo", &SearchLimits::movestogo},
    NumericToken{"depth", &SearchLimits::depth},
    NumericToken{"nodes", &SearchLimits::nodes},
    NumericToken{"mate", &SearchLimits::mate},
    NumericToken{"movetime", &SearchLimits::movetime},
};

/// Reads the number after a token. The whole-word test only says that the token is there; the value
/// is taken from after the first place where its letters stand, even if they end another word.
void ReadNumber(std::string_view line, std::string_view token, int& field) {
    if (!HasWord(line, token)) {
        return;
    }
    const std::vector<std::string> words = Split(ValueOf(line, token), ' ');
    if (!words.empty() && IsNumeric(words.front())) {
        field = ToInteger(words.front());
    }
}

void ReadSearchMoves(std::string_view line, const CPosition& position, bool chess960,
                     MoveList& list) {
    for (const std::string& word : Split(ValueOf(line, "searchmoves"), ' ')) {
        if (list.count == MoveList::Capacity) {
            return;
        }
        list.Append(CPositionText::TextToMove(word, position, chess960));
    }
}

}  // namespace

SearchLimits ParseGo(std::string_view line, const CPosition& position, bool chess960) {
    SearchLimits limits;
    limits.ponder = HasWord(line, "ponder");
    limits.infinite = HasWord(line, "infinite");
    for (const auto& [token, field] : NumericTokens) {
        ReadNumber(line, token, limits.*field);
    }
    ReadSearchMoves(line, position, chess960, limits.searchmoves);
    return limits;
}

}  // namespace brenquil
