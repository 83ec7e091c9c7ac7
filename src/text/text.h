// Text helpers shared by the command loop, the options and the program's own files.
//
// All of them work on byte strings: any byte may occur, zero bytes included, and nothing here knows
// of encodings. "Blank" is the character 0x20 alone; a tab is an ordinary character. Letter case is
// folded byte by byte through the C library's tolower, which in the locale that the program runs in
// (the "C" locale, never changed) touches A to Z only.
//
// Every helper is a pure function that takes views and returns fresh strings. They allocate freely:
// they run once per command line, never inside a search.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// The text with every byte folded to its small letter.
[[nodiscard]] std::string ToLower(std::string_view text);

/// The text without leading and trailing blanks.
[[nodiscard]] std::string TrimBlanks(std::string_view text);

/// Cuts at each delimiter and drops empty pieces, so a run of delimiters counts as one.
[[nodiscard]] std::vector<std::string> Split(std::string_view text, char delimiter);

/// The items with the separator between them, and only there.
[[nodiscard]] std::string Join(const std::vector<std::string>& items, std::string_view separator);

/// True when the line holds the word, bounded by blanks or the line's ends, in any letter case.
[[nodiscard]] bool HasWord(std::string_view line, std::string_view word);

/// The value that follows a key in a command line.
///
/// The key is found as a plain substring at its first occurrence, in any letter case; it need not
/// be a word of its own. The value runs from there to the nearest terminator, or to the end of the
/// line, and comes back trimmed, in the letter case it was typed in. A line without the key gives
/// the empty string. Of each terminator only the first occurrence in the whole line is looked at:
/// if that one stands before the value, later ones do not end the value.
///
/// @param terminators  the ending words in one string, separated by blanks; empty for none
[[nodiscard]] std::string ValueOf(std::string_view line, std::string_view key,
                                  std::string_view terminators = {});

/// True when the text is not empty and holds nothing but the characters of "-.0123456789".
/// "1-2" and "." pass: the test keeps letters out and promises no more than that.
[[nodiscard]] bool IsNumeric(std::string_view text) noexcept;

/// "true" and "1" give true, "false" and "0" give false, any other text gives the old value.
[[nodiscard]] bool ParseBool(std::string_view text, bool oldValue) noexcept;

/// The leading integer of the text, as the C library's atoi reads it: leading white space, one
/// sign, digits up to the first other character; 0 when there is no digit. Where atoi is undefined,
/// beyond 32 bits, the result stays at the nearer limit.
[[nodiscard]] std::int32_t ToInteger(std::string_view text) noexcept;

}  // namespace brenquil
