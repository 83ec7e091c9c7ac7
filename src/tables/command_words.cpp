#include "tables/command_words.h"

#include <algorithm>
#include <iterator>

namespace brenquil {

namespace {

constexpr const char* EndOfOptions = "--";

/// The number that a text is; 0 if it is none, or too long for one that is meant.
std::size_t NumberOf(const std::string& text) {
    constexpr std::size_t MostDigits = 7;
    const bool isNumber =
        !text.empty() && text.size() <= MostDigits &&
        std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    return isNumber ? std::stoul(text) : 0;
}

}  // namespace

CCommandWords::CCommandWords(std::vector<std::string> words) : words_(std::move(words)) {
    const auto end = std::find(words_.begin(), words_.end(), EndOfOptions);
    if (end != words_.end()) {
        behind_.assign(end + 1, words_.end());
        words_.erase(end, words_.end());
    }
}

bool CCommandWords::Flag(const std::string& name) {
    return std::erase(words_, name) != 0;
}

bool CCommandWords::TakeValue(const std::string& name, std::string& value) {
    for (auto word = words_.begin(); word != words_.end(); ++word) {
        if (word->starts_with(name + "=")) {
            value = word->substr(name.size() + 1);
        } else if (*word == name) {
            value.clear();
            if (word + 1 != words_.end()) {
                word = words_.erase(word);
                value = *word;
            }
        } else {
            continue;
        }
        words_.erase(word);
        return true;
    }
    return false;
}

std::size_t CCommandWords::Number(const std::string& name, std::size_t otherwise,
                                  std::size_t most) {
    std::string text;
    if (!TakeValue(name, text)) {
        return otherwise;
    }
    const std::size_t number = NumberOf(text);
    if (number == 0 || number > most) {
        throw CMisuse(name + " takes a number from 1 to " + std::to_string(most));
    }
    return number;
}

std::uint64_t CCommandWords::Size(const std::string& name, std::uint64_t otherwise) {
    constexpr unsigned MebibyteBits = 20;
    constexpr unsigned GibibyteBits = 30;
    constexpr std::uint64_t Least = std::uint64_t{16} << MebibyteBits;
    constexpr std::uint64_t Most = std::uint64_t{4096} << GibibyteBits;
    std::string text;
    if (!TakeValue(name, text)) {
        return otherwise;
    }
    unsigned bits = GibibyteBits;
    if (!text.empty() && std::string("GgMm").find(text.back()) != std::string::npos) {
        bits = text.back() == 'M' || text.back() == 'm' ? MebibyteBits : GibibyteBits;
        text.pop_back();
    }
    const std::uint64_t size = std::uint64_t{NumberOf(text)} << bits;
    if (size < Least || size > Most) {
        throw CMisuse(name +
                      " takes gibibytes, such as 4, or mebibytes, such as 512M; 16M to 4096");
    }
    return size;
}

const std::vector<std::string>& CCommandWords::Rest() {
    for (const std::string& word : words_) {
        if (word.size() > 1 && word.front() == '-') {
            throw CMisuse("unknown option " + word);
        }
    }
    std::move(behind_.begin(), behind_.end(), std::back_inserter(words_));
    behind_.clear();
    return words_;
}

}  // namespace brenquil
