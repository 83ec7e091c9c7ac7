// What headers demand of their callers is checked by assertions, in every build but the optimised
// ones. A sanitizer build without them would look fine and check nothing.

#include "../../support/sanitized.h"
#include "platform/bits.h"
#include "platform/exact_modulo.h"

#include <gtest/gtest.h>

#if defined(NDEBUG) && defined(BRENQUIL_IS_SANITIZED)
#error "The assertions are switched off in a build that is made to find faults"
#endif

namespace brenquil {
namespace {

#if !defined(NDEBUG)

TEST(ContractsDeathTest, BrokenOnesEndTheProgramAtTheirPlace) {
    std::uint64_t zero = 0;
    EXPECT_DEATH((void)LowestBit(zero), "word != 0");
    EXPECT_DEATH((void)HighestBit(zero), "word != 0");
    EXPECT_DEATH((void)PopLowestBit(zero), "word != 0");
    EXPECT_DEATH((void)CExactModulo(zero), "");  // the division traps before or the assertion
}

#endif

TEST(Contracts, KeptOnesChangeNothing) {
    std::uint64_t word = 12;
    EXPECT_EQ(PopLowestBit(word), 2);
    EXPECT_EQ(word, 8U);
    EXPECT_EQ(CExactModulo(7)(30), 2U);
}

}  // namespace
}  // namespace brenquil
