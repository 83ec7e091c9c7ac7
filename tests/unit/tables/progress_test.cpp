// The texts that tell how far a long command has come.

#include "tables/progress.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

TEST(Progress, ThePaceOfAPhaseIsToldFromWhatIsDone) {
    EXPECT_EQ(PaceText(0.25, 10, 4000), "  100 positions/s  30.0 s left");
    EXPECT_EQ(PaceText(0.5, 125, 2'500'000), "  10,000 positions/s  2:05 left");
    EXPECT_EQ(PaceText(1, 2, 10), "  5 positions/s  0.0 s left");
}

/// "46:51:28 left" once stood there for a moment.
TEST(Progress, TheFirstStepsOfAPhaseTellNoPace) {
    EXPECT_EQ(PaceText(0.00001, 2, 1'000'000), "");
    EXPECT_EQ(PaceText(0.009, 2, 1'000'000), "");
    EXPECT_EQ(PaceText(0.5, 0.4, 1'000'000), "");
    EXPECT_EQ(PaceText(0, 0, 0), "");
    EXPECT_NE(PaceText(0.01, 0.5, 1'000'000), "");
}

}  // namespace
}  // namespace brenquil
