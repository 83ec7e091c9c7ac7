#include "text/option.h"

#include "text/text.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace brenquil {

namespace {

/// Column in which the remark of an ini line begins, unless the setting itself is longer.
constexpr std::size_t IniRemarkColumn = 50;

COption* FindByName(const std::vector<COption*>& options, std::string_view name) {
    // Either name counts in either list. An absent name is the empty string, so the empty name
    // finds the first option that lacks one of its two names; this is kept.
    const auto found = std::find_if(options.begin(), options.end(), [name](const COption* option) {
        return option->uciName == name || option->iniName == name;
    });
    return found == options.end() ? nullptr : *found;
}

}  // namespace

COption::COption(COptionGroup* group, std::string_view typeWord, const OptionNames& names)
    : type(typeWord), uciName(names.uci), iniName(names.ini) {
    if (group != nullptr) {
        group->Enter(*this);
    }
}

void COption::SetValue(const std::string& text) {
    if (text == value) {
        return;
    }
    value = text;
    Apply(value);
    if (onChange) {
        onChange(value);
    }
}

std::string COption::UciLine() const {
    assert(!uciName.empty());
    return "option name " + uciName + " type " + std::string(type) + UciDefault() + UciLimits();
}

std::string COption::IniLine() const {
    assert(!iniName.empty());
    const std::string setting = iniName + "=" + value;
    const std::string limits = IniLimits();
    if (limits.empty()) {
        return setting;
    }
    const std::size_t padding = IniRemarkColumn - std::min(IniRemarkColumn, setting.size());
    return setting + std::string(padding, ' ') + "# [" + limits + "]";
}

COptionCheck::COptionCheck(COptionGroup* group, const OptionNames& names, bool defaultValue)
    : COption(group, "check", names), enabled(defaultValue) {
    value = defaultValue ? "true" : "false";
}

void COptionCheck::Apply(const std::string& text) {
    enabled = ParseBool(text, enabled);
}

std::optional<std::string> COptionCheck::Fitting(const std::string& text) const {
    const std::string word = ToLower(text);
    if (ParseBool(word, true) != ParseBool(word, false)) {
        return std::nullopt;
    }
    return ParseBool(word, false) ? "true" : "false";
}

COptionSpin::COptionSpin(COptionGroup* group, const OptionNames& names, std::int32_t defaultValue,
                         std::int32_t minimum, std::int32_t maximum)
    : COption(group, "spin", names),
      min(minimum),
      max(maximum),
      number(defaultValue),
      bounded_(defaultValue) {
    assert(minimum <= defaultValue && defaultValue <= maximum);
    value = std::to_string(defaultValue);
}

void COptionSpin::Apply(const std::string& text) {
    if (IsNumeric(text)) {
        number = ToInteger(text);
        bounded_ = std::clamp(number.Load(), -ArithmeticLimit, ArithmeticLimit);
    }
}

std::optional<std::string> COptionSpin::Fitting(const std::string& text) const {
    if (!IsNumeric(text)) {
        return std::nullopt;
    }
    return std::to_string(std::clamp(ToInteger(text), min, max));
}

std::string COptionSpin::UciLimits() const {
    return " min " + std::to_string(min) + " max " + std::to_string(max);
}

std::string COptionSpin::IniLimits() const {
    return std::to_string(min) + " : " + std::to_string(max);
}

COptionString::COptionString(COptionGroup* group, const OptionNames& names,
                             std::string_view defaultValue)
    : COption(group, "string", names), text(defaultValue) {
    value = text;
}

void COptionString::Apply(const std::string& newText) {
    text = newText;
}

COptionPath::COptionPath(COptionGroup* group, const OptionNames& names,
                         std::string_view defaultValue)
    : COption(group, "string", names), text(defaultValue) {
    value = text;
}

void COptionPath::Apply(const std::string& newText) {
    text = newText;
}

COptionCombo::COptionCombo(COptionGroup* group, const OptionNames& names,
                           std::string_view defaultValue, std::vector<std::string> words)
    : COption(group, "combo", names), vars(std::move(words)) {
    value = defaultValue;
    assert(std::find(vars.begin(), vars.end(), value) != vars.end());
    Apply(value);
}

void COptionCombo::Apply(const std::string& newText) {
    text = newText;
    const auto found = std::find(vars.begin(), vars.end(), newText);
    if (found != vars.end()) {
        choice = static_cast<std::int32_t>(found - vars.begin());
    }
}

std::optional<std::string> COptionCombo::Fitting(const std::string& newText) const {
    const std::string wanted = ToLower(newText);
    const auto found = std::find_if(vars.begin(), vars.end(), [&wanted](const std::string& word) {
        return ToLower(word) == wanted;
    });
    return found == vars.end() ? std::nullopt : std::optional(*found);
}

std::string COptionCombo::UciLimits() const {
    return " var " + Join(vars, " var ");
}

std::string COptionCombo::IniLimits() const {
    return Join(vars, ", ");
}

namespace {

/// What a button that is not pressed holds: no line of input can bring it, so that each text counts
/// as a change.
constexpr const char* NotPressed = "\n";

}  // namespace

COptionButton::COptionButton(COptionGroup* group, const OptionNames& names)
    : COption(group, "button", names) {
    value = NotPressed;
}

void COptionButton::Apply(const std::string&) {
    value = NotPressed;
}

bool COptionGroup::SetOption(std::string_view optionName, const std::string& value) {
    COption* option = FindByName(uciOptions, optionName);
    if (option == nullptr) {
        option = FindByName(iniOptions, optionName);
    }
    if (option == nullptr) {
        return false;
    }
    option->SetValue(value);
    return true;
}

void COptionGroup::RunCallbacks() {
    for (const COption* option : options_) {
        if (option->onChange) {
            option->onChange(option->value);
        }
    }
}

void COptionGroup::Enter(COption& option) {
    options_.push_back(&option);
    if (!option.uciName.empty()) {
        uciOptions.push_back(&option);
    }
    if (!option.iniName.empty()) {
        iniOptions.push_back(&option);
    }
}

bool SetOption(const OptionGroupList& groups, std::string_view name, const std::string& value) {
    return std::any_of(groups.begin(), groups.end(),
                       [&](COptionGroup* group) { return group->SetOption(name, value); });
}

}  // namespace brenquil
