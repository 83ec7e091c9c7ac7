#include "text/option.h"

#include "text/text.h"

#include <algorithm>
#include <utility>

namespace brenquil {

namespace {

/// Column in which the remark of an ini line begins, unless the setting itself is longer.
constexpr std::size_t IniRemarkColumn = 50;

std::string SpinLimits(const COption& option, std::string_view between) {
    return std::to_string(option.min) + std::string(between) + std::to_string(option.max);
}

COption* FindByName(const std::vector<COption*>& options, std::string_view name) {
    // Either name counts in either list. An absent name is the empty string, so the empty name
    // finds the first option that lacks one of its two names; this is kept.
    const auto found = std::find_if(options.begin(), options.end(), [name](const COption* option) {
        return option->uciName == name || option->iniName == name;
    });
    return found == options.end() ? nullptr : *found;
}

}  // namespace

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
    const std::string head = "option name " + uciName + " type ";
    switch (type) {
    case OptionType::Button: return head + "button";
    case OptionType::String:
    case OptionType::Path: return head + "string default " + value;
    case OptionType::Check: return head + "check default " + value;
    case OptionType::Spin:
        return head + "spin default " + value + " min " + SpinLimits(*this, " max ");
    case OptionType::Combo: return head + "combo default " + value + " var " + Join(vars, " var ");
    }
    return head;
}

std::string COption::IniLine() const {
    const std::string setting = iniName + "=" + value;
    std::string remark;
    switch (type) {
    case OptionType::Button:
    case OptionType::String:
    case OptionType::Path: return setting;
    case OptionType::Check: remark = "# [true, false]"; break;
    case OptionType::Spin: remark = "# [" + SpinLimits(*this, " : ") + "]"; break;
    case OptionType::Combo: remark = "# [" + Join(vars, ", ") + "]"; break;
    }
    const std::size_t padding = IniRemarkColumn - std::min(IniRemarkColumn, setting.size());
    return setting + std::string(padding, ' ') + remark;
}

void COptionCheck::Apply(const std::string& text) {
    enabled = ParseBool(text, enabled);
}

void COptionSpin::Apply(const std::string& text) {
    if (IsNumeric(text)) {
        number = ToInteger(text);
    }
}

void COptionString::Apply(const std::string& newText) {
    text = newText;
}

void COptionPath::Apply(const std::string& newText) {
    text = newText;
}

void COptionCombo::Apply(const std::string& newText) {
    text = newText;
    const auto found = std::find(vars.begin(), vars.end(), newText);
    choice = found == vars.end() ? NoChoice : static_cast<std::int32_t>(found - vars.begin());
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

void COptionGroup::AddCheck(COptionCheck& option, std::string_view uciName,
                            std::string_view iniName, bool defaultValue, OptionCallback onChange) {
    Enter(option, uciName, iniName, defaultValue ? "true" : "false", std::move(onChange));
}

void COptionGroup::AddSpin(COptionSpin& option, std::string_view uciName, std::string_view iniName,
                           std::int32_t defaultValue, std::int32_t min, std::int32_t max,
                           OptionCallback onChange) {
    option.min = min;
    option.max = max;
    Enter(option, uciName, iniName, std::to_string(defaultValue), std::move(onChange));
}

void COptionGroup::AddString(COptionString& option, std::string_view uciName,
                             std::string_view iniName, std::string_view defaultValue,
                             OptionCallback onChange) {
    Enter(option, uciName, iniName, defaultValue, std::move(onChange));
}

void COptionGroup::AddPath(COptionPath& option, std::string_view uciName, std::string_view iniName,
                           std::string_view defaultValue, OptionCallback onChange) {
    Enter(option, uciName, iniName, defaultValue, std::move(onChange));
}

void COptionGroup::AddCombo(COptionCombo& option, std::string_view uciName,
                            std::string_view iniName, std::string_view defaultValue,
                            std::vector<std::string> vars, OptionCallback onChange) {
    option.vars = std::move(vars);
    Enter(option, uciName, iniName, defaultValue, std::move(onChange));
}

void COptionGroup::Enter(COption& option, std::string_view uciName, std::string_view iniName,
                         std::string_view defaultValue, OptionCallback onChange) {
    option.onChange = std::move(onChange);
    option.uciName = uciName;
    option.iniName = iniName;
    option.SetValue(std::string(defaultValue));
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
