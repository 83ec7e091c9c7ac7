// The option classes: setter, text forms, and the lookup by name.

#include "text/option.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace brenquil {
namespace {

/// One option of each kind, with each combination of names, and a record of the callbacks.
class CSampleGroup final : public COptionGroup {
public:
    explicit CSampleGroup(const char* groupName = "Sample") : COptionGroup(groupName) {
        for (COption* option :
             std::initializer_list<COption*>{&spin, &check, &string, &path, &combo}) {
            option->onChange = [this](const std::string& value) { calls.push_back(value); };
        }
    }

    std::vector<std::string> calls;
    COptionSpin spin = AddSpin({"Size", "Size In Ini"}, 64, 0, 16384);
    COptionCheck check = AddCheck("Switch", true);
    COptionString string = AddString({"About", ""}, "nobody");
    COptionPath path = AddPath({"Path", "Path In Ini"});
    COptionCombo combo = AddCombo("Mode", "Wide", {"Wide", "Narrow"});
    COptionCheck hidden = AddCheck({"", "Hidden"}, false);
};

TEST(Option, HasItsDefaultWhenItIsMadeAndCallsNobody) {
    const CSampleGroup group;
    EXPECT_TRUE(group.calls.empty());
    EXPECT_EQ(group.spin.number, 64);
    EXPECT_EQ(group.spin.Bounded(), 64);
    EXPECT_TRUE(group.check.enabled);
    EXPECT_EQ(group.string.text, "nobody");
    EXPECT_EQ(group.path.text, "<empty>");
    EXPECT_EQ(group.combo.text, "Wide");
    EXPECT_EQ(group.combo.choice, 0);
    EXPECT_FALSE(group.hidden.enabled);
}

TEST(OptionGroup, RunCallbacksRunsEachForItsPresentValueInOrder) {
    CSampleGroup group;
    group.SetOption("Size", "5");
    group.calls.clear();
    group.RunCallbacks();
    EXPECT_EQ(group.calls, (std::vector<std::string>{"5", "true", "nobody", "<empty>", "Wide"}));
}

TEST(OptionGroup, AdoptedOptionStandsInItsOrderAndStaysWithItsOwner) {
    struct CAdopting final : COptionGroup {
        explicit CAdopting(COptionCheck& other) : COptionGroup("Adopting"), second(Adopt(other)) {}

        COptionCheck first = AddCheck("First", true);
        COptionCheck& second;
        COptionCheck third = AddCheck("Third", true);
    };

    COptionCheck owned(nullptr, {"Second", ""}, false);
    CAdopting group(owned);
    EXPECT_EQ(group.uciOptions, (std::vector<COption*>{&group.first, &owned, &group.third}));
    EXPECT_EQ(group.iniOptions, (std::vector<COption*>{&group.first, &group.third}));
    EXPECT_TRUE(group.SetOption("Second", "true"));
    EXPECT_TRUE(owned.enabled);
}

TEST(OptionSpin, SumsUseABoundedNumber) {
    CSampleGroup group;
    group.SetOption("Size", "2000000000");
    EXPECT_EQ(group.spin.number, 2000000000);
    EXPECT_EQ(group.spin.Bounded(), COptionSpin::ArithmeticLimit);
    group.SetOption("Size", "-2000000000");
    EXPECT_EQ(group.spin.Bounded(), -COptionSpin::ArithmeticLimit);
    group.SetOption("Size", "7");
    EXPECT_EQ(group.spin.Bounded(), 7);
}

TEST(Option, FittingIsWhatIsAdvertised) {
    const CSampleGroup group;
    EXPECT_EQ(group.spin.Fitting("99999"), "16384");
    EXPECT_EQ(group.spin.Fitting("-1"), "0");
    EXPECT_EQ(group.spin.Fitting("12"), "12");
    EXPECT_EQ(group.spin.Fitting("many"), std::nullopt);
    EXPECT_EQ(group.spin.Fitting(""), std::nullopt);
    EXPECT_EQ(group.check.Fitting("TRUE"), "true");
    EXPECT_EQ(group.check.Fitting("0"), "false");
    EXPECT_EQ(group.check.Fitting("maybe"), std::nullopt);
    EXPECT_EQ(group.combo.Fitting("narrow"), "Narrow");
    EXPECT_EQ(group.combo.Fitting("Foo"), std::nullopt);
    EXPECT_EQ(group.path.Fitting("Any where"), "Any where");
}

TEST(OptionButton, RunsItsCallbackAtEachSetting) {
    class CButtonGroup final : public COptionGroup {
    public:
        CButtonGroup() : COptionGroup("Buttons") {}

        COptionButton button = AddButton({"Press", ""});
    };

    CButtonGroup group;
    int pressed = 0;
    group.button.onChange = [&pressed](const std::string&) { ++pressed; };
    EXPECT_EQ(group.button.UciLine(), "option name Press type button");
    EXPECT_TRUE(group.SetOption("Press", ""));
    EXPECT_TRUE(group.SetOption("Press", ""));
    EXPECT_TRUE(group.SetOption("Press", "now"));
    EXPECT_EQ(pressed, 3);
}

TEST(Option, EqualTextRunsNothing) {
    CSampleGroup group;
    group.calls.clear();
    EXPECT_TRUE(group.SetOption("Size", "64"));
    EXPECT_TRUE(group.calls.empty());

    // The text decides, not the number.
    EXPECT_TRUE(group.SetOption("Size", "064"));
    EXPECT_EQ(group.calls, std::vector<std::string>{"064"});
    EXPECT_EQ(group.spin.number, 64);
}

TEST(Option, TextThatDoesNotFitLeavesTheFieldAndStaysAsValue) {
    CSampleGroup group;
    group.SetOption("Switch", "maybe");
    EXPECT_TRUE(group.check.enabled);
    EXPECT_EQ(group.check.value, "maybe");
    EXPECT_EQ(group.check.UciLine(), "option name Switch type check default maybe");

    group.SetOption("Size", "many");
    EXPECT_EQ(group.spin.number, 64);
    EXPECT_EQ(group.spin.value, "many");
    EXPECT_EQ(group.calls.back(), "many");
}

TEST(Option, EmptyTextLeavesSpinAndCheckButIsTheValue) {
    CSampleGroup group;
    group.SetOption("Switch", "");
    group.SetOption("Size", "");
    EXPECT_TRUE(group.check.enabled);
    EXPECT_EQ(group.check.value, "");
    EXPECT_EQ(group.spin.number, 64);
    EXPECT_EQ(group.spin.UciLine(), "option name Size type spin default  min 0 max 16384");
}

TEST(Option, RangesAndChoicesAreNotEnforced) {
    CSampleGroup group;
    group.SetOption("Size", "-20000");
    EXPECT_EQ(group.spin.number, -20000);
    group.SetOption("Mode", "Foo");
    EXPECT_EQ(group.combo.text, "Foo");
    EXPECT_EQ(group.combo.choice, 0) << "as before";
    EXPECT_EQ(group.combo.UciLine(), "option name Mode type combo default Foo var Wide var Narrow");
    group.SetOption("Mode", "Narrow");
    EXPECT_EQ(group.combo.choice, 1);
}

TEST(Option, UciLines) {
    const CSampleGroup group;
    EXPECT_EQ(group.spin.UciLine(), "option name Size type spin default 64 min 0 max 16384");
    EXPECT_EQ(group.check.UciLine(), "option name Switch type check default true");
    EXPECT_EQ(group.string.UciLine(), "option name About type string default nobody");
    EXPECT_EQ(group.path.UciLine(), "option name Path type string default <empty>");
    EXPECT_EQ(group.combo.UciLine(),
              "option name Mode type combo default Wide var Wide var Narrow");
}

TEST(Option, UciLineShowsTheCurrentValueAsDefault) {
    CSampleGroup group;
    group.SetOption("Size", "128");
    EXPECT_EQ(group.spin.UciLine(), "option name Size type spin default 128 min 0 max 16384");
}

TEST(Option, IniLinesCarryTheirRemarkFromColumn50) {
    const CSampleGroup group;
    EXPECT_EQ(group.spin.IniLine(), "Size In Ini=64" + std::string(36, ' ') + "# [0 : 16384]");
    EXPECT_EQ(group.check.IniLine(), "Switch=true" + std::string(39, ' ') + "# [true, false]");
    EXPECT_EQ(group.combo.IniLine(), "Mode=Wide" + std::string(41, ' ') + "# [Wide, Narrow]");
    EXPECT_EQ(group.path.IniLine(), "Path In Ini=<empty>");
}

TEST(Option, IniLineOf50CharactersOrMoreGetsNoPadding) {
    CSampleGroup group;
    const std::string longValue(45, 'x');
    group.SetOption("Mode", longValue);
    EXPECT_EQ(group.combo.IniLine(), "Mode=" + longValue + "# [Wide, Narrow]");
    const std::string longerValue(60, 'x');
    group.SetOption("Mode", longerValue);
    EXPECT_EQ(group.combo.IniLine(), "Mode=" + longerValue + "# [Wide, Narrow]");
}

TEST(OptionGroup, ListsHoldTheOptionsWithANameInOrderOfEntry) {
    CSampleGroup group;
    EXPECT_EQ(group.uciOptions, (std::vector<COption*>{&group.spin, &group.check, &group.string,
                                                       &group.path, &group.combo}));
    EXPECT_EQ(group.iniOptions, (std::vector<COption*>{&group.spin, &group.check, &group.path,
                                                       &group.combo, &group.hidden}));
}

TEST(OptionGroup, EitherNameFindsAnOptionExactly) {
    CSampleGroup group;
    EXPECT_TRUE(group.SetOption("Size In Ini", "1"));
    EXPECT_EQ(group.spin.number, 1);
    EXPECT_TRUE(group.SetOption("Hidden", "true"));
    EXPECT_TRUE(group.hidden.enabled);
    EXPECT_FALSE(group.SetOption("size", "2"));
    EXPECT_FALSE(group.SetOption("Size ", "2"));
    EXPECT_EQ(group.spin.number, 1);
}

TEST(OptionGroup, EmptyNameFindsTheFirstOptionThatLacksAName) {
    CSampleGroup group;
    EXPECT_TRUE(group.SetOption("", "me"));
    EXPECT_EQ(group.string.text, "me");
}

TEST(OptionGroupList, FirstGroupThatKnowsTheNameTakesTheValue) {
    CSampleGroup first("First");
    CSampleGroup second("Second");
    const OptionGroupList groups{&first, &second};
    EXPECT_TRUE(SetOption(groups, "Size", "5"));
    EXPECT_EQ(first.spin.number, 5);
    EXPECT_EQ(second.spin.number, 64);
    EXPECT_FALSE(SetOption(groups, "Nothing", "5"));
    EXPECT_FALSE(SetOption({}, "Size", "5"));
}

}  // namespace
}  // namespace brenquil
