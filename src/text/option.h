// Run-time settings: one object per option, collected in named groups.
//
// An option has a name for the UCI command setoption and one for the ini file, holds its value as
// text, and parses that text into a typed field which consumers read directly: `enabled` of a
// check, `number` of a spin, `text` of the others, and `choice` of a combo. A group is a class of
// its own that derives from COptionGroup, holds its options as public members and enters them into
// its lists in its constructor; order of entry is order of printing everywhere. The same objects
// serve the `option` lines, setoption, the ini file reader and the ini file writer.
//
// All paths go through SetValue, which does nothing when the text does not change. Ranges and
// choices are advertised, never enforced.
//
// Threads: options are set by the reading thread only. `enabled`, `number` and `choice` may be read
// by any thread at any time, a relaxed load each. The strings belong to the reading thread alone:
// what a search wants to know of a combo it reads from `choice`.
#pragma once

#include "platform/relaxed.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// What kind of value an option holds; decides its text forms.
enum class OptionType : std::int32_t {
    Button = 0,  ///< known to the text forms only, no option of this kind exists
    String = 1,
    Path = 2,  ///< a string option for front ends
    Check = 3,
    Spin = 4,
    Combo = 5
};

/// Called with the new value text whenever a value has changed; may be empty.
using OptionCallback = std::function<void(const std::string& value)>;

/// One setting: its names, its text and what happens on a change. Groups fill the fields in.
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

    /// The `option` line of the answer to `uci`. Its default is the current value, not the built-in
    /// one.
    [[nodiscard]] std::string UciLine() const;

    /// The option's line in the ini file, without a line feed.
    [[nodiscard]] std::string IniLine() const;

    const OptionType type;
    OptionCallback onChange;
    std::string uciName;  ///< empty: not offered over UCI
    std::string iniName;  ///< empty: not written to the ini file
    std::string value;
    std::int32_t min = 0;           ///< spin options only
    std::int32_t max = 0;           ///< spin options only
    std::vector<std::string> vars;  ///< combo options only

protected:
    explicit COption(OptionType optionType) noexcept : type(optionType) {}
};

/// A switch.
class COptionCheck final : public COption {
public:
    COptionCheck() noexcept : COption(OptionType::Check) {}

    void Apply(const std::string& text) override;

    Relaxed<bool> enabled{false};
};

/// A whole number with an advertised range.
class COptionSpin final : public COption {
public:
    /// Numbers of this size and beyond mean the same to every sum that they enter.
    static constexpr std::int32_t ArithmeticLimit = 1'000'000;

    COptionSpin() noexcept : COption(OptionType::Spin) {}

    void Apply(const std::string& text) override;

    /// A number as sums use it. Any number can be set; this keeps sums of a few dozen of them, and
    /// of scores and depths, within 32 bits.
    [[nodiscard]] static constexpr std::int32_t Bound(std::int32_t value) noexcept {
        return std::clamp(value, -ArithmeticLimit, ArithmeticLimit);
    }

    [[nodiscard]] std::int32_t Bounded() const noexcept { return Bound(number); }

    Relaxed<std::int32_t> number{0};
};

/// Free text.
class COptionString final : public COption {
public:
    COptionString() noexcept : COption(OptionType::String) {}

    void Apply(const std::string& newText) override;

    std::string text;
};

/// A file or directory name, or a list of them.
class COptionPath final : public COption {
public:
    COptionPath() noexcept : COption(OptionType::Path) {}

    void Apply(const std::string& newText) override;

    std::string text;
};

/// One of some advertised words.
class COptionCombo final : public COption {
public:
    /// The value of `choice` while the text is none of the advertised words.
    static constexpr std::int32_t NoChoice = -1;

    COptionCombo() noexcept : COption(OptionType::Combo) {}

    void Apply(const std::string& newText) override;

    std::string text;
    Relaxed<std::int32_t> choice{NoChoice};  ///< index of the text in `vars`, for other threads
};

/// A named list of options. Derived classes hold the option objects and enter them in order.
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

    std::vector<COption*> uciOptions;
    std::vector<COption*> iniOptions;
    const std::string name;

protected:
    explicit COptionGroup(std::string_view groupName) : name(groupName) {}

    ~COptionGroup() = default;

    // Each of these fills in an option, sets its default through SetValue, so that the callback
    // runs once for it, and enters the option into the lists in which it has a name.

    void AddCheck(COptionCheck& option, std::string_view uciName, std::string_view iniName,
                  bool defaultValue, OptionCallback onChange = {});
    void AddSpin(COptionSpin& option, std::string_view uciName, std::string_view iniName,
                 std::int32_t defaultValue, std::int32_t min, std::int32_t max,
                 OptionCallback onChange = {});
    void AddString(COptionString& option, std::string_view uciName, std::string_view iniName,
                   std::string_view defaultValue, OptionCallback onChange = {});
    void AddPath(COptionPath& option, std::string_view uciName, std::string_view iniName,
                 std::string_view defaultValue, OptionCallback onChange = {});
    void AddCombo(COptionCombo& option, std::string_view uciName, std::string_view iniName,
                  std::string_view defaultValue, std::vector<std::string> vars,
                  OptionCallback onChange = {});

private:
    void Enter(COption& option, std::string_view uciName, std::string_view iniName,
               std::string_view defaultValue, OptionCallback onChange);
};

/// All groups of the program, in the order of their `option` lines. Owns nothing.
using OptionGroupList = std::vector<COptionGroup*>;

/// Offers the value to each group in turn, up to the first that knows the name.
/// @return false when no group knows it
bool SetOption(const OptionGroupList& groups, std::string_view name, const std::string& value);

}  // namespace brenquil
