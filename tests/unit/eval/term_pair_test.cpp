#include "eval/term_pair.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace brenquil {
namespace {

TEST(TermPair, GivesBackBothValuesWhateverTheirSigns) {
    for (const std::int32_t middlegame : {-2000000000, -252, -1, 0, 1, 174, 2000000000}) {
        for (const std::int32_t endgame : {-2000000000, -116, -1, 0, 1, 90, 2000000000}) {
            const TermPair pair(middlegame, endgame);
            EXPECT_EQ(pair.Middlegame(), middlegame);
            EXPECT_EQ(pair.Endgame(), endgame);
        }
    }
}

TEST(TermPair, SumsAreThoseOfTheHalves) {
    std::mt19937 generator(5);
    std::uniform_int_distribution<std::int32_t> terms(-400, 400);
    TermPair sum;
    std::int32_t middlegame = 0;
    std::int32_t endgame = 0;
    for (int i = 0; i < 10000; ++i) {
        const std::int32_t m = terms(generator);
        const std::int32_t e = terms(generator);
        const bool adds = i % 3 != 0;
        sum = adds ? sum + TermPair(m, e) : sum - TermPair(m, e);
        middlegame += adds ? m : -m;
        endgame += adds ? e : -e;
        ASSERT_EQ(sum.Middlegame(), middlegame);
        ASSERT_EQ(sum.Endgame(), endgame);
    }
}

}  // namespace
}  // namespace brenquil
