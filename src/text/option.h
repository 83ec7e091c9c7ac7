// Run-time settings: one object per option, collected in named groups.
//
//     class CBookOptions final : public COptionGroup {
//     public:
//         CBookOptions() : COptionGroup("Book") {}
//         COptionCheck ownBook = AddCheck({"OwnBook", "Book Use"}, true);
//     };
//
// An option has a name for the UCI command setoption and one for the ini file, holds its value as
// text, and parses that text into a typed field which consumers read directly: `enabled` of a
// check, `number` of a spin, `text` of a string or path, and `choice` of a combo. Nobody keeps a
// copy of it. A group is a class that derives from COptionGroup and declares its options as public
// members, once each, by the functions that begin with Add; order of declaration is order of
// printing everywhere. The same objects serve the `option` lines, setoption, the ini file reader
// and the ini file writer.
//
// All paths go through SetValue, which does nothing when the text does not change. Ranges and
// choices are advertised and not enforced: whoever needs that asks Fitting first.
//
// Nothing is called back while objects are being made. Whoever has to act on a change sets
// `onChange`; once everything is there, one call of RunCallbacks for each group brings what the
// options steer into line with their defaults.
//
// Threads: options are set by the reading thread only. `enabled`, `number` and `choice` may be read
// by any thread at any time, a relaxed load each. The strings belong to the reading thread alone:
// what a search needs to know of a combo it reads from `choice`.
#pragma once

#include "platform/relaxed.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brenquil {

/// Called with the new value text whenever a value has changed; may be empty.
using OptionCallback = std::function<void(const std::string& value)>;

/// The two names of an option: one text for both, or one for each. An empty one keeps the option
/// out of the `option` lines or out of the ini file.
struct OptionNames {
    // NOLINTNEXTLINE(google-explicit-constructor): the usual case reads as one name
    OptionNames(const char* both) : uci(both), ini(both) {}

    OptionNames(std::string_view uciName, std::string_view iniName) : uci(uciName), ini(iniName) {}

    std::string uci;
    std::string ini;
};

class COptionGroup;

/// One setting: its names, its text and what happens on a change.
class COption {
public:
    virtual ~COption() = default;
    COption(const COption&) = delete;
    COption& operator=(const COption&) = delete;

    /// Puts the text into the typed field, or leaves the field when the text does not fit it.
    virtual void Apply(const std::string& text) = 0;

    /// Takes over a new text: applies it and runs the callback. Equal text changes nothing and runs
    /// nothing. A text that does not fit the typed field is kept as the value all the same.
    void SetValue(const std::string& text);

    /// The text that the option advertises and that is nearest to this one; nothing if the text
    /// means no value of it.
    [[nodiscard]] virtual std::optional<std::string> Fitting(const std::string& text) const {
        return text;
    }

    /// The `option` line of the answer to `uci`. Its default is the current value, not the built-in
    /// one.
    [[nodiscard]] std::string UciLine() const;

    /// The option's line in the ini file, without a line feed.
    [[nodiscard]] std::string IniLine() const;

    const std::string_view type;  ///< the word of the `option` line, "spin" for one
    OptionCallback onChange;
    const std::string uciName;  ///< empty: not offered over UCI
    const std::string iniName;  ///< empty: not written to the ini file
    std::string value;

protected:
    /// @param group     the group that lists the option; null if another one will
    /// @param typeWord  a literal
    COption(COptionGroup* group, std::string_view typeWord, const OptionNames& names);

    /// What the `option` line says of the default, with a blank in front.
    [[nodiscard]] virtual std::string UciDefault() const { return " default " + value; }

    /// What follows the default in the `option` line, with a blank in front; nothing by default.
    [[nodiscard]] virtual std::string UciLimits() const { return {}; }

    /// The values that the ini file offers beside the setting, in brackets; nothing by default.
    [[nodiscard]] virtual std::string IniLimits() const { return {}; }
};

/// A switch.
class COptionCheck final : public COption {
public:
    COptionCheck(COptionGroup* group, const OptionNames& names, bool defaultValue);

    void Apply(const std::string& text) override;

    /// Either truth value in any letter case.
    [[nodiscard]] std::optional<std::string> Fitting(const std::string& text) const override;

    Relaxed<bool> enabled{false};

private:
    [[nodiscard]] std::string IniLimits() const override { return "true, false"; }
};

/// A whole number with an advertised range.
class COptionSpin final : public COption {
public:
    /// Numbers of this size and beyond mean the same to every sum that they enter.
    static constexpr std::int32_t ArithmeticLimit = 1000000;

    COptionSpin(COptionGroup* group, const OptionNames& names, std::int32_t defaultValue,
                std::int32_t minimum, std::int32_t maximum);

    void Apply(const std::string& text) override;

    /// The number within the advertised range.
    [[nodiscard]] std::optional<std::string> Fitting(const std::string& text) const override;

    /// The number as sums use it. Any number can be set; this one is at most ArithmeticLimit either
    /// way, which keeps sums of a few dozen of them, and of scores and depths, within 32 bits.
    [[nodiscard]] std::int32_t Bounded() const noexcept { return bounded_; }

    const std::int32_t min;
    const std::int32_t max;
    Relaxed<std::int32_t> number{0};

private:
    [[nodiscard]] std::string UciLimits() const override;
    [[nodiscard]] std::string IniLimits() const override;

    Relaxed<std::int32_t> bounded_{0};  ///< kept beside `number`: every evaluation reads it
};

/// Free text.
class COptionString final : public COption {
public:
    COptionString(COptionGroup* group, const OptionNames& names, std::string_view defaultValue);

    void Apply(const std::string& newText) override;

    std::string text;
};

/// A file or directory name, or a list of them. A string for front ends.
class COptionPath final : public COption {
public:
    COptionPath(COptionGroup* group, const OptionNames& names, std::string_view defaultValue);

    void Apply(const std::string& newText) override;

    std::string text;
};

/// One of some advertised words.
class COptionCombo final : public COption {
public:
    COptionCombo(COptionGroup* group, const OptionNames& names, std::string_view defaultValue,
                 std::vector<std::string> words);

    void Apply(const std::string& newText) override;

    /// The advertised word, in any letter case.
    [[nodiscard]] std::optional<std::string> Fitting(const std::string& newText) const override;

    const std::vector<std::string> vars;
    std::string text;

    /// The place in `vars` of the last text that was one of them: any other leaves it.
    Relaxed<std::int32_t> choice{0};

private:
    [[nodiscard]] std::string UciLimits() const override;
    [[nodiscard]] std::string IniLimits() const override;
};

/// A command that looks like an option: each setting of any value runs the callback.
class COptionButton final : public COption {
public:
    COptionButton(COptionGroup* group, const OptionNames& names);

    void Apply(const std::string& text) override;

private:
    [[nodiscard]] std::string UciDefault() const override { return {}; }
};

/// A named list of options. A derived class declares them with the functions that begin with Add.
class COptionGroup {
public:
    /// The value of a path option that has not been set; consumers compare against it.
    static constexpr std::string_view EmptyPath = "<empty>";

    COptionGroup(const COptionGroup&) = delete;
    COptionGroup& operator=(const COptionGroup&) = delete;

    /// Gives the value to the first option with that name: all UCI options are looked through
    /// first, then all ini options, and either name of an option counts, with its letter case.
    /// @return false when no option has the name
    bool SetOption(std::string_view name, const std::string& value);

    /// Runs the callback of every option with its present value, in their order.
    void RunCallbacks();

    std::vector<COption*> uciOptions;
    std::vector<COption*> iniOptions;
    const std::string name;

protected:
    explicit COptionGroup(std::string_view groupName) : name(groupName) {}

    ~COptionGroup() = default;

    // Each of these is a new option with its default. Used to initialise a member, it is made in
    // place and has entered itself into the lists in which it has a name.

    [[nodiscard]] COptionCheck AddCheck(const OptionNames& names, bool defaultValue) {
        return {this, names, defaultValue};
    }

    [[nodiscard]] COptionSpin AddSpin(const OptionNames& names, std::int32_t defaultValue,
                                      std::int32_t min, std::int32_t max) {
        return {this, names, defaultValue, min, max};
    }

    [[nodiscard]] COptionString AddString(const OptionNames& names, std::string_view defaultValue) {
        return {this, names, defaultValue};
    }

    [[nodiscard]] COptionPath AddPath(const OptionNames& names) { return {this, names, EmptyPath}; }

    [[nodiscard]] COptionCombo AddCombo(const OptionNames& names, std::string_view defaultValue,
                                        std::vector<std::string> vars) {
        return {this, names, defaultValue, std::move(vars)};
    }

    [[nodiscard]] COptionButton AddButton(const OptionNames& names) { return {this, names}; }

    /// Lists an option that another group holds because it steers that group's subject.
    template <class Option>
    [[nodiscard]] Option& Adopt(Option& option) {
        Enter(option);
        return option;
    }

private:
    friend class COption;

    void Enter(COption& option);

    std::vector<COption*> options_;  ///< all of them
};

/// All groups of the program, in the order of their `option` lines. Owns nothing.
using OptionGroupList = std::vector<COptionGroup*>;

/// Offers the value to each group in turn, up to the first that knows the name.
/// @return false when no group knows it
bool SetOption(const OptionGroupList& groups, std::string_view name, const std::string& value);

}  // namespace brenquil
