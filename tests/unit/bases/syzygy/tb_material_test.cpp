#include "bases/syzygy/tb_material.h"
#include "syzygy_writer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace brenquil {
namespace {

using testing_support::PositionOfFen;

TEST(TbMaterial, NamesAllTablesOfThreeToSixMen) {
    const std::vector<std::string> names = AllTableNames();
    const std::set<std::string> different(names.begin(), names.end());
    EXPECT_EQ(names.size(), 510U);
    EXPECT_EQ(different.size(), 510U);
    std::set<std::uint64_t> keys;
    for (const std::string& name : names) {
        const TbCounts counts = CountsOfName(name);
        keys.insert(std::min(MaterialKey(counts, false), MaterialKey(counts, true)));
        EXPECT_GE(name.size(), 4U);
        EXPECT_LE(name.size(), 7U) << "no table of seven men";
    }
    EXPECT_EQ(keys.size(), 510U) << "no material stands there under two names";
}

TEST(TbMaterial, NamesTablesInTheOrderOfTheSearchForThem) {
    const std::vector<std::string> names = AllTableNames();
    EXPECT_EQ(names.front(), "KQvK");
    EXPECT_EQ(names[4], "KPvK");
    EXPECT_EQ(names[5], "KQvKQ");
    EXPECT_EQ(names[20], "KQQvK");
    EXPECT_EQ(names[35], "KQQvKQ");
    EXPECT_EQ(names.back(), "KPPPPvK");
    const auto place = [&](const char* name) {
        return std::find(names.begin(), names.end(), name) - names.begin();
    };
    EXPECT_EQ(place("KRPvKQN"), 510) << "the side with the stronger first man comes first";
    EXPECT_EQ(place("KQQvKQQ"), place("KPPPvK") + 1);
}

TEST(TbMaterial, ThePositionOfANameHasItsKeys) {
    const TbPosition position = PositionOfFen("k7/8/8/3r4/8/8/PP1Q4/K7 w - - 0 1");
    const TbCounts counts = CountsOfName("KQPPvKR");
    EXPECT_EQ(MaterialKey(position, false), MaterialKey(counts, false));
    EXPECT_EQ(MaterialKey(position, true), MaterialKey(counts, true));
    EXPECT_NE(MaterialKey(counts, false), MaterialKey(counts, true));
    EXPECT_EQ(MaterialName(position, false), "KQPPvKR");
    EXPECT_EQ(MaterialName(position, true), "KRvKQPP");
}

TEST(TbMaterial, TheKeyIsTheSumOfTheMensNumbers) {
    EXPECT_EQ(MaterialKey(CountsOfName("KQvK"), false), 0xA3EC1ABC71E90863U);
    EXPECT_EQ(MaterialKey(CountsOfName("KvKQ"), false), 0xD6E4E47D24962951U);
    EXPECT_EQ(MaterialKey(CountsOfName("KRBvKN"), false),
              0x985DEB9FC49333F9U + 0xAADC1A2BE446234DU + 0xBAEB854CD3259441U);
    EXPECT_EQ(MaterialKey(CountsOfName("KPPvKP"), true),
              2 * 0xA24F0F571BB202E7U + 0xEC0ADE190C0F6003U);
}

TEST(TbMaterial, TwoBareKingsHaveTheKeyZero) {
    EXPECT_EQ(MaterialKey(PositionOfFen("k7/8/8/8/8/8/8/K7 w - - 0 1"), false), 0U);
    EXPECT_EQ(MaterialKey(CountsOfName("KvK"), false), 0U);
}

}  // namespace
}  // namespace brenquil
