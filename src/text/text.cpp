#include "text/text.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cstddef>
#include <limits>

namespace brenquil {

namespace {

constexpr char Blank = ' ';
constexpr std::string_view NumericCharacters = "-.0123456789";

bool IsWhiteSpace(char character) noexcept {
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

/// The text as a whole word: with a blank before and after it, in small letters.
std::string AsWord(std::string_view text) {
    std::string word(1, Blank);
    word += text;
    word += Blank;
    return ToLower(word);
}

}  // namespace

std::string ToLower(std::string_view text) {
    std::string result(text);
    // By way of unsigned char: tolower is undefined for negative arguments other than EOF.
    std::transform(result.begin(), result.end(), result.begin(), [](char character) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    });
    return result;
}

std::string TrimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(Blank);
    if (first == std::string_view::npos) {
        return {};
    }
    const std::size_t last = text.find_last_not_of(Blank);
    return std::string(text.substr(first, last - first + 1));
}

std::vector<std::string> Split(std::string_view text, char delimiter) {
    std::vector<std::string> pieces;
    std::size_t start = text.find_first_not_of(delimiter);
    while (start != std::string_view::npos) {
        const std::size_t end = std::min(text.find(delimiter, start), text.size());
        pieces.emplace_back(text.substr(start, end - start));
        start = text.find_first_not_of(delimiter, end);
    }
    return pieces;
}

std::string Join(const std::vector<std::string>& items, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            result += separator;
        }
        result += items[i];
    }
    return result;
}

bool HasWord(std::string_view line, std::string_view word) {
    return AsWord(line).find(AsWord(word)) != std::string::npos;
}

std::string ValueOf(std::string_view line, std::string_view key, std::string_view terminators) {
    const std::string lowerLine = ToLower(line);
    assert(!key.empty());
    const std::size_t keyStart = lowerLine.find(ToLower(key));
    if (keyStart == std::string::npos) {
        return {};
    }

    const std::size_t start = keyStart + key.size();
    std::size_t end = line.size();
    for (const std::string& terminator : Split(terminators, Blank)) {
        // The first occurrence in the whole line, on purpose not the first one after the key.
        const std::size_t found = lowerLine.find(ToLower(terminator));
        if (found != std::string::npos && found > start) {
            end = std::min(end, found);
        }
    }
    return TrimBlanks(line.substr(start, end - start));
}

bool IsNumeric(std::string_view text) noexcept {
    return !text.empty() && text.find_first_not_of(NumericCharacters) == std::string_view::npos;
}

bool ParseBool(std::string_view text, bool oldValue) noexcept {
    if (text == "true" || text == "1") {
        return true;
    }
    if (text == "false" || text == "0") {
        return false;
    }
    return oldValue;
}

std::int32_t ToInteger(std::string_view text) noexcept {
    std::size_t i = 0;
    while (i < text.size() && IsWhiteSpace(text[i])) {
        ++i;
    }

    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
        negative = text[i++] == '-';
    }

    // One above the largest positive result: enough to tell that either limit has been reached.
    constexpr std::int64_t Ceiling = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
    std::int64_t magnitude = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        magnitude = std::min(magnitude * 10 + (text[i] - '0'), Ceiling);
    }

    const std::int64_t value = negative ? -magnitude : std::min(magnitude, Ceiling - 1);
    return static_cast<std::int32_t>(value);
}

}  // namespace brenquil
